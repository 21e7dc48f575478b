"""The page's stream in a real browser: a lost stream is seen, and tabs share one."""

import signal
import time

from stationBrowser import ODD_NAME, STREAM, BrowserTest

GREY_S = 2
SLACK_S = 1  # of a busy machine
TRIES = 5


class BrowserStream(BrowserTest):
    """What the stream does to the page."""

    def goes_grey(self, how):
        """The page is lost within 2 s of a trouble, and live again by itself. A busy machine makes
        single pages late, so the quickest of some counts."""
        taken = []
        while len(taken) < TRIES and not (taken and taken[-1] <= GREY_S + SLACK_S):
            how()
            began = time.monotonic()
            self.awaits_stream("lost")
            taken.append(time.monotonic() - began)
            self.control.command(f"set MW300={20 + len(taken)}")
            self.relay.resume()
            self.awaits_stream("live")
            self.awaits_value(ODD_NAME, str(20 + len(taken)))
        self.assertLessEqual(min(taken), GREY_S + SLACK_S, taken)

    def test_frozen_stream_turns_the_page_grey(self):
        self.browse(800, 480)
        self.goes_grey(self.relay.freeze)

    def test_cut_stream_turns_the_page_grey(self):
        self.browse(800, 480)
        self.goes_grey(self.relay.cut)

    def test_tabs_share_one_stream_and_survive_each_other(self):
        for name in ("127.0.0.1", "panel.local"):
            with self.subTest(name=name):
                self.browse(800, 480, name)
                first = self.browser.driver.current_window_handle
                tabs = [first] + [self.browser.new_tab(self.address(name)) for _ in range(2)]
                for tab in tabs:
                    self.browser.show(tab)
                    self.awaits_stream("live")
                self.awaits(lambda: self.relay.open_requests(STREAM) == 1, "not one stream")
                self.browser.show(tabs[0])
                self.browser.close_tab(tabs[1])
                for number, tab in enumerate(tabs[1:]):
                    self.browser.show(tab)
                    self.awaits_stream("live")
                    self.control.command(f"set MW300={number + 40}")
                    self.awaits_value(ODD_NAME, str(number + 40))
                self.awaits(lambda: self.relay.open_requests(STREAM) == 1, "not one stream")
                self.nothing_went_wrong()
                self.browser.close()

    def test_name_of_the_panel_serves_the_page(self):
        self.browse(1280, 800, "panel.local")
        self.assertFalse(self.browser.script("return isSecureContext"))
        self.nothing_went_wrong()


class BrowserReload(BrowserTest):
    """A page that is open while the station reads its configuration again."""

    def station_arguments(self):
        self.configure("plc", "other", allow_writes=True)
        return ["--config", "station.toml"]

    def configure(self, *links, allow_writes):
        """Writes a configuration whose first link leads to the PLC, the others nowhere."""
        places = [self.plc.link] + ["tcp:127.0.0.1,1"] * (len(links) - 1)
        self.file("station.toml", 'listen = "127.0.0.1:0"\n' + (
            f"allow_writes = {str(allow_writes).lower()}\n") + "".join(
                f'[[link]]\nname = "{name}"\nlink = "{place}"\ntags = "tags.csv"\n'
                for name, place in zip(links, places)))

    def links_offered(self):
        """The links whose frames a person can choose."""
        return self.browser.attributes("#frames-link option", "value")

    def test_page_follows_the_links_and_the_leave_to_write(self):
        self.browse(1280, 800)
        self.view("frames")
        self.awaits(lambda: self.links_offered() == ["plc", "other"], "not both links")
        self.awaits(lambda: self.browser.all("[data-writes=allowed]"), "writing is not allowed")
        self.configure("plc", allow_writes=False)
        self.station.process.send_signal(signal.SIGHUP)
        self.awaits(lambda: self.browser.all("[data-writes=refused]"), "writing seems allowed")
        self.awaits(lambda: self.links_offered() == ["plc"], "the link that went is offered")
        self.view("values")
        self.awaits(lambda: not self.browser.all("[data-edit]"), "writing is offered")
        self.awaits(lambda: self.quality("setpoint") == "good", "not good")
        self.nothing_went_wrong()
