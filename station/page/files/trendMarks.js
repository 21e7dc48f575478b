// Marks of the trends: writes of the tag, and the times in which the link was lost.
import { dateText, valueText } from "./format.js";

/** @typedef {import("./model.js").PastEvent} PastEvent */

/** The writes of a tag.
 * @param {PastEvent[]} events */
export function writesOf(events, link, tag) {
    return events.filter(({ kind, document }) =>
        kind === "write" && document.link === link && document.tag === tag);
}

/** The spans in which a link was lost. One that lasts ends at infinity.
 * @param {PastEvent[]} events
 * @returns {{from: number, to: number}[]} */
export function lossesOf(events, link) {
    const spans = [];
    for (const { kind, time, document } of events) {
        if (kind !== "link" || document.link !== link) continue;
        const last = spans[spans.length - 1];
        if (last?.to === Infinity) last.to = time;
        if (document.state === "lost") spans.push({ from: time, to: Infinity });
    }
    return spans;
}

/** Draws the marks under a lane's plot.
 * @param {CanvasRenderingContext2D} canvas
 * @param {{x: number, y: number, w: number, h: number}} area
 * @param {any} plot  the dygraph */
export function drawMarks(canvas, area, plot, events, link, tag, colours) {
    const place = (time) =>
        Math.min(Math.max(plot.toDomXCoord(time), area.x), area.x + area.w);
    canvas.save();
    canvas.fillStyle = colours.loss;
    for (const { from, to } of lossesOf(events, link)) {
        const left = place(from);
        const right = to === Infinity ? area.x + area.w : place(to);
        if (right > left) canvas.fillRect(left, area.y, Math.max(2, right - left), area.h);
    }
    for (const { time, document } of writesOf(events, link, tag)) {
        const x = plot.toDomXCoord(time);
        if (x < area.x || x > area.x + area.w) continue;
        canvas.fillStyle = document.outcome === "confirmed" ? colours.good : colours.bad;
        canvas.fillRect(x - 1, area.y, 2, area.h);
        canvas.beginPath();
        canvas.moveTo(x - 6, area.y);
        canvas.lineTo(x + 6, area.y);
        canvas.lineTo(x, area.y + 9);
        canvas.fill();
    }
    canvas.restore();
}

/** The marks of a span in words, oldest first.
 * @param {PastEvent[]} events
 * @param {{link: string, tag: string, type: string|undefined}[]} tags */
export function markTexts(events, tags, from, to) {
    const links = new Set(tags.map((tag) => tag.link));
    return events.filter(({ time }) => time >= from && time <= to)
        .map((event) => markText(event, tags, links))
        .filter(Boolean);
}

function markText({ kind, time, document }, tags, links) {
    if (kind === "link" && links.has(document.link)) {
        const why = document.trouble ? `: ${document.trouble}` : "";
        return `${dateText(time)} link ${document.link} ${document.state}${why}`;
    }
    const of = tags.find(({ link, tag }) => link === document.link && tag === document.tag);
    if (kind !== "write" || !of) return "";
    const reason = document.reason ? `: ${document.reason}` : "";
    return `${dateText(time)} ${document.tag} = ${valueText(document.value, of.type)} `
        + `${document.outcome}${reason}`;
}
