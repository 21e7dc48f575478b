// The frames of a link as they come, with their meaning.
import { byId, fillSelect, headRow, make, setAttribute, setText } from "./dom.js";
import { preciseClockText } from "./format.js";
import { apiPath, getJson } from "./station.js";

const MOST_ROWS = 300;

function wordsOf(text) {
    return text.toLowerCase().split(/\s+/).filter(Boolean);
}

function isSame(a, b) {
    return a.time === b.time && a.direction === b.direction && a.hex === b.hex;
}

/** A frame that went out, came in, or a number of frames that the stream left out. */
function rowOf(frame) {
    if (frame.skipped)
        return make("tr", {}, [
            make("td.muted", { colspan: 4, text: `${frame.skipped} frames left out` }),
        ]);
    const isSent = frame.direction === ">";
    return make("tr", { "data-frame": true }, [
        make("td.number", { text: preciseClockText(frame.time) }),
        make("td.direction", { text: isSent ? "→ sent" : "← received" }),
        make("td.mono", { text: frame.hex }),
        make("td", { text: frame.meaning ?? "" }),
    ]);
}

export class View {
    /** @param {{model: import("./model.js").Model,
     *     stream: import("./sharedStream.js").SharedStream}} surroundings */
    constructor({ model, stream }) {
        this.model = model;
        this.stream = stream;
        this.isPaused = false;
        this.shown = 0; // of model.framesTaken
        this.body = make("tbody");
        const head = ["Time", "Direction", "Bytes", "Meaning"];
        const table = make("table", { "aria-label": "Frames" }, [headRow(head), this.body]);
        byId("frames-list").append(table);
        byId("frames-link").addEventListener("change", () => this.choose());
        byId("frames-watch").addEventListener("click", () => this.choose());
        byId("frames-filter").addEventListener("input", () => this.redraw());
        byId("frames-pause").addEventListener("click", () => this.pause());
        byId("frames-clear").addEventListener("click", () => this.clear());
    }

    get link() {
        return byId("frames-link").value;
    }

    show() {
        fillSelect(byId("frames-link"), this.model.linkNames());
        this.choose();
    }

    hide() {
        this.stream.wantFrames(null);
    }

    focusFilter() {
        byId("frames-filter").focus();
    }

    key(key) {
        if (key !== "p") return false;
        this.pause();
        return true;
    }

    /** Shows another link: the frames that the station kept, then those of the stream. */
    async choose() {
        const link = this.link;
        if (!link) return;
        setAttribute(byId("frames-capture"), "href", apiPath("frames.pcap", { link }));
        setAttribute(byId("frames-capture"), "download", `${link}.pcap`);
        this.model.startFrames(link);
        this.redraw();
        this.stream.wantFrames(link);
        try {
            this.takeKept(link, await getJson("frames", { link }));
        } catch (error) {
            setText(byId("frames-notice"), `The kept frames are not here: ${error.message}.`);
        }
    }

    /** Puts the kept frames ahead of those that the stream has brought meanwhile. */
    takeKept(link, kept) {
        if (link !== this.link || this.model.framesLink !== link) return;
        const live = this.model.frames;
        const older = kept.filter((frame) => !live.some((newer) => isSame(frame, newer)));
        const next = this.model.nextFrame;
        this.model.startFrames(link);
        this.model.addFrames([...older, ...live]);
        this.model.nextFrame = next;
        this.redraw();
    }

    pause() {
        this.isPaused = !this.isPaused;
        setAttribute(byId("frames-pause"), "aria-pressed", String(this.isPaused));
        setText(byId("frames-pause"), this.isPaused ? "Go on" : "Pause");
        this.update();
    }

    clear() {
        this.model.frames = [];
        this.redraw();
    }

    update() {
        if (fillSelect(byId("frames-link"), this.model.linkNames())) this.choose();
        const isOther = this.model.framesLink !== this.link;
        const fresh = this.model.framesTaken - this.shown;
        this.tell(isOther, fresh);
        if (this.isPaused || isOther) return;
        if (fresh < 0) return this.redraw();
        this.add(fresh > 0 ? this.model.frames.slice(-fresh) : []);
    }

    tell(isOther, fresh) {
        let text = "";
        byId("frames-watch").hidden = !isOther;
        if (isOther)
            text = `Another tab of this browser watches the frames of ${this.model.framesLink}.`;
        else if (this.isPaused) text = `Paused: ${Math.max(0, fresh)} frames since.`;
        setText(byId("frames-notice"), text);
    }

    redraw() {
        this.body.replaceChildren();
        this.shown = this.model.framesTaken;
        if (this.model.framesLink === this.link) this.add(this.model.frames);
    }

    /** Adds rows, the newest on top. */
    add(frames) {
        this.shown = this.model.framesTaken;
        const words = wordsOf(byId("frames-filter").value);
        const wanted = frames.filter((frame) => words.every((word) =>
            `${frame.hex ?? ""}\n${frame.meaning ?? ""}`.toLowerCase().includes(word)));
        this.body.prepend(...wanted.slice(-MOST_ROWS).reverse().map(rowOf));
        while (this.body.rows.length > MOST_ROWS) this.body.lastElementChild.remove();
    }
}
