"""The page's line that tells how the station stands with its broker."""

import json
import signal
import urllib.request

from cappedHistory import TABLE, CappedHistory, configuration
from mosquittoBroker import MosquittoBroker
from stationBrowser import BrowserTest

LINE = "#broker-line"
DAY = r"20\d\d-\d\d-\d\d"  # "since 10:31:07" would be of today, and sessions last for months
RETURN_S = 120  # the pause of a station that has tried for long, and the delivery
ASKED = ("return performance.getEntriesByType('resource')"
         ".filter((entry) => entry.name.endsWith(arguments[0])).length;")


def dialect(name, state):
    """The selector of a dialect in a state."""
    return f"{LINE} [data-broker={name}][data-state={state}]"


def line(browser, name="sparkplug"):
    """How a dialect stands."""
    return browser.shown_text(f"{LINE} [data-broker={name}]")


def asked(browser, document):
    """How often the page has asked for a document."""
    return browser.script(ASKED, f"/api/v1/{document}")


class BrowserBroker(BrowserTest):
    """A station that publishes in both dialects."""

    def station_arguments(self):
        self.broker = self._keep(MosquittoBroker(self.folder))
        return [*super().station_arguments(), "--mqtt", self.broker.url, "--mqtt-dialect",
                "sparkplug,json"]

    def awaits_dialects(self, state):
        """Both dialects are shown in this state."""
        for name in ("sparkplug", "json"):
            self.awaits(lambda name=name: self.browser.all(dialect(name, state)),
                        f"{name} is not {state}", RETURN_S)

    def test_line_follows_the_broker(self):
        self.browse(800, 480)
        self.awaits_dialects("connected")
        self.assertTrue(self.browser.one(LINE).is_displayed())
        self.assertRegex(
            line(self.browser),
            rf"^sparkplug: connected, {self.broker.url}, since {DAY} [0-9:]+, behind by \d+, "
            "dropped 0$")
        self.assertRegex(line(self.browser, "json"),
                         rf"^json: connected, {self.broker.url}, since {DAY} [0-9:]+$")
        before = {name: asked(self.browser, name) for name in ("plant", "station")}
        self.broker.kill()
        self.awaits(lambda: not self.browser.all(dialect("sparkplug", "connected")),
                    "the line tells nothing of the broker's end")
        self.awaits(lambda: "behind by 0" not in line(self.browser), "nothing is behind", RETURN_S)
        self.broker.start()
        self.awaits_dialects("connected")
        self.awaits(lambda: "behind by 0" in line(self.browser), "it stays behind", RETURN_S)
        # A page that lost its stream for a moment asks once for each time that it reads the station.
        more = {name: asked(self.browser, name) - count for name, count in before.items()}
        self.assertLessEqual(more["plant"], more["station"], "the stream tells it all")

    def colours(self):
        """The filters that the line is seen through."""
        return self.browser.script(
            f"return getComputedStyle(document.querySelector('{LINE}')).filter;")

    def test_line_of_a_station_that_stands_still_is_grey(self):
        self.browse(800, 480)
        self.awaits_dialects("connected")
        self.awaits(lambda: self.colours() == "none", "it is not live")
        self.station.process.send_signal(signal.SIGSTOP)
        self.addCleanup(self.station.process.send_signal, signal.SIGCONT)
        self.awaits_stream("lost")
        self.assertEqual("grayscale(1)", self.colours(), "connected, as far as anybody knows")
        self.station.process.send_signal(signal.SIGCONT)
        self.awaits(lambda: self.colours() == "none", "it does not come back")


class BrowserDropped(BrowserTest):
    """A station whose history dropped rows while no broker was there."""

    plc_arguments = ("--control", "control")
    tags = TABLE
    good_tag = "b0.0"

    def station_arguments(self):
        self.broker = self._keep(MosquittoBroker(self.folder))
        self.broker.kill()
        self.file("station.toml", configuration(self.plc.link, self.broker.url))
        return ["--config", "station.toml"]

    def test_line_counts_what_was_dropped(self):
        CappedHistory(self.control, self.address()).overflow()
        self.broker.start()
        self.browse(800, 480)
        self.awaits(lambda: self.browser.all(dialect("sparkplug", "connected")),
                    "it does not come back", RETURN_S)
        self.awaits(lambda: "behind by 0," in line(self.browser), "it stays behind", RETURN_S)
        with urllib.request.urlopen(f"{self.address()}api/v1/plant") as answer:
            [standing] = json.load(answer)
        self.assertGreater(standing["dropped"], 0)
        self.assertTrue(line(self.browser).endswith(f", dropped {standing['dropped']}"), line(self.browser))


class BrowserWithoutBroker(BrowserTest):
    """A station that publishes nothing."""

    def test_there_is_no_line(self):
        self.browse(800, 480)
        self.awaits(lambda: asked(self.browser, "plant") > 0, "nobody asked")
        self.assertFalse(self.browser.one(LINE).is_displayed())
