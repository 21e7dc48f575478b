"""The pictures of the documents: the page of a simulated tank after a while of use."""

import os
import time
from pathlib import Path

from selenium.webdriver.support.select import Select

from stationBrowser import BrowserTest
from tagTables import DEMO

PIXELS = 1000, 620
RETURN_S = 30  # a silent PLC is asked again after up to 8 s


class BrowserPictures(BrowserTest):
    """Makes the pictures in the folder KAKB_PICTURES, else in one that is removed."""

    plc_arguments = ("--demo", "tank", "--control", "control")
    tags = (DEMO / "tank.csv").read_text(encoding="utf-8")
    good_tag = "level"
    seconds = 12 if "KAKB_PICTURES" in os.environ else 1  # so that there is something to see

    def is_filling(self):
        """Whether there is something to see. A level that is bad for a moment has no text."""
        level = self.value("level")
        return level != "" and float(level) > self.seconds / 4

    def test_pictures_show_values_and_trends(self):
        folder = Path(os.environ.get("KAKB_PICTURES", self.folder))
        self.browse(*PIXELS)
        self.write("automatic", "1")
        self.awaits_outcome("automatic", "confirmed")
        self.write("setpoint", "60")
        self.awaits_outcome("setpoint", "confirmed")
        self.awaits(self.is_filling, "the tank stays empty", 60)
        time.sleep(1.2)  # until the page knows the station's clock
        self.browser.picture(folder / "station-values.png")
        self.control.command("stall 4")
        self.awaits(lambda: self.quality("level") != "good", "good without a PLC")
        self.awaits(lambda: self.quality("level") == "good", "not good again", RETURN_S)
        time.sleep(self.seconds)
        self.view_trends()
        span = Select(self.browser.one("#trends-span"))
        span.select_by_index(0)  # the shortest
        time.sleep(2)  # dygraphs draws
        self.browser.picture(folder / "station-trends.png")
        self.nothing_went_wrong()
