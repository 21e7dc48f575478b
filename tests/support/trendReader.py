"""What the page's trends show, and what the history holds."""

import csv
import io
from datetime import datetime
from urllib.request import urlopen

TIME, LINK, TAG, VALUE, QUALITY = range(5)  # the columns of the CSV
# The plots tell their spans when they are drawn anew, which a live trend does each second.
WATCH_PLOTS = """
window.seenPlots = new Map();
const update = Dygraph.prototype.updateOptions;
Dygraph.prototype.updateOptions = function (...given) {
    window.seenPlots.set(this.graphDiv.closest(".plot"), this);
    return update.apply(this, given);
};
"""
PLOTS = """
const plots = () => [...document.querySelectorAll("[data-lane] .plot")]
    .map((box) => window.seenPlots.get(box)).filter(Boolean);
"""
WINDOWS = PLOTS + "return plots().map((plot) => plot.xAxisRange());"
# Pixels of one of the page's colours on the plots' canvases.
COLOURED = """
const probe = document.createElement("canvas").getContext("2d", { willReadFrequently: true });
probe.fillStyle = getComputedStyle(document.documentElement).getPropertyValue(arguments[0]);
probe.fillRect(0, 0, 1, 1);
const wanted = probe.getImageData(0, 0, 1, 1).data.join();
let count = 0;
for (const canvas of document.querySelectorAll("[data-lane] canvas")) {
    if (canvas.width === 0) continue;
    const copy = new OffscreenCanvas(canvas.width, canvas.height).getContext("2d");
    copy.drawImage(canvas, 0, 0);
    const { data } = copy.getImageData(0, 0, canvas.width, canvas.height);
    for (let i = 0; i < data.length; i += 4)
        if (data.slice(i, i + 4).join() === wanted) ++count;
}
return count;
"""


def colour_count(browser, name):
    """How many pixels of the plots have one of the page's colours."""
    return browser.script(COLOURED, name)


def pick_range(browser, begin, end):
    """Shows a range of the history, once the dialog is there; the times are whole seconds."""
    browser.one("#trends-range").click()
    for name, moment in (("from", begin), ("to", end)):
        browser.script("arguments[0].value = arguments[1];", browser.one(f"#range-{name}"),
                       datetime.fromtimestamp(moment).isoformat(timespec="seconds"))
    browser.one("#range-form [type=submit]").click()


def csv_rows(text):
    """The rows of a history as CSV, without the head."""
    return list(csv.reader(io.StringIO(text, newline="")))[1:]


def rows_of(address, tag, begin, end):
    """The values of a tag in the history, each with its time in ms since 1970; begin and end are
    seconds."""
    with urlopen(f"{address}api/v1/history.csv?link=plc&tag={tag}&from={begin * 1000}"
                 f"&to={end * 1000}") as answer:
        rows = csv_rows(answer.read().decode())
    return [(int(row[TIME]), row[VALUE]) for row in rows]
