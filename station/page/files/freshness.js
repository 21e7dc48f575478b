// Whether the page may look live. It is decided from the clock, never from the absence of an error.

/** Without news for so long the page is lost. The station sends at least each second. */
export const LONGEST_SILENCE = 1800;

/** Two clocks drift apart. With each beat the quickest one counts so many ms slower. */
const DRIFT_PER_BEAT = 10;

/** A time by both clocks of the browser. Neither alone will do: `steady` stands still while a
 * laptop sleeps, and `wall` jumps when somebody sets the clock.
 * @typedef {{steady: number, wall: number}} Moment */

/** @returns {Moment} */
export function momentNow() {
    return { steady: performance.now(), wall: Date.now() };
}

/** The longer of the two spans.
 * @param {Moment} from
 * @param {Moment} to */
function passed(from, to) {
    return Math.max(to.steady - from.steady, Math.abs(to.wall - from.wall));
}

/**
 *             an answer that came soon after its question,
 *             or a beat that is not late
 *    LOST -------------------------------------------------> LIVE
 *     ^   no news for LONGEST_SILENCE, or a late beat         |
 *     +-------------------------------------------------------+
 *
 * A page that was frozen finds old messages when it goes on. Their beats are late: they carry the
 * station's time, and come later after it than the quickest beat came.
 */
export class Freshness {
    constructor() {
        this.isLive = false;
        /** @type {Moment|null} */
        this.lastNews = null;
        /** The smallest seen difference of this wall clock to the station's.
         * @type {number|null} */
        this.difference = null;
    }

    /** The station was asked anew: earlier differences of the clocks count no longer. */
    restart() {
        this.difference = null;
    }

    /** News came that answers a question.
     * @param {Moment} asked
     * @param {Moment} now */
    answered(asked, now) {
        if (passed(asked, now) >= LONGEST_SILENCE) return;
        this.lastNews = now;
        this.isLive = true;
    }

    /** News without a time came. It keeps a live page live.
     * @param {Moment} now */
    heard(now) {
        this.look(now);
        this.lastNews = now;
    }

    /** A beat came.
     * @param {number} stationTime  ms since 1970
     * @param {Moment} now
     * @returns {boolean} whether it came in time */
    beat(stationTime, now) {
        this.heard(now);
        const difference = now.wall - stationTime;
        const quickest = this.difference === null ? difference : this.difference + DRIFT_PER_BEAT;
        this.difference = Math.min(quickest, difference);
        this.isLive = difference - this.difference < LONGEST_SILENCE;
        return this.isLive;
    }

    /** Looks at the clocks.
     * @param {Moment} now
     * @returns {boolean} whether the page may look live */
    look(now) {
        if (this.lastNews === null || passed(this.lastNews, now) >= LONGEST_SILENCE)
            this.isLive = false;
        return this.isLive;
    }

    /** The page is put aside: until fresh news comes, nothing is live. */
    putAside() {
        this.isLive = false;
    }
}
