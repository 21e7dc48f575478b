"""The other views in a real browser: trends, link, recipes and frames, as a person uses them."""

import json
import time

from stationBrowser import SIZES, BrowserTest

RETURN_S = 30  # a silent PLC is asked again after up to 8 s
RECIPE = """name,station,area,address,type,value
set,1,MW,100,float32:high,12.5
batch,1,MW,104,uint32,70000
"""
# A lane of the trends draws its plot on a canvas: whether anything but the ground is on it.
DRAWN = """
return [...document.querySelectorAll("#trends-lanes canvas")].some((canvas) => {
    const {width, height} = canvas;
    const copy = document.createElement("canvas");
    Object.assign(copy, {width: width || 1, height: height || 1});
    const context = copy.getContext("2d", {willReadFrequently: true});
    if (width && height) context.drawImage(canvas, 0, 0);
    const pixels = context.getImageData(0, 0, copy.width, copy.height).data;
    for (let i = 0; i < pixels.length; i += 4) {
        const [red, green, blue, alpha] = pixels.slice(i, i + 4);
        if (alpha > 200 && Math.max(red, green, blue) - Math.min(red, green, blue) > 60) return true;
    }
    return false;
});
"""


class BrowserViews(BrowserTest):
    """Each test on a panel's screen and on a desktop's."""

    def on_each_size(self, view, test):
        """Runs a test in a browser of each size, on a view."""
        for width, height in SIZES:
            with self.subTest(width=width):
                self.browse(width, height)
                self.view(view)
                test()
                self.nothing_went_wrong()
                self.browser.close()

    def notice(self, part):
        """The recipe's notice says so."""
        self.awaits(lambda: part in self.browser.text("#recipe-notice"), part)

    def test_link_shows_its_state_and_the_plan_of_its_reads(self):
        def shown():
            card = self.browser.shown_text("[data-card=plc]")
            self.assertIn("up", card)
            self.assertIn(self.plc.link, card)
            self.browser.click("[data-card=plc] summary")
            self.awaits(lambda: "MW100" in self.browser.text("[data-card=plc] details"), "no plan")
            self.assertIn("the pace bounds it", self.browser.text("[data-card=plc] summary"))
        self.on_each_size("link", shown)

    def test_recipe_is_compared_and_downloaded_with_verification(self):
        self.file("set.csv", RECIPE)

        def compared():
            for place in (100, 102, 104, 106):
                self.control.command(f"set MW{place}=0")
            self.browser.one("#recipe-file").send_keys(str(self.folder / "set.csv"))
            self.awaits(lambda: len(self.browser.all("[data-column=value]")) == 2, "no rows")
            self.browser.one("#recipe-compare").click()
            self.notice("2 values differ")
            self.assertIn("12.5", self.browser.text("#recipe-differences"))
            self.browser.one("#recipe-download").click()
            self.notice("Download done")
            self.assertEqual("70000", str(int(self.control.command("get MW104")) +
                                          65536 * int(self.control.command("get MW106"))))
            self.browser.one("#recipe-compare").click()
            self.notice("the PLC has these values")
        self.on_each_size("recipes", compared)

    def test_failed_download_names_its_block(self):
        self.file("guarded.csv", "name,station,area,address,type,value\nkept,1,MW,200,uint16,5\n")
        self.browse(800, 480)
        self.view("recipes")
        self.browser.one("#recipe-file").send_keys(str(self.folder / "guarded.csv"))
        self.awaits(lambda: self.browser.all("[data-column=value]"), "no rows")
        self.browser.one("#recipe-download").click()
        self.notice("MW200")
        self.assertEqual("bad", self.browser.one("#recipe-notice").get_attribute("data-kind"))
        self.nothing_went_wrong()

    def test_frames_are_decoded_filtered_and_paused(self):
        def shown():
            self.awaits(lambda: len(self.browser.all("[data-frame]")) > 10, "no frames")
            self.assertRegex(self.browser.text("#frames-list"), "read [0-9]+ holding registers")
            self.browser.one("#frames-pause").click()
            self.awaits(lambda: "Paused" in self.browser.text("#frames-notice"), "no pause")
            before = self.browser.text("#frames-list")
            self.awaits(lambda: "Paused: 0 " not in self.browser.text("#frames-notice"),
                        "no frame since the pause")
            self.assertEqual(before, self.browser.text("#frames-list"))
            self.browser.one("#frames-pause").click()
            self.browser.one("#frames-filter").send_keys("no such words")
            self.awaits(lambda: not self.browser.all("[data-frame]"), "the filter lets all through")
        self.on_each_size("frames", shown)

    def test_trend_has_a_gap_while_nothing_answered(self):
        begin = int(time.time() * 1000)
        self.browse(1280, 800)
        self.plc_stands_still()
        self.view("trends")
        self.awaits(lambda: self.browser.script(DRAWN), "nothing is drawn")
        # The history is written once a second.
        self.awaits(lambda: self.has_gap(self.buckets(begin)), "no gap between good values")
        self.nothing_went_wrong()

    def buckets(self, begin):
        """The history since a time, as the page gets it."""
        return json.loads(self.browser.script(
            "return fetch('/api/v1/history?link=plc&tag=fill%20level&from=' + arguments[0]"
            " + '&points=100').then((answer) => answer.text())", begin))["buckets"]

    @staticmethod
    def has_gap(buckets):
        """Whether something is known, then nothing, then something again."""
        known = [bucket[1] is not None for bucket in buckets]
        first = known.index(True) if True in known else len(known)
        return False in known[first:] and True in known[first + known[first:].index(False):]

    def plc_stands_still(self):
        """The PLC stands still for so long that its values are not good."""
        self.awaits(lambda: self.quality("fill level") == "good", "never good")
        self.control.command("stall 4")
        self.awaits(lambda: self.quality("fill level") != "good", "good without a PLC")
        self.awaits(lambda: self.quality("fill level") == "good", "not good again", RETURN_S)
