// The plot of one tag, with its name and the value under the cursor.
import { make, setText } from "./dom.js";
import { valueText } from "./format.js";
import { apiPath } from "./station.js";
import { drawMarks } from "./trendMarks.js";
import { TrendSeries } from "./trendSeries.js";

const AXIS_WIDTH = 64;

function colour(name) {
    return getComputedStyle(document.documentElement).getPropertyValue(name).trim();
}

function colours() {
    return {
        line: colour("--accent"), grid: colour("--line"), loss: colour("--bad-ground"),
        good: colour("--good"), bad: colour("--bad"),
    };
}

export class TrendLane {
    /** @param {import("./model.js").Model} model
     * @param {{link: string, tag: string}} of
     * @param {() => void} onRemove */
    constructor(model, { link, tag }, onRemove) {
        this.model = model;
        this.link = link;
        this.tag = tag;
        this.series = new TrendSeries(model, link, tag);
        this.value = make("span.lane-value");
        this.csv = make("a.button", {
            text: "CSV", download: `${tag}.csv`, "aria-label": `${tag} as CSV`, href: "#",
        });
        const remove = make("button.icon", {
            type: "button", text: "✕", "aria-label": `Remove ${tag}`, onclick: onRemove,
        });
        this.box = make("div.plot");
        this.element = make("article.lane", { "data-lane": tag }, [
            make("div.lane-head", {},
                [make("span.name", { text: tag }), this.value, this.csv, remove]),
            this.box,
        ]);
    }

    get type() {
        return this.model.find(this.link, this.tag)?.type;
    }

    end() {
        this.series.end();
        this.plot?.destroy();
        this.element.remove();
    }

    /** Draws the span. The box must be on the page.
     * @param {number} from
     * @param {number} to
     * @param {boolean} hasTimes  whether the times stand below; they are the same for all lanes */
    draw(from, to, hasTimes) {
        this.csv.href = apiPath("history.csv",
            { link: this.link, tag: this.tag, from: Math.floor(from), to: Math.floor(to) });
        const { rows: known } = this.series;
        const rows = known.length > 0 ? known : [[new Date(from), [NaN, NaN, NaN]]];
        if (this.plot) this.plot.updateOptions({ file: rows, dateWindow: [from, to] });
        else this.plot = this.makePlot(rows, from, to, hasTimes);
    }

    /** The colours changed, or the size did. */
    forgetPlot() {
        this.plot?.destroy();
        this.plot = null;
    }

    makePlot(rows, from, to, hasTimes) {
        const shades = colours();
        return new window.Dygraph(this.box, rows, {
            // dygraphs takes a label for a key of an object, so a tag's name is none.
            labels: ["time", "value"], customBars: true, stepPlot: true,
            dateWindow: [from, to], colors: [shades.line], fillAlpha: 0.25, strokeWidth: 2,
            gridLineColor: shades.grid, axisLineColor: shades.grid, gridLineWidth: 0.5,
            axisLabelFontSize: 12, highlightCircleSize: 0, interactionModel: {},
            axes: {
                y: { axisLabelWidth: AXIS_WIDTH, pixelsPerLabel: 28 },
                x: { pixelsPerLabel: 90, drawAxis: hasTimes },
            },
            underlayCallback: (canvas, area, plot) =>
                drawMarks(canvas, area, plot, this.model.events, this.link, this.tag, shades),
        });
    }

    /** Tells the value of a time; of now when it is null and the trend is live.
     * @param {number|null} time
     * @param {boolean} isLive */
    showValue(time, isLive) {
        if (time === null && !isLive) return setText(this.value, "");
        const now = this.model.find(this.link, this.tag);
        const quality = now && now.quality !== "good" ? ` (${now.quality})` : "";
        setText(this.value, time === null ? valueText(now?.value, now?.type) + quality
            : numberText(this.series.at(time), now?.type));
    }
}

/** A plotted number with the text of the tag's value. */
function numberText(number, type) {
    if (Number.isNaN(number)) return valueText(null);
    return valueText(type === "bool" ? number === 1 : number, type);
}
