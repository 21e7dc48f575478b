// Trends: a lane a tag, all over the same span of time, under one cursor.
import { byId, make, saveFile, setText } from "./dom.js";
import { clockText, dateText } from "./format.js";
import { tagKey } from "./model.js";
import { listenToGestures } from "./trendGestures.js";
import { TrendLane } from "./trendLane.js";
import { markTexts } from "./trendMarks.js";
import { trendPicture } from "./trendPicture.js";
import { TrendPicks } from "./trendPicks.js";
import { TrendSpan } from "./trendSpan.js";

const READ_PAUSE = 250; ///< the history is read so long after the last move
const READ_AGAIN = 60000; ///< live rows give way to the history's buckets so often
const LEAST_HEIGHT = 64;
const HEAD_HEIGHT = 44; ///< of a lane, with its margin
const FOOT_HEIGHT = 64; ///< the last lane's times and the marks

/** dygraphs is large, and only this view needs it. Its legend takes names as HTML and styles itself
 * in ways that the page's policy forbids; the lanes have their own. */
async function loadPlots() {
    await new Promise((done, fail) => {
        const script = make("script", { onload: done, onerror: () => fail(new Error("no plots")) });
        script.src = "dygraph.min.js";
        document.head.append(make("link", { rel: "stylesheet", href: "dygraph.min.css" }), script);
    });
    const { Axes, Grid } = window.Dygraph.Plugins;
    window.Dygraph.PLUGINS = [Grid, Axes];
}

export class View {
    /** @param {{model: import("./model.js").Model,
     *     stream: import("./sharedStream.js").SharedStream}} surroundings */
    constructor({ model, stream }) {
        this.model = model;
        this.stream = stream;
        /** @type {TrendLane[]} */
        this.lanes = [];
        this.cursorTime = null;
        this.wasLive = false;
        this.span = new TrendSpan(model, () => this.moved());
        this.picks = new TrendPicks(model, () => this.arrange());
        this.cursor = make("div.cursor-line", { hidden: true }, [make("span.cursor-time")]);
        this.stack = make("div.lanes", {}, [this.cursor]);
        this.marks = make("ul");
        this.markList = make("details.marks", {}, [make("summary", { text: "Marks" }), this.marks]);
        byId("trends-lanes").append(this.stack, this.markList);
        byId("trends-png").addEventListener("click", () => this.savePicture());
        listenToGestures(this.stack, {
            timeAt: (x) => this.timeAt(x), cursor: (time) => this.setCursor(time),
            pan: (ms) => this.span.pan(ms), zoom: (time, factor) => this.span.zoom(factor, time),
            live: () => this.span.goLive(),
        });
        model.eventListeners.push(() => this.draw());
        window.addEventListener("resize", () => this.resize());
        matchMedia("(prefers-color-scheme: dark)").addEventListener("change", () => this.resize());
        this.plots = loadPlots();
    }

    async show() {
        this.isShown = true;
        await this.plots;
        this.arrange();
    }

    hide() {
        this.isShown = false;
        clearTimeout(this.reading);
    }

    key(key) {
        return this.span.key(key);
    }

    update() {
        if (this.picks.isWaiting) this.arrange();
        if (this.stream.isLive && !this.wasLive) this.readSoon(0);
        this.wasLive = this.stream.isLive;
        if (this.cursorTime === null) this.showValues();
    }

    /** Once a second: the live rows. */
    tick() {
        const now = this.model.stationNow();
        if (now === null || !this.isShown) return;
        for (const { series } of this.lanes)
            series.addLive(now, this.stream.isLive, this.span.range().from);
        if (!this.span.isLive) return;
        if (performance.now() - this.readAt > READ_AGAIN) this.readSoon(0);
        this.draw();
    }

    // Lanes.

