"""The values in a real browser: a filter, writes and what becomes of them, a switch."""

import struct

from selenium.webdriver.common.keys import Keys

from stationBrowser import ODD_NAME, SIZES, BrowserTest


# Notes how a row with a switch looks whenever it changes: its outcome, its value and the switch.
WATCH_ROW = """
const row = document.querySelector(arguments[0]);
window.looks = [];
new MutationObserver(() => window.looks.push([
    row.querySelector("[data-outcome]")?.dataset.outcome,
    row.querySelector("[data-quality]").textContent,
    row.querySelector("[role=switch]")?.getAttribute("aria-checked"),
])).observe(row, {subtree: true, childList: true, attributes: true, characterData: true});
"""
BITS = {"0": "false", "1": "true"}  # of a switch that is announced to a screen reader


class BrowserValues(BrowserTest):
    """Each test on a panel's screen and on a desktop's."""

    def on_each_size(self, test):
        """Runs a test in a browser of each size."""
        for width, height in SIZES:
            with self.subTest(width=width):
                self.browse(width, height)
                test()
                self.nothing_went_wrong()
                self.browser.close()

    def checked(self, switch):
        """What a switch shows."""
        return self.browser.one(switch).get_attribute("aria-checked")

    def test_values_are_those_of_the_plc(self):
        def shown():
            self.control.command("set MW300=7")
            self.awaits_value(ODD_NAME, "7")
            self.assertEqual([], self.browser.all("u"), "a name became markup")
            self.control.command("set MW300=65535")
            self.awaits_value(ODD_NAME, "-1")
            self.awaits_good("door open")
            self.assertIn(self.value("door open"), ("0", "1"))
        self.on_each_size(shown)

    def test_filter_leaves_the_tags_that_match(self):
        def filtered():
            field = self.browser.one("#values-filter")
            field.send_keys("batch")
            self.awaits(lambda: self.rows_shown() == 1, "not one row is left")
            self.assertTrue(self.browser.one(self.cell("batch number")).is_displayed())
            field.send_keys(Keys.BACKSPACE * 5)
            self.awaits(lambda: self.rows_shown() > 1, "the rows do not come back")
        self.on_each_size(filtered)

    def test_write_is_confirmed_and_the_plc_has_it(self):
        def written():
            value = f"{self.browser.size[0] / 16 + 0.5}"
            self.write("setpoint", value)
            self.awaits_outcome("setpoint", "confirmed")
            self.awaits_value("setpoint", value)
            high, low = (int(self.control.command(f"get MW{place}")) for place in (100, 102))
            self.assertEqual(float(value), struct.unpack(">f", struct.pack(">HH", high, low))[0])
        self.on_each_size(written)

    def test_refused_write_says_why_and_is_rolled_back(self):
        def refused():
            self.control.command("set MW200=17")
            self.awaits_value("guarded", "17")
            self.write("guarded", "99")
            said = self.awaits_outcome("guarded", "refused")
            self.assertIn("rolled back to 17", said)
            self.assertEqual("17", self.value("guarded"))
            self.assertEqual("17", self.control.command("get MW200"))
        self.on_each_size(refused)

    def test_value_that_does_not_fit_never_reaches_the_plc(self):
        def misfit():
            self.write("batch number", "-5")
            self.awaits(lambda: self.browser.all(f"{self.row('batch number')} [data-outcome]"),
                        "nothing is told")
            self.assertFalse(self.browser.all("[data-outcome=confirmed]"))
            self.assertEqual("0", self.control.command("get MW104"))
            self.refusals += 1
        self.on_each_size(misfit)

    def test_switch_shows_what_is(self):
        def switched():
            self.awaits_good("pump")
            before = self.value("pump")
            after = "1" if before == "0" else "0"
            switch = f"{self.row('pump')} [role=switch]"
            self.browser.script(WATCH_ROW, self.row("pump"))
            self.control.command("stall 0.5")  # the answer takes time
            self.browser.one(switch).click()
            self.awaits_outcome("pump", "confirmed")
            self.awaits_value("pump", after)
            # Its age may tick, too, before the write begins.
            looks = [look for look in self.browser.script("return window.looks;")
                     if look != [None, before, BITS[before]]]
            self.assertEqual([["waiting", before, BITS[before]]], looks[:1])
            self.assertIn(["confirmed", after, BITS[after]], looks)
            self.assertEqual(BITS[after], self.checked(switch))
            self.assertEqual(after, self.control.command("get QX0.5"))
            self.write("pump", before)
            self.awaits_value("pump", before)
        self.on_each_size(switched)
