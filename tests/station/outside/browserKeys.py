"""The page without a mouse."""

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from stationBrowser import BrowserTest

MOST_TABS = 60  # to anywhere on the page
# Whether the focus is seen.
OUTLINE = """
const style = getComputedStyle(document.activeElement);
return style.outlineStyle !== "none" && parseFloat(style.outlineWidth) >= 1;
"""


class BrowserKeys(BrowserTest):
    """Tab, Enter, Space and Escape reach everything."""

    def press(self, *keys):
        """Presses keys, one after the other."""
        ActionChains(self.browser.driver).send_keys(*keys).perform()

    def focused(self, selector):
        """Whether an element of the selector has the focus."""
        return self.browser.script(
            "return document.activeElement.matches(arguments[0]);", selector)

    def tab_to(self, selector, key=Keys.TAB):
        """Goes on with Tab until an element has the focus; it must be seen to have it."""
        for _ in range(MOST_TABS):
            if self.focused(selector):
                break
            self.press(key)
            if not self.focused("body"):  # behind the last one
                self.assertTrue(self.browser.script(OUTLINE), self.focus_text())
        self.assertTrue(self.focused(selector), f"Tab does not lead to {selector}")

    def focus_text(self):
        """What has the focus."""
        return "the focus is not seen on " + self.browser.script(
            "return document.activeElement.outerHTML.slice(0, 200);")

    def test_tag_is_found_and_written(self):
        self.browse(1280, 800)
        self.tab_to("#values-filter")
        self.press("batch")
        self.awaits(lambda: self.rows_shown() == 1, "not one row is left")
        row = self.row("batch number")
        self.tab_to(f"{row} [data-edit]")
        self.press(Keys.ENTER)
        self.assertTrue(self.focused(f"{row} [data-input]"))
        self.press("41", Keys.ESCAPE)
        self.assertTrue(self.focused(f"{row} [data-edit]"))
        self.press(Keys.SPACE)
        self.assertTrue(self.focused(f"{row} [data-input]"))
        self.press("42", Keys.TAB)
        self.assertTrue(self.focused(f"{row} [data-send]"))
        self.press(Keys.SPACE)
        self.awaits_outcome("batch number", "confirmed")
        self.awaits_value("batch number", "42")
        self.assertEqual("42", self.control.command("get MW104"))
        self.assertTrue(self.focused(f"{row} [data-edit]"), self.focus_text())
        self.nothing_went_wrong()

    def test_switch_is_thrown(self):
        self.browse(1280, 800)
        self.awaits_good("pump")
        before = self.value("pump")
        self.tab_to(f"{self.row('pump')} [data-switch]")
        self.press(Keys.SPACE)
        self.awaits_outcome("pump", "confirmed")
        self.awaits(lambda: self.value("pump") != before, "nothing changed")
        self.assertTrue(self.focused(f"{self.row('pump')} [data-switch]"))

    def test_views_and_dialogs_are_reached_and_left(self):
        self.browse(1280, 800)
        for name, key in (("trends", Keys.ENTER), ("link", Keys.SPACE), ("values", Keys.ENTER)):
            self.tab_to(f"[data-view={name}]")
            self.press(key)
            self.awaits(lambda name=name: self.browser.shown_count(f"#{name}-view"), name)
            self.assertEqual(name, self.browser.one("[aria-current=page]").get_attribute(
                "data-view"))
            self.assertTrue(self.focused(f"[data-view={name}]"), self.focus_text())
        self.tab_to("#help-button")
        self.press(Keys.ENTER)
        self.assertTrue(self.browser.one("#help-dialog").is_displayed())
        self.press(Keys.ESCAPE)
        self.awaits(lambda: not self.browser.one("#help-dialog").is_displayed(), "help stays")
        self.assertTrue(self.focused("#help-button"), self.focus_text())
        self.nothing_went_wrong()

    def test_focus_stays_while_values_update(self):
        self.browse(1280, 800)
        for selector in (f"{self.row('batch number')} [data-edit]",
                         f"{self.row('pump')} [data-switch]", "#values-list .sort"):
            self.tab_to(selector)
            for value in ("11", "12"):
                self.control.command(f"set MW104={value}")
                self.awaits_value("batch number", value)
                self.assertTrue(self.focused(selector), self.focus_text())
        self.tab_to(f"{self.row('setpoint')} [data-edit]")
        self.press(Keys.ENTER, "7")
        self.control.command("set MW104=13")
        self.awaits_value("batch number", "13")
        field = f"{self.row('setpoint')} [data-input]"
        self.assertTrue(self.focused(field), self.focus_text())
        self.assertEqual("7", self.browser.one(field).get_property("value"))

    def test_focus_stays_when_a_column_is_sorted(self):
        self.browse(1280, 800)
        self.tab_to("#values-list .sort")
        self.press(Keys.ENTER)
        self.assertEqual("ascending", self.browser.one("[aria-sort]").get_attribute("aria-sort"))
        self.assertTrue(self.focused("[aria-sort] .sort"), self.focus_text())
        self.press(Keys.ENTER)
        self.assertEqual("descending", self.browser.one("[aria-sort]").get_attribute("aria-sort"))

    def test_recipe_is_compared(self):
        self.browse(1280, 800)
        self.awaits(lambda: self.browser.text("#values-count") == "7 tags", "not every tag is good")
        self.view("recipes")
        self.tab_to("#recipe-tags")
        self.press(Keys.ENTER)
        self.tab_to("#recipe-compare")
        self.press(Keys.SPACE)
        self.awaits(lambda: "the PLC has these values" in self.browser.text("#recipe-notice"),
                    "not compared")
        self.awaits(lambda: self.focused("#recipe-compare"), self.focus_text())
        self.nothing_went_wrong()

    def test_focus_stays_on_the_links_plan(self):
        self.browse(1280, 800)
        self.view("link")
        self.awaits(lambda: self.browser.all("[data-card=plc] summary"), "no plan")
        self.tab_to("[data-card=plc] summary")
        self.press(Keys.ENTER)
        self.browser.script("window.oldCard = document.querySelector('[data-card=plc]');")
        self.awaits(lambda: self.browser.script("return !window.oldCard.isConnected;"),
                    "the figures are never drawn anew")
        self.assertTrue(self.focused("[data-card=plc] summary"), self.focus_text())
        self.assertTrue(self.browser.all("[data-card=plc] details[open]"))
