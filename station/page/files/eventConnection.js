// One connection to the station's stream of Server-Sent Events.
//
// It is read with fetch(): unlike an EventSource that tells a lost login from a lost station, and
// it can begin behind a known event.
import { apiPath } from "./station.js";

/** A message of the stream.
 * @typedef {{event: string, data: any, id: string}} StreamMessage */

/** Splits the text of a stream into messages. */
export class MessageReader {
    /** @param {(message: StreamMessage) => void} onMessage */
    constructor(onMessage) {
        this.onMessage = onMessage;
        this.rest = "";
        this.clear();
    }

    clear() {
        this.event = "message";
        this.data = [];
        this.id = "";
    }

    /** @param {string} text  in pieces as they come */
    take(text) {
        const lines = (this.rest + text).split("\n");
        this.rest = lines.pop() ?? "";
        for (const line of lines) this.takeLine(line.endsWith("\r") ? line.slice(0, -1) : line);
    }

    takeLine(line) {
        if (line === "") return this.end();
        const colon = line.indexOf(":");
        const field = colon < 0 ? line : line.slice(0, colon);
        const value = colon < 0 ? "" : line.slice(colon + 1).replace(/^ /, "");
        if (field === "event") this.event = value;
        else if (field === "data") this.data.push(value);
        else if (field === "id") this.id = value;
    }

    end() {
        const { event, data, id } = this;
        this.clear();
        if (event === "gap") return; // the end of a message that was cut short: its data is none
        if (data.length > 0) this.onMessage({ event, data: JSON.parse(data.join("\n")), id });
    }
}

/** Opens a connection. It tells its end once, unless it was closed.
 * @param {{frames: string|null, lastId: string}} from  the link whose frames are wanted; the last
 *     known event, "0" for all that are kept
 * @param {(message: StreamMessage) => void} onMessage
 * @param {(status: number) => void} onEnd  with the status of the answer; 0: none, or it broke off
 * @returns {() => void} closes it */
export function openEvents(from, onMessage, onEnd) {
    const closing = new AbortController();
    const reader = new MessageReader(onMessage);
    read(from, reader, closing.signal)
        .catch(() => 0)
        .then((status) => {
            if (!closing.signal.aborted) onEnd(status);
        });
    return () => closing.abort();
}

async function read(from, reader, signal) {
    const response = await fetch(apiPath("events", { frames: from.frames ?? undefined }), {
        headers: { Accept: "text/event-stream", "Last-Event-ID": from.lastId },
        credentials: "same-origin",
        cache: "no-store",
        signal,
    });
    if (!response.ok || !response.body) return response.status;
    const text = response.body.pipeThrough(new TextDecoderStream()).getReader();
    for (;;) {
        const { done, value } = await text.read();
        if (done || signal.aborted) return 0;
        reader.take(value);
    }
}
