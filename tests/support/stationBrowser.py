"""A browser in front of a running station, with a simulated PLC behind it and a relay between."""

import os
import tempfile
import time
import unittest
from pathlib import Path

from browser import Browser
from plcControl import PlcControl
from processes import PATIENCE_S, Program
from simulatedPlc import SimulatedPlc
from tcpRelay import TcpRelay

PROGRAMS = Path(os.environ["KAKB_PROGRAMS"])
SIZES = ((800, 480), (1280, 800))
# What a view's module makes at its start, or when it is shown.
MADE = {"values": "#values-list *", "trends": "#trends-lanes .lanes", "link": "[data-card]",
        "recipes": "#recipe-tables *", "frames": "#frames-list table"}
REFUSED = "the server responded with a status of 422"  # the browser's own note
STREAM = "GET /api/v1/events"
ODD_NAME = '<u>odd</u> & "co"'  # a page that takes names for markup shows it
TAGS = '''name,station,area,address,type,access
fill level,1,IW,0,uint16,ro
door open,1,IX,8.0,bool,ro
setpoint,1,MW,100,float32:high,rw
batch number,1,MW,104,uint32,rw
guarded,1,MW,200,uint16,rw
pump,1,QX,0.5,bool,rw
"<u>odd</u> & ""co""",1,MW,300,int16,rw
'''


class BrowserTest(unittest.TestCase):
    """Starts the programs once for each test; the browser comes with a size of the screen."""

    plc_arguments = ("--demo-signals", "--control", "control", "--refuse", "MW200:2:write")
    tags = TAGS
    good_tag = "setpoint"  # the page is there when this tag is good

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))
        self.plc = self._keep(SimulatedPlc(
            PROGRAMS / "kakb-sim", self.folder, "tcp", *self.plc_arguments))
        self.control = self._keep(PlcControl(self.folder / "control"))
        self.file("tags.csv", self.tags)
        self.station = self._keep(Program(
            [PROGRAMS / "kakb-station", "--state", "state", *self.station_arguments()],
            self.folder))
        self.station.await_that(lambda: self.station.lines)
        port = int(self.station.lines[0].rstrip("/").rsplit(":", 1)[1])
        self.relay = self._keep(TcpRelay(("127.0.0.1", port)))
        self.browser = None
        self.refusals = 0  # requests of the test that the station refuses

    def station_arguments(self):
        """What the station serves."""
        return ["--listen", "127.0.0.1:0", "--tags", "tags.csv", "--link", self.plc.link,
                "--timeout-ms", "400", "--allow-writes"]

    def _keep(self, started):
        self.addCleanup(started.close)
        return started

    def file(self, name, text):
        """Writes a file into the folder."""
        (self.folder / name).write_text(text, encoding="utf-8")

    def address(self, name="127.0.0.1"):
        """The page's address, through the relay."""
        return f"http://{name}:{self.relay.port}/"

    def browse(self, width, height, name="127.0.0.1", dark=False):
        """Opens the page in a new browser and waits for its first values."""
        self.browser = self._keep(Browser(width, height, dark))
        self.browser.open(self.address(name))
        self.awaits_stream("live")
        self.awaits_good(self.good_tag)
        self.awaits(lambda: not self.browser.all("[data-writes=unknown]"), "it knows no station")

    def awaits(self, condition, what, seconds=PATIENCE_S):
        """The condition becomes true."""
        self.assertTrue(self.browser.shows(condition, seconds), what)

    def awaits_good(self, tag):
        """The tag is good: before, a switch has no state and a value no text."""
        self.awaits(lambda: self.quality(tag) == "good", f"{tag} is not good")

    def awaits_stream(self, state, seconds=PATIENCE_S):
        """The root of the page says so."""
        self.awaits(lambda: self.browser.all(f"[data-stream={state}]"), f"the page is not {state}",
                    seconds)

    def view(self, name):
        """Switches to a view as a person does, and waits for what it makes: its module comes when it is
        first shown, and before that nobody listens to its buttons."""
        self.browser.one(f"[data-view={name}]").click()
        self.awaits(lambda: self.browser.all(MADE[name]), f"no view {name}")

    def view_trends(self):
        """Switches to the trends, whose plots are made once their library is there."""
        self.view("trends")
        self.awaits(lambda: self.browser.all("[data-lane] canvas"), "no plots")

    def cell(self, tag):
        """The selector of a tag's value."""
        return f"[data-quality]{_named(tag)}"

    def row(self, tag):
        """The selector of a tag's row."""
        return f"{_named(tag)}:not([data-quality])"

    def rows_shown(self):
        """How many rows of tags are on the page."""
        return self.browser.shown_count("[data-tag]:not([data-quality])")

    def quality(self, tag):
        """The quality that the page shows; None: it shows no such tag."""
        return self.browser.script(
            "const cell = document.querySelector(arguments[0]);"
            "return cell && cell.dataset.quality;", self.cell(tag))

    def value(self, tag):
        """The value that the page shows."""
        return self.browser.text(self.cell(tag))

    def awaits_value(self, tag, value):
        """The page shows a value."""
        self.awaits(lambda: self.value(tag) == value, f"{tag} is not {value}")

    def write(self, tag, value):
        """Writes a value as a person does."""
        row = self.row(tag)
        self.browser.one(f"{row} [data-edit]").click()
        field = self.browser.one(f"{row} [data-input]")
        field.clear()
        field.send_keys(value)
        self.browser.one(f"{row} [data-send]").click()

    def awaits_outcome(self, tag, outcome):
        """The row of a tag tells the outcome of a write; returns its text."""
        found = f"{self.row(tag)} [data-outcome={outcome}]"
        self.awaits(lambda: self.browser.all(found), f"{tag} is not {outcome}")
        return self.browser.text(found)

    def nothing_went_wrong(self):
        """No request went elsewhere, and the console is empty but for refusals that a test wanted."""
        time.sleep(0.1)
        elsewhere = [url for url in self.browser.requests() if f":{self.relay.port}/" not in url]
        self.assertEqual([], elsewhere)
        self.assertEqual([], [message for message in self.browser.messages()
                              if not self.refusals or REFUSED not in message])


def _named(tag):
    """The selector of what belongs to a tag."""
    escaped = tag.replace("\\", "\\\\").replace('"', '\\"')
    return f'[data-tag="{escaped}"]'