    arrange() {
        if (!this.isShown || !window.Dygraph) return;
        const wanted = this.picks.chosen();
        const keys = new Set(wanted.map(({ link, tag }) => tagKey(link, tag)));
        for (const lane of this.lanes)
            if (!keys.has(tagKey(lane.link, lane.tag))) lane.end();
        this.lanes = wanted.map((of) => this.lanes.find((lane) =>
            lane.link === of.link && lane.tag === of.tag) ?? this.newLane(of));
        this.stack.append(...this.lanes.map((lane) => lane.element));
        this.tell(this.lanes.length > 0 ? "" : "Pick the tags that the trend shall show.");
        this.resize();
        this.readSoon(0);
    }

    newLane(of) {
        return new TrendLane(this.model, of, () => this.picks.remove(of));
    }

    resize() {
        if (this.lanes.length === 0 || !this.isShown) return;
        const room = byId("trends-lanes").clientHeight - FOOT_HEIGHT;
        const height = Math.max(LEAST_HEIGHT, room / this.lanes.length - HEAD_HEIGHT);
        this.stack.style.setProperty("--lane-height", `${Math.floor(height)}px`);
        for (const lane of this.lanes) lane.forgetPlot();
        this.draw();
    }

    draw() {
        if (!this.isShown || this.model.stationNow() === null) return;
        const { from, to } = this.span.range();
        const last = this.lanes[this.lanes.length - 1];
        for (const lane of this.lanes) lane.draw(from, to, lane === last);
        this.showValues();
        this.drawMarkList(from, to);
        this.placeCursor();
    }

    drawMarkList(from, to) {
        const texts = markTexts(this.model.events, this.lanes, from, to);
        setText(this.markList.firstChild, `Marks: ${texts.length} writes and changes of the link`);
        if (!this.markList.open) return;
        this.marks.replaceChildren(...texts.map((text) => make("li", { text })));
    }

    // The span of time.

    moved() {
        this.draw();
        this.readSoon(READ_PAUSE);
    }

    readSoon(pause) {
        clearTimeout(this.reading);
        this.reading = setTimeout(() => this.read(), pause);
    }

    async read() {
        if (!this.isShown || this.model.stationNow() === null) return;
        this.readAt = performance.now();
        const { from, to } = this.span.range();
        try {
            await Promise.all(this.lanes.map((lane) => lane.series.read(from, to)));
            if (this.lanes.length > 0) this.tell("");
        } catch (error) {
            this.tell(`No history: ${error.message}. The trend begins now.`);
        }
        this.draw();
    }

    tell(text) {
        setText(byId("trends-notice"), text);
    }

    // The cursor.

    timeAt(x) {
        const plot = this.lanes[0]?.plot;
        return plot ? plot.toDataXCoord(x - this.lanes[0].box.getBoundingClientRect().left) : 0;
    }

    setCursor(time) {
        this.cursorTime = time;
        this.showValues();
        this.placeCursor();
    }

    showValues() {
        for (const lane of this.lanes) lane.showValue(this.cursorTime, this.span.isLive);
    }

    placeCursor() {
        const plot = this.lanes[0]?.plot;
        const { from, to } = this.span.range();
        const time = this.cursorTime;
        this.cursor.hidden = !plot || time === null || time < from || time > to;
        if (this.cursor.hidden) return;
        const left = this.lanes[0].box.getBoundingClientRect().left
            - this.stack.getBoundingClientRect().left + plot.toDomXCoord(time);
        this.cursor.style.left = `${left}px`;
        this.cursor.classList.toggle("at-right", left > this.stack.clientWidth / 2);
        setText(this.cursor.firstChild, to - from > 86400000 ? dateText(time) : clockText(time));
    }

    async savePicture() {
        if (this.lanes.length === 0) return;
        const { from, to } = this.span.range();
        const title = `${this.model.station?.name ?? ""}, ${dateText(from)} to ${dateText(to)}`;
        saveFile("trend.png", await trendPicture(this.lanes, title));
    }
}
