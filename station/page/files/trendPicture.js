// The trends as one picture.
const HEAD = 24;
const FONT = "13px sans-serif";

/** @param {import("./trendLane.js").TrendLane[]} lanes
 * @param {string} title
 * @returns {Promise<Blob>} PNG */
export function trendPicture(lanes, title) {
    const ratio = window.devicePixelRatio || 1;
    const style = getComputedStyle(document.documentElement);
    const width = lanes[0].box.clientWidth;
    const height = lanes.reduce((sum, { box }) => sum + box.clientHeight + HEAD, HEAD);
    const canvas = document.createElement("canvas");
    canvas.width = width * ratio;
    canvas.height = height * ratio;
    const context = canvas.getContext("2d");
    context.scale(ratio, ratio);
    context.fillStyle = style.getPropertyValue("--panel");
    context.fillRect(0, 0, width, height);
    context.fillStyle = style.getPropertyValue("--text");
    context.font = FONT;
    context.fillText(title, 8, HEAD - 8);
    let top = HEAD;
    for (const lane of lanes) {
        context.fillText(lane.tag, 8, top + HEAD - 8);
        drawLane(context, lane.box, top + HEAD);
        top += HEAD + lane.box.clientHeight;
    }
    return new Promise((done) => { canvas.toBlob(done, "image/png"); });
}

/** The plot's own canvas, and the labels of its axes, which are elements. */
function drawLane(context, box, top) {
    const origin = box.getBoundingClientRect();
    for (const canvas of box.querySelectorAll("canvas")) {
        const at = canvas.getBoundingClientRect();
        const left = at.left - origin.left;
        context.drawImage(canvas, left, top + at.top - origin.top, at.width, at.height);
    }
    for (const label of box.querySelectorAll(".dygraph-axis-label")) {
        const range = document.createRange();
        range.selectNodeContents(label);
        const at = range.getBoundingClientRect();
        const bottom = top + at.bottom - origin.top - 3;
        context.fillText(label.textContent, at.left - origin.left, bottom);
    }
}
