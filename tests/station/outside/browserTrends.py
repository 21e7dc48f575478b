"""The trends in a real browser: one cursor, marks, a range, zoom and pan."""

import time
from datetime import datetime

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.actions.wheel_input import ScrollOrigin

from stationBrowser import BrowserTest
from tcpRelay import TcpRelay
from trendReader import PLOTS, WATCH_PLOTS, WINDOWS, colour_count, pick_range, rows_of

# All plots show the same two words, so at each time their values belong together.
SECOND_WORD = 3
TAGS = """name,station,area,address,type,access
speed,1,MW,100,uint16,rw
total,1,MW,100,uint32:low,rw
slope,1,MW,100,int16,rw
"""
STEP_S = 0.4
STEPS = 8
NEAR_MS = 30  # a bucket of the history, and two pixels; a step takes 500 ms
NEAR_PX = 2
# The relay takes each connection and closes it, which is another loss each time. A test looks twice
# in less than this.
PAUSE_MS = "5000"


class BrowserTrends(BrowserTest):
    """Three plots of a PLC whose way a test can cut."""

    plc_arguments = ("--control", "control")
    tags = TAGS
    good_tag = "speed"

    def station_arguments(self):
        self.way = TcpRelay(("127.0.0.1", self.plc.port))
        self.addCleanup(self.way.close)
        self.control.command(f"set MW102={SECOND_WORD}")
        return ["--listen", "127.0.0.1:0", "--tags", "tags.csv", "--timeout-ms", "200",
                "--link", f"tcp:127.0.0.1,{self.way.port}", "--allow-writes",
                "--pause-ms", PAUSE_MS]

    def open_trends(self):
        """The page with the plots of all tags, each of which tells its span to windows()."""
        self.browse(1280, 800)
        self.view("trends")
        self.awaits(lambda: self.browser.script("return window.Dygraph !== undefined"), "no plots")
        self.browser.script(WATCH_PLOTS)
        self.awaits(lambda: len(self.windows()) == 3, "not three plots")

    def windows(self):
        """The spans of time that the plots show, each [from, to] in ms since 1970."""
        return self.browser.script(WINDOWS)

    def window(self):
        """The span of time that all plots show."""
        found = self.windows()
        self.assertEqual([found[0]] * 3, found)
        return found[0]

    def step_up(self):
        """Counts the word up, for a few seconds; returns when it began and ended."""
        begin = time.time()
        for step in range(1, STEPS + 1):
            self.control.command(f"set MW100={step}")
            self.awaits_value_of_lane("speed", str(step))
            moment = time.monotonic() + STEP_S
            self.awaits(lambda moment=moment: time.monotonic() > moment, "time stands still")
        return begin, time.time()

    def awaits_value_of_lane(self, tag, value):
        """The head of a plot shows a value."""
        self.awaits(lambda: self.lane_value(tag) == value, f"{tag} is not {value}")

    def lane_value(self, tag):
        """The value that the head of a plot shows."""
        return self.browser.text(f"[data-lane={tag}] .lane-value")

    def pointer(self, x, tag="speed"):
        """Moves the mouse to a place of a plot, from its left edge."""
        box = self.browser.one(f"[data-lane={tag}] .plot")
        ActionChains(self.browser.driver, duration=0).move_to_element_with_offset(
            box, x - box.size["width"] // 2, 0).perform()

    def time_at(self, x):
        """The time at a place of the plots."""
        return self.browser.script(PLOTS + "return plots()[0].toDataXCoord(arguments[0]);", x)

    def cursor_at(self, x):
        """Moves the mouse to a place of a plot; waits until the page has its cursor there."""
        self.pointer(x)
        self.awaits(lambda: abs(self.cursor_place() - x) <= NEAR_PX, f"no cursor at {x}")

    def cursor_place(self):
        """The place of the page's cursor, from the left edge of a plot."""
        return self.browser.script("""
const place = (selector) => document.querySelector(selector).getBoundingClientRect().left;
return place(".cursor-line") - place("[data-lane=speed] .plot");""")

    def test_cursor_shows_the_values_of_all_plots_at_one_time(self):
        self.open_trends()
        begin, end = self.step_up()
        begin, end = int(begin), int(end) + 1
        self.awaits(lambda: time.time() > end + 1 and [
            value for _, value in rows_of(self.address(), "speed", begin, end)][-1:] == [str(STEPS)],
                    "the history lacks the last step")
        pick_range(self.browser, begin, end)
        self.assertEqual([begin * 1000, end * 1000], self.window())
        self.awaits(self.is_drawn_to_its_end, "the history is not shown")
        rows = rows_of(self.address(), "speed", begin - 60, end)  # one holds at the begin
        seen = set()
        for x in range(80, 1200, 40):
            self.cursor_at(x)
            moment = self.time_at(x)
            speed, total, slope = (self.lane_value(tag) for tag in ("speed", "total", "slope"))
            if speed == "—":
                continue
            self.assertEqual((str(int(speed) + SECOND_WORD * 65536), speed), (total, slope))
            ends = [at for at, _ in rows[1:]] + [moment + NEAR_MS]
            held = {value for (at, value), until in zip(rows, ends)
                    if at <= moment + NEAR_MS and until >= moment - NEAR_MS}
            self.assertIn(speed, held)
            clock = datetime.fromtimestamp(moment / 1000).strftime("%H:%M:%S")
            self.assertEqual(clock, self.browser.text(".cursor-time"))
            seen.add(int(speed))
        self.assertLess(STEPS - 3, len(seen), seen)
        self.nothing_went_wrong()

    def is_drawn_to_its_end(self):
        """Whether the plots know the last step."""
        self.pointer(1190)
        return self.lane_value("speed") == str(STEPS)

    def test_zoom_and_pan_keep_the_plots_together(self):
        self.open_trends()
        begin, end = self.window()
        box = self.browser.one("[data-lane=total] .plot")
        x = 600
        self.pointer(x, "total")
        origin = ScrollOrigin.from_element(box, x - box.size["width"] // 2, 0)
        self.browser.one("#trends-earlier").click()  # no longer live
        before = self.window()
        still = self.time_at(x)
        ActionChains(self.browser.driver).scroll_from_origin(origin, 0, -100).perform()
        self.awaits(lambda: self.window() != before, "no zoom")
        zoomed = self.window()
        self.assertAlmostEqual(1 / 1.25, (zoomed[1] - zoomed[0]) / (end - begin), 3)
        self.assertAlmostEqual(still, self.time_at(x), delta=2 * (end - begin) / 1200)
        ActionChains(self.browser.driver, duration=0).move_to_element(box).click_and_hold() \
            .move_by_offset(200, 0).release().perform()
        self.awaits(lambda: self.window() != zoomed, "no pan")
        panned = self.window()
        self.assertAlmostEqual(zoomed[1] - zoomed[0], panned[1] - panned[0], delta=1)
        moved = self.time_at(200) - self.time_at(0)
        self.assertAlmostEqual(moved, zoomed[0] - panned[0], delta=moved / 50)
        self.browser.one("body").send_keys("l")
        self.awaits(lambda: self.window()[1] > time.time() * 1000 - 5000, "not live again")
        self.nothing_went_wrong()

    def test_write_and_loss_of_the_link_are_marked(self):
        self.open_trends()
        self.assertEqual((0, 0), (colour_count(self.browser, "--good"),
                                  colour_count(self.browser, "--bad-ground")))
        self.view("values")
        self.write("speed", "5")
        self.awaits_outcome("speed", "confirmed")
        self.way.cut()
        self.awaits(lambda: self.quality("speed") == "bad", "good without a link")
        self.way.resume()
        self.awaits(lambda: self.quality("speed") == "good", "not good again")
        self.view_trends()
        self.browser.one("#trends-lanes summary").click()
        self.awaits(lambda: len(self.marks()) >= 4, "not every mark is listed")
        [written] = [mark for mark in self.marks() if "speed = 5" in mark]
        self.assertIn("confirmed", written)
        self.assertEqual(1, len([mark for mark in self.marks() if "link plc lost: " in mark]))
        for _ in range(8):  # a short loss is narrow
            self.browser.one("#trends-closer").click()
        self.awaits(lambda: colour_count(self.browser, "--bad-ground") > 3 * 100,
                    "no loss is drawn in each plot")
        self.awaits(lambda: colour_count(self.browser, "--good") > 40, "no write is drawn")
        self.nothing_went_wrong()

    def marks(self):
        """The marks in words."""
        return self.browser.texts(".marks li")
