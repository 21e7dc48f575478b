// The station's stream, as every tab sees it: read by the leading tab, told by it to the others.
import { openEvents } from "./eventConnection.js";
import { Freshness, momentNow } from "./freshness.js";
import { FOLLOWING, LEADING, Leadership } from "./leadership.js";
import { getJson, leaveWhenLoggedOut } from "./station.js";

const LOOK_TIME = 200;
const RETRY_TIME = 500;
const PATIENCE = 2500; ///< a connection that did not bring life in this time is opened anew
const MOST_PATIENCE = 10000;
const WANT_TIME = 5000; ///< a tab repeats so often which frames it wants
const LONGEST_WANT = 3 * WANT_TIME;

/** A channel for a browser without BroadcastChannel: every tab is its own leader. */
class NoChannel extends EventTarget {
    postMessage() {}
}

export class SharedStream {
    /** @param {import("./model.js").Model} model
     * @param {() => void} onNews  called after each change of the model or of `isLive` */
    constructor(model, onNews) {
        this.model = model;
        this.onNews = onNews;
        this.freshness = new Freshness();
        /** The link whose frames this tab wants.
         * @type {string|null} */
        this.wanted = null;
        this.wants = new Map(); // by tab, only of the leader: {link, at}
        this.close = null; // of the leader's connection
        this.patience = PATIENCE;
        this.retry = 0;
        const channel = "BroadcastChannel" in window
            ? new BroadcastChannel("kakb-station") : new NoChannel();
        this.leadership = new Leadership(channel, {
            begin: () => this.lead(),
            end: () => this.disconnect(),
            told: (message) => this.told(message),
            asked: (tab) => this.answer(tab),
        });
        this.asked = momentNow();
        setInterval(() => this.look(), LOOK_TIME);
        setInterval(() => this.tellWant(), WANT_TIME);
    }

    get isLive() {
        return this.freshness.isLive;
    }

    start() {
        this.asked = momentNow();
        this.leadership.start();
        if (this.model.values.size === 0) this.readAtOnce();
    }

    /** The first values do not wait for the choice of a leader. */
    async readAtOnce() {
        const asked = momentNow();
        const values = await getJson("values").catch(() => null); // then the stream brings them
        if (values === null || this.model.values.size > 0) return;
        this.freshness.answered(asked, momentNow());
        this.model.replace(values);
        this.onNews();
    }

    /** The tab is frozen or left: nothing here is live until fresh news came. */
    putAside() {
        this.leadership.stop();
        this.freshness.putAside();
        this.onNews();
    }

    /** Asks for the frames of a link; null: for none.
     * @param {string|null} link */
    wantFrames(link) {
        this.wanted = link;
        this.tellWant(true);
    }

    // The leader's connection.

    /** The leader's own wish is older than those that come from now on. */
    lead() {
        this.tellWant();
        this.connect();
    }

    connect() {
        this.disconnect();
        const asked = momentNow();
        this.connectedAt = asked.steady;
        this.framesLink = this.chosenFrames();
        this.freshness.restart();
        let isAnswered = false; // by the values; the events before them may be old
        this.close = openEvents({ frames: this.framesLink, lastId: this.model.lastEventId },
            (message) => {
                const isAnswer = !isAnswered && message.event === "values";
                isAnswered ||= isAnswer;
                this.take(message, isAnswer ? asked : null);
                this.leadership.say({ kind: "news", message, isAnswer });
            },
            (status) => {
                leaveWhenLoggedOut(status);
                this.retry = setTimeout(() => this.connect(), RETRY_TIME);
            });
    }

    disconnect() {
        clearTimeout(this.retry);
        if (this.close) this.close();
        this.close = null;
    }

    /** @param {import("./eventConnection.js").StreamMessage} message
     * @param {import("./freshness.js").Moment|null} asked  when the message answers a question */
    take(message, asked) {
        const now = momentNow();
        if (asked) this.freshness.answered(asked, now);
        if (message.event === "beat") this.freshness.beat(message.data.time, now);
        else this.freshness.heard(now);
        this.model.apply(message, now.steady);
        this.onNews();
    }

    // The other tabs.

    told(message) {
        if (message.kind === "news") {
            if (message.isAnswer) this.freshness.restart();
            this.take(message.message, null);
        } else if (message.kind === "snapshot" && message.to === this.leadership.tab) {
            this.takeSnapshot(message);
        } else if (message.kind === "newLeader") {
            this.tellWant();
        } else if (message.kind === "want") {
            this.setWant(message.from, message.link, message.isNew);
        }
    }

    answer(tab) {
        this.leadership.say({
            kind: "snapshot", to: tab, isLive: this.freshness.look(momentNow()),
            known: this.model.snapshot(performance.now()),
        });
    }

    takeSnapshot(message) {
        const now = momentNow();
        this.model.takeSnapshot(message.known, now.steady);
        if (message.isLive) this.freshness.answered(this.asked, now);
        this.onNews();
    }

    // Frames.

    /** @param {boolean} [isNew]  a person wishes it now; else it is repeated */
    tellWant(isNew = false) {
        const link = this.wanted;
        if (this.leadership.state === LEADING) this.setWant(this.leadership.tab, link, isNew);
        else if (this.leadership.state === FOLLOWING)
            this.leadership.tellLeader({ kind: "want", link, isNew });
    }

    /** The newest wish is the last one of the map. */
    setWant(tab, link, isNew) {
        const known = this.wants.get(tab);
        if (isNew || link === null || known?.link !== link) this.wants.delete(tab);
        if (link !== null) this.wants.set(tab, { link, at: performance.now() });
        if (this.close && this.chosenFrames() !== this.framesLink) this.connect();
    }

    /** The link of the newest wish; tabs that went without a word are forgotten. */
    chosenFrames() {
        let chosen = this.wanted;
        for (const [tab, { link, at }] of [...this.wants])
            if (performance.now() - at > LONGEST_WANT) this.wants.delete(tab);
            else chosen = link;
        return chosen;
    }

    // The clocks.

    look() {
        const wasLive = this.freshness.isLive;
        const isLive = this.freshness.look(momentNow());
        if (wasLive !== isLive) this.onNews();
        if (isLive) this.patience = PATIENCE;
        else if (this.close && performance.now() - this.connectedAt > this.patience) {
            this.patience = Math.min(2 * this.patience, MOST_PATIENCE);
            this.connect();
        }
    }
}
