"""The page beside a PLC that says nothing, and in front of a station that stands still."""

import json
import signal
import time
from urllib.request import urlopen

from browser import Browser
from stationBrowser import ODD_NAME, BrowserTest
from tcpRelay import TcpRelay

GREY_S = 2
SLACK_S = 1  # of a busy machine
TRIES = 5
ANSWERLESS = "does not answer"


class BrowserSilence(BrowserTest):
    """The way to the PLC is open from the start, and nothing comes back on it."""

    def station_arguments(self):
        self.way = TcpRelay(("127.0.0.1", self.plc.port))
        self.addCleanup(self.way.close)
        self.way.freeze()
        return ["--listen", "127.0.0.1:0", "--tags", "tags.csv", "--timeout-ms", "100",
                "--link", f"tcp:127.0.0.1,{self.way.port}", "--allow-writes"]

    def open_page(self):
        """Opens the page; no value of it will be good."""
        self.browser = self._keep(Browser(1280, 800))
        self.browser.open(self.address())
        self.awaits_stream("live")
        self.awaits(self.rows_shown, "no rows")

    def values(self):
        """The list of values."""
        with urlopen(self.address() + "api/v1/values") as answer:
            return json.loads(answer.read())

    def trouble(self, tag):
        """Why the value is not good, as the row says it to a person; empty: it says nothing."""
        return self.browser.one(f"{self.row(tag)} .trouble").text

    def test_rows_are_bad_with_the_reason_until_the_plc_answers(self):
        self.open_page()
        for tag in ("setpoint", "door open", ODD_NAME):
            self.awaits(lambda tag=tag: ANSWERLESS in self.trouble(tag), f"no reason of {tag}")
            self.assertEqual(("bad", ""), (self.quality(tag), self.value(tag)))
        self.assertEqual({(None, "bad")}, {(value["value"], value["quality"])
                                           for value in self.values()})
        self.assertIn("7 bad", self.browser.text("#values-count"))
        self.control.command("set MW300=5")
        self.way.resume()
        self.awaits(lambda: self.quality("setpoint") == "good", "not good by itself")
        self.awaits_value(ODD_NAME, "5")
        self.awaits(lambda: self.browser.text("#values-count") == "7 tags", "a row is not good")
        self.assertEqual(("0", ""), (self.value("setpoint"), self.trouble("setpoint")))
        self.nothing_went_wrong()

    def test_link_view_says_why_the_station_is_silent_and_the_link_lost(self):
        self.open_page()
        self.view("link")
        self.awaits(lambda: ANSWERLESS in self.card(), "no reason of the silent station")
        self.assertIn("silent", self.card())
        self.way.resume()
        # A connection on which nothing ever came is given up and opened anew meanwhile.
        self.awaits(lambda: "\tanswers\t" in self.card()
                    and not self.browser.all("[data-card=plc] .trouble"),
                    "the station does not answer")
        self.way.cut()
        self.awaits(self.card_tells_the_loss, "no reason of the loss")
        self.nothing_went_wrong()

    def card_tells_the_loss(self):
        """Whether the card says what the station says. The relay takes each connection and closes it,
        so that the link is up for a moment now and then, and lost for other reasons."""
        [reason] = [entry["trouble"] for entry in self.links()]
        card = self.card()
        return (reason is not None and "lost" in card and f"link lost: {reason}" in card
                and self.browser.texts("[data-card=plc] p.trouble") == [reason])

    def card(self):
        """What the link's card says."""
        return self.browser.script(
            "return document.querySelector('[data-card=plc]')?.innerText ?? '';")

    def links(self):
        """The links as the station tells them."""
        with urlopen(self.address() + "api/v1/station") as answer:
            return json.loads(answer.read())["links"]


class BrowserFrozenStation(BrowserTest):
    """A write is under way while the station stands still."""

    def freeze(self):
        """Stops the station; it goes on when the test ends at the latest."""
        self.station.process.send_signal(signal.SIGSTOP)
        self.addCleanup(self.station.process.send_signal, signal.SIGCONT)

    def outcome(self, tag):
        """What the row of a tag tells of its last write."""
        return self.browser.one(f"{self.row(tag)} .outcome").get_attribute("data-outcome")

    def written_while_frozen(self, tag, value):
        """The page turns grey in time, and the row goes on waiting. A busy machine makes single pages
        late, so the quickest of some counts."""
        self.browse(1280, 800)
        taken = []
        while len(taken) < TRIES and not (taken and taken[-1] <= GREY_S + SLACK_S):
            if taken:
                self.awaits(lambda: self.outcome(tag) != "waiting", "the last write never ends")
                self.awaits_stream("live")
            taken.append(self.turns_grey(tag, value))
        self.assertLessEqual(min(taken), GREY_S + SLACK_S, taken)

    def turns_grey(self, tag, value):
        """Sends a value to a station that stands still; returns how long the page looks live."""
        row = self.row(tag)
        self.browser.one(f"{row} [data-edit]").click()
        field = self.browser.one(f"{row} [data-input]")
        field.clear()
        field.send_keys(value)
        self.freeze()
        began = time.monotonic()
        self.browser.one(f"{row} [data-send]").click()
        self.awaits_outcome(tag, "waiting")
        self.awaits_stream("lost")
        taken = time.monotonic() - began
        self.assertTrue(self.browser.one("#lost-banner").is_displayed())
        self.assertEqual("waiting", self.outcome(tag))
        self.station.process.send_signal(signal.SIGCONT)
        return taken

    def test_confirmed_write_is_told_when_the_station_goes_on(self):
        self.written_while_frozen("batch number", "77")
        self.awaits_outcome("batch number", "confirmed")
        self.awaits_stream("live")
        self.awaits_value("batch number", "77")
        self.assertEqual("77", self.control.command("get MW104"))
        self.nothing_went_wrong()

    def test_refused_write_is_told_when_the_station_goes_on(self):
        self.control.command("set MW200=17")
        self.written_while_frozen("guarded", "99")
        self.assertIn("rolled back to 17", self.awaits_outcome("guarded", "refused"))
        self.awaits_stream("live")
        self.assertEqual("17", self.control.command("get MW200"))
        self.nothing_went_wrong()
