// The span of time that the trends show: the last minutes up to now, or any range.
import { byId, make, setAttribute, setText } from "./dom.js";

const MINUTE = 60000;
const HOUR = 60 * MINUTE;
const DAY = 24 * HOUR;
const SPANS = [
    ["1 minute", MINUTE], ["10 minutes", 10 * MINUTE], ["1 hour", HOUR], ["8 hours", 8 * HOUR],
    ["1 day", DAY], ["7 days", 7 * DAY], ["30 days", 30 * DAY],
];
const SHORTEST = 2000;
const LONGEST = 366 * DAY;
const STEP = 0.25; ///< of the span, with a key or a button
const FACTOR = 1.6;

/** The text of a time for an input of the kind datetime-local. */
function inputText(time) {
    return new Date(time - new Date(time).getTimezoneOffset() * MINUTE).toISOString().slice(0, 19);
}

export class TrendSpan {
    /** @param {import("./model.js").Model} model
     * @param {() => void} onMove */
    constructor(model, onMove) {
        this.model = model;
        this.onMove = onMove;
        this.isLive = true;
        this.length = 10 * MINUTE;
        this.to = 0; // when it is not live
        const select = byId("trends-span");
        select.append(...SPANS.map(([text, ms]) => make("option", { value: ms, text })),
            make("option", { value: "", text: "other", hidden: true }));
        select.value = this.length;
        select.addEventListener("change", () => this.set(Number(select.value), this.range().to));
        byId("trends-earlier").addEventListener("click", () => this.pan(-STEP * this.length));
        byId("trends-later").addEventListener("click", () => this.pan(STEP * this.length));
        byId("trends-closer").addEventListener("click", () => this.zoom(1 / FACTOR));
        byId("trends-wider").addEventListener("click", () => this.zoom(FACTOR));
        byId("trends-live").addEventListener("click", () => this.goLive());
        byId("trends-range").addEventListener("click", () => this.askRange());
        byId("range-cancel").addEventListener("click", () => byId("range-dialog").close());
        byId("range-form").addEventListener("submit", (event) => this.takeRange(event));
    }

    get now() {
        return this.model.stationNow() ?? Date.now();
    }

    /** @returns {{from: number, to: number}} ms since 1970, by the station's clock */
    range() {
        const to = this.isLive ? this.now : this.to;
        return { from: to - this.length, to };
    }

    set(length, to) {
        this.length = Math.min(Math.max(length, SHORTEST), LONGEST);
        this.to = Math.min(to, this.now);
        this.show();
    }

    /** @param {number} ms  to later times when positive; up to now, it is live again */
    pan(ms) {
        const { to } = this.range();
        if (ms === 0) return;
        this.isLive = to + ms >= this.now;
        this.to = Math.min(to + ms, this.now);
        this.show();
    }

    /** @param {number} factor  below 1: closer
     * @param {number} [time]  stays where it is */
    zoom(factor, time) {
        const { from, to } = this.range();
        const centre = time ?? (this.isLive ? to : (from + to) / 2);
        const length = Math.min(Math.max(this.length * factor, SHORTEST), LONGEST);
        const end = centre + (to - centre) * (length / this.length);
        this.isLive = this.isLive && end >= this.now - 1;
        this.set(length, end);
    }

    goLive() {
        this.isLive = true;
        this.show();
    }

    key(key) {
        const buttons = {
            ArrowLeft: "earlier", ArrowRight: "later", "+": "closer", "-": "wider", l: "live",
        };
        if (!(key in buttons)) return false;
        byId(`trends-${buttons[key]}`).click();
        return true;
    }

    show() {
        const known = SPANS.some(([, ms]) => ms === this.length);
        byId("trends-span").value = known ? this.length : "";
        setAttribute(byId("trends-live"), "aria-pressed", String(this.isLive));
        this.onMove();
    }

    askRange() {
        const { from, to } = this.range();
        byId("range-from").value = inputText(from);
        byId("range-to").value = inputText(to);
        setText(byId("range-notice"), "");
        byId("range-dialog").showModal();
    }

    takeRange(event) {
        const from = new Date(byId("range-from").value).getTime();
        const to = new Date(byId("range-to").value).getTime();
        if (!(to - from >= SHORTEST && to - from <= LONGEST)) {
            setText(byId("range-notice"), "The range must be 2 seconds to a year long.");
            event.preventDefault();
            return;
        }
        this.isLive = false;
        this.set(to - from, to);
    }
}
