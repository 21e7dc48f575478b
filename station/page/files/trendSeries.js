// The values of one tag over a span of time: from the history, and then as they come.
//
//   time      from                       last bucket          now
//   rows      [.....buckets of the history.....][.live rows, one a second.]
//
// A row is what dygraphs draws with custom bars: [Date, [smallest, last, largest]]. Where nothing
// good was read the three are NaN, and the plot has a gap.
import { plottedNumber } from "./model.js";
import { getJson } from "./station.js";

const POINTS = 600;
const COMMIT_TIME = 3000; ///< the newest values may not be in the history's file yet

const GAP = [NaN, NaN, NaN];

export class TrendSeries {
    /** @param {import("./model.js").Model} model
     * @param {string} link
     * @param {string} tag */
    constructor(model, link, tag) {
        this.model = model;
        this.link = link;
        this.tag = tag;
        this.rows = [];
        this.bars = null; // smallest, last, largest since the last live row
        model.valueListeners.push(this.listener = (value) => this.take(value));
    }

    end() {
        const { valueListeners } = this.model;
        valueListeners.splice(valueListeners.indexOf(this.listener), 1);
        this.reading?.abort();
    }

    /** Reads a span from the history. Live rows that are newer stay.
     * @param {number} from  ms since 1970
     * @param {number} to
     * @throws {import("./station.js").StationError} */
    async read(from, to) {
        this.reading?.abort();
        const reading = this.reading = new AbortController();
        const span = { from: Math.floor(from), to: Math.floor(to), points: POINTS };
        let history;
        try {
            history = await getJson("history", { link: this.link, tag: this.tag, ...span },
                reading.signal);
        } catch (error) {
            if (reading.signal.aborted) return;
            throw error;
        }
        const rows = history.buckets.map(([time, smallest, largest, last]) =>
            [new Date(time), last === null ? GAP : [smallest, last, largest]]);
        this.join(rows, (this.model.stationNow() ?? to) - COMMIT_TIME - (to - from) / POINTS);
    }

    /** Puts the live rows behind those of the history.
     * @param {number} written  what happened before is in the history */
    join(rows, written) {
        const newest = () => rows[rows.length - 1];
        while (rows.length > 0 && newest()[1] === GAP && newest()[0].getTime() > written)
            rows.pop();
        const end = rows.length > 0 ? newest()[0].getTime() : 0;
        this.rows = [...rows, ...this.rows.filter(([time]) => time.getTime() > end)];
    }

    take(value) {
        if (value.link !== this.link || value.tag !== this.tag) return;
        const number = plottedNumber(value);
        if (Number.isNaN(number) || this.bars === null) this.bars = [number, number, number];
        else
            this.bars = [Math.min(this.bars[0], number), number, Math.max(this.bars[2], number)];
    }

    /** Adds the live row of this moment.
     * @param {number} now     ms since 1970
     * @param {boolean} isLive  whether the page has data
     * @param {number} oldest  rows before are dropped */
    addLive(now, isLive, oldest) {
        const number = isLive ? plottedNumber(this.model.find(this.link, this.tag)) : NaN;
        const bars = this.bars && !Number.isNaN(number) && !Number.isNaN(this.bars[1])
            ? [Math.min(this.bars[0], number), number, Math.max(this.bars[2], number)]
            : [number, number, number];
        this.bars = null;
        this.rows.push([new Date(now), bars]);
        while (this.rows.length > 1 && this.rows[1][0].getTime() < oldest) this.rows.shift();
    }

    /** The value that held at a time; NaN: none.
     * @param {number} time */
    at(time) {
        let low = 0;
        let high = this.rows.length;
        while (low < high) {
            const middle = (low + high) >> 1;
            if (this.rows[middle][0].getTime() <= time) low = middle + 1;
            else high = middle;
        }
        return low > 0 ? this.rows[low - 1][1][1] : NaN;
    }
}
