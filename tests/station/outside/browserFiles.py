"""What the trends save: the rows of a plot as CSV, and all plots as a picture."""

import base64
import json
import struct
import time
import zlib
from urllib.parse import parse_qs, urlsplit
from urllib.request import urlopen

from selenium.webdriver.support.select import Select

from stationBrowser import BrowserTest
from trendReader import QUALITY, TAG, TIME, VALUE, colour_count, csv_rows, pick_range, rows_of

PNG_HEAD = b"\x89PNG\r\n\x1a\n"
TAGS = """name,station,area,address,type,access
speed,1,MW,100,uint16,rw
level,1,MW,200,float32:high,rw
"""
LINE_PIXELS = 50
STEPS = (3, 70, 8)
CSV = "[data-lane=speed] a"
TRUE_COLOUR_ALPHA = 6
# The size of a picture, and how many of its pixels have the colour of the plots' lines.
SHOWN = """
const [text, done] = arguments;
const bytes = Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0));
createImageBitmap(new Blob([bytes], { type: "image/png" })).then((picture) => {
    const canvas = new OffscreenCanvas(picture.width, picture.height).getContext("2d");
    const style = getComputedStyle(document.documentElement);
    const pixel = (x, y) => canvas.getImageData(x, y, 1, 1).data.join();
    canvas.fillStyle = style.getPropertyValue("--accent");
    canvas.fillRect(0, 0, 1, 1);
    const wanted = pixel(0, 0);
    canvas.drawImage(picture, 0, 0);
    const { data } = canvas.getImageData(0, 0, picture.width, picture.height);
    let lines = 0;
    for (let i = 0; i < data.length; i += 4) if (data.slice(i, i + 4).join() === wanted) ++lines;
    done({ size: [picture.width, picture.height], lines });
});
"""


def png_chunks(data):
    """The chunks of a PNG file: (kind, bytes); fails when one is damaged."""
    assert data.startswith(PNG_HEAD), data[:20]
    at = len(PNG_HEAD)
    while at < len(data):
        size, kind = struct.unpack(">I4s", data[at:at + 8])
        content = data[at + 8:at + 8 + size]
        [check] = struct.unpack(">I", data[at + 8 + size:at + 12 + size])
        assert zlib.crc32(kind + content) == check, kind
        yield kind, content
        at += 12 + size


class BrowserFiles(BrowserTest):
    """The files land in the folder of the test."""

    plc_arguments = ("--control", "control")
    tags = TAGS
    good_tag = "speed"

    def open_trends(self):
        """The page with both plots."""
        self.browse(1280, 800)
        self.browser.driver.execute_cdp_cmd("Browser.setDownloadBehavior", {
            "behavior": "allow", "downloadPath": str(self.folder)})
        self.view_trends()
        self.awaits(lambda: len(self.browser.all("[data-lane] canvas")) >= 2, "no plots")

    def saved(self, name):
        """The bytes of a file, once it is there whole: the browser renames it at its end."""
        self.awaits(lambda: (self.folder / name).exists() and (self.folder / name).stat().st_size,
                    f"no {name}")
        return (self.folder / name).read_bytes()

    def test_csv_holds_the_rows_of_the_plot(self):
        self.open_trends()
        begin = int(time.time())
        for value in STEPS:
            self.control.command(f"set MW100={value}")
            self.awaits(lambda value=value: self.browser.text(
                "[data-lane=speed] .lane-value") == str(value), "not plotted")
        end = int(time.time()) + 2
        self.awaits(lambda: time.time() > end + 1 and [
            value for _, value in rows_of(self.address(), "speed", begin, end)][-1:] == [
                str(STEPS[-1])], "the history lacks the last step")
        pick_range(self.browser, begin, end)
        [address] = self.browser.attributes(CSV, "href")
        asked = parse_qs(urlsplit(address).query)
        self.assertEqual((["speed"], [str(begin * 1000)], [str(end * 1000)]),
                         (asked["tag"], asked["from"], asked["to"]))
        self.browser.one(CSV).click()
        rows = csv_rows(self.saved("speed.csv").decode())
        self.assertEqual([("speed", "good")] * len(rows), [(row[TAG], row[QUALITY]) for row in rows])
        self.assertEqual(list(STEPS), [int(row[VALUE]) for row in rows][-len(STEPS):])
        self.agree(self.buckets(begin, end), [(int(row[TIME]), int(row[VALUE])) for row in rows])
        self.nothing_went_wrong()

    def buckets(self, begin, end):
        """The history of the speed in short buckets."""
        with urlopen(f"{self.address()}api/v1/history?link=plc&tag=speed&from={begin * 1000}"
                     f"&to={end * 1000}&points=40") as answer:
            return json.loads(answer.read())["buckets"]

    def agree(self, buckets, rows):
        """A row holds until the next; so each bucket behind the first row follows from the rows."""
        ends = [bucket[0] for bucket in buckets[1:]]
        compared = 0
        for (start, *found), end in zip(buckets, ends):
            held = [value for at, value in rows if at <= start][-1:]
            values = held + [value for at, value in rows if start < at < end]
            if not held:
                continue
            self.assertEqual([min(values), max(values), values[-1]], found, start)
            compared += 1
        self.assertLess(len(STEPS), compared)

    def test_picture_has_all_plots(self):
        self.open_trends()
        self.control.command("set MW100=5")
        self.awaits(lambda: self.browser.text("[data-lane=speed] .lane-value") == "5", "not 5")
        Select(self.browser.one("#trends-span")).select_by_index(0)  # the shortest
        self.awaits(lambda: colour_count(self.browser, "--accent") > LINE_PIXELS, "no line")
        self.browser.one("#trends-png").click()
        chunks = list(png_chunks(self.saved("trend.png")))
        self.assertEqual((b"IHDR", b"IEND"), (chunks[0][0], chunks[-1][0]))
        width, height, depth, kind = struct.unpack(">IIBB", chunks[0][1][:10])
        boxes = [box.size for box in self.browser.all("[data-lane] .plot")]
        self.assertEqual({width}, {box["width"] for box in boxes})
        self.assertLess(sum(box["height"] for box in boxes), height)
        self.assertLess(height, 800)
        self.assertEqual((8, TRUE_COLOUR_ALPHA), (depth, kind))
        pixels = zlib.decompress(b"".join(data for name, data in chunks if name == b"IDAT"))
        self.assertEqual((4 * width + 1) * height, len(pixels))
        self.nothing_went_wrong()
        self.shows_as(self.folder / "trend.png", width, height)

    def shows_as(self, file, width, height):
        """A browser shows the picture, and the line of the plots is on it."""
        text = base64.b64encode(file.read_bytes()).decode()
        self.browser.driver.set_script_timeout(20)
        shown = self.browser.driver.execute_async_script(SHOWN, text)
        self.assertEqual([width, height], shown["size"])
        self.assertLess(LINE_PIXELS, shown["lines"])
