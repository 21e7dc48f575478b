"""The page's line that tells how the station stands with its broker."""

import json
import urllib.request

from cappedHistory import TABLE, CappedHistory, configuration
from mosquittoBroker import MosquittoBroker
from stationBrowser import BrowserTest

LINE = "#broker-line"
RETURN_S = 40  # the pause of a station that has tried for long, and the delivery
QUESTIONS = ("return performance.getEntriesByType('resource')"
             ".filter((entry) => entry.name.endsWith('/api/v1/plant')).length;")


def dialect(name, state):
    """The selector of a dialect in a state."""
    return f"{LINE} [data-broker={name}][data-state={state}]"


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
            self.browser.one(dialect("sparkplug", "connected")).text,
            rf"^sparkplug: connected, {self.broker.url}, since [0-9:]+, behind by \d+, dropped 0$")
        self.assertRegex(self.browser.one(dialect("json", "connected")).text,
                         rf"^json: connected, {self.broker.url}, since [0-9:]+$")
        asked = self.browser.script(QUESTIONS)
        self.broker.kill()
        self.awaits(lambda: not self.browser.all(dialect("sparkplug", "connected")),
                    "the line tells nothing of the broker's end")
        self.awaits(lambda: "behind by 0" not in self.browser.one(
            f"{LINE} [data-broker=sparkplug]").text, "nothing is behind", 20)
        self.broker.start()
        self.awaits_dialects("connected")
        self.awaits(lambda: "behind by 0" in self.browser.one(
            f"{LINE} [data-broker=sparkplug]").text, "it stays behind", 20)
        self.assertEqual(asked, self.browser.script(QUESTIONS), "the stream tells it all")


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
        self.awaits(lambda: "behind by 0," in self.line(), "it stays behind", RETURN_S)
        with urllib.request.urlopen(f"{self.address()}api/v1/plant") as answer:
            [standing] = json.load(answer)
        self.assertGreater(standing["dropped"], 0)
        self.assertTrue(self.line().endswith(f", dropped {standing['dropped']}"), self.line())

    def line(self):
        """How the dialect stands."""
        return self.browser.one(f"{LINE} [data-broker=sparkplug]").text


class BrowserWithoutBroker(BrowserTest):
    """A station that publishes nothing."""

    def test_there_is_no_line(self):
        self.browse(800, 480)
        self.awaits(lambda: self.browser.script(QUESTIONS) > 0, "nobody asked")
        self.assertFalse(self.browser.one(LINE).is_displayed())
