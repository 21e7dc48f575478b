"""Tags whose names mean something to a script or to a page's markup."""

from selenium.webdriver.common.by import By
from selenium.webdriver.support.select import Select

from stationBrowser import BrowserTest

NAMES = ("__proto__", "constructor", "toString", "hasOwnProperty", "it's \"quoted\"", "<b>bold</b>",
         "<img src=x onerror=document.title='broken'>", "a & b &amp; c", "100 % \\ back")
LINKS = ["__proto__", '<b>"&']
FIRST_WORD = 100
LIMIT = 3  # of lanes that a test picks at once


def quoted(name):
    """A name as a field of a tag file."""
    return '"' + name.replace('"', '""') + '"'


class BrowserNames(BrowserTest):
    """They are text wherever they stand."""

    tags = "name,station,area,address,type,access\n" + "".join(
        f"{quoted(name)},1,MW,{FIRST_WORD + 2 * number},uint16,rw\n"
        for number, name in enumerate(NAMES))
    good_tag = NAMES[0]

    def nothing_became_markup(self, part):
        """No name made an element in a part of the page, and none ran."""
        self.assertEqual([], self.browser.all(f"{part} img, {part} b:not(.quality)"))
        self.assertNotEqual("broken", self.browser.script("return document.title"))

    def test_values_update_and_are_written(self):
        self.browse(1280, 800)
        self.assertEqual(len(NAMES), self.rows_shown())
        for number, name in enumerate(NAMES):
            with self.subTest(name=name):
                place = FIRST_WORD + 2 * number
                self.assertEqual(name, self.browser.text(f"{self.row(name)} .name"))
                self.control.command(f"set MW{place}={number + 11}")
                self.awaits_value(name, str(number + 11))
                self.write(name, str(number + 30))
                self.awaits_outcome(name, "confirmed")
                self.awaits_value(name, str(number + 30))
                self.assertEqual(str(number + 30), self.control.command(f"get MW{place}"))
        self.nothing_became_markup("#values-list")
        self.nothing_went_wrong()

    def test_trends_offer_and_show_them(self):
        self.browse(1280, 800)
        self.view("trends")
        self.awaits(lambda: len(self.browser.all("[data-lane]")) == LIMIT, "not the first tags")
        self.browser.one("#trends-pick").click()
        picks = self.browser.all("[data-pick]")
        self.assertEqual(list(NAMES), [pick.get_attribute("data-pick") for pick in picks])
        for pick, name in zip(picks, NAMES):
            label = pick.find_element(By.XPATH, "..")
            self.assertEqual(f"{name}plc", label.get_property("textContent"))
        self.nothing_became_markup("#pick-list")
        for pick in picks[:LIMIT]:
            pick.click()
        for pick in picks[LIMIT:]:
            pick.click()
        self.browser.one("#pick-dialog button").click()
        self.assertEqual(list(NAMES[LIMIT:]), self.lanes())
        self.browser.driver.refresh()
        self.awaits(lambda: self.lanes() == list(NAMES[LIMIT:]), "the picks are forgotten")
        self.nothing_became_markup("#trends-lanes")
        self.nothing_went_wrong()

    def lanes(self):
        """The tags whose lanes are shown."""
        return self.browser.attributes("[data-lane]", "data-lane")

    def test_recipes_take_them_to_the_plc(self):
        self.browse(1280, 800)
        self.view("recipes")
        self.browser.one("#recipe-tags").click()
        self.assertEqual(list(NAMES), self.column("name"))
        for number, field in enumerate(self.browser.all("[data-column=value]")):
            field.clear()
            field.send_keys(str(number + 50))
        self.browser.one("#recipe-compare").click()
        self.awaits(lambda: f"{len(NAMES)} values differ" in self.browser.text("#recipe-notice"),
                    "not all differ")
        self.assertEqual(list(NAMES), self.browser.texts("#recipe-differences tbody th"))
        self.nothing_became_markup("#recipe-tables")
        self.browser.one("#recipe-download").click()
        self.awaits(lambda: "Download done" in self.browser.text("#recipe-notice"), "not done")
        self.assertEqual([str(number + 50) for number in range(len(NAMES))], [
            self.control.command(f"get MW{FIRST_WORD + 2 * number}")
            for number in range(len(NAMES))])
        self.nothing_went_wrong()

    def column(self, name):
        """The texts of a column of the recipe."""
        return [field.get_property("value")
                for field in self.browser.all(f"[data-column={name}]")]


class BrowserLinkNames(BrowserTest):
    """A link with such a name."""

    def station_arguments(self):
        self.file("station.toml", 'listen = "127.0.0.1:0"\n' + "".join(
            f"[[link]]\nname = '{name}'\nlink = \"{self.plc.link}\"\ntags = \"tags.csv\"\n"
            for name in LINKS))
        return ["--config", "station.toml"]

    def test_views_show_it(self):
        self.browse(1280, 800)
        self.awaits(lambda: self.browser.texts("#values-list caption") == LINKS, "not two tables")
        self.view("link")
        self.awaits(lambda: self.browser.attributes("[data-card]", "data-card") == LINKS,
                    "not two links")
        self.view("frames")
        Select(self.browser.one("#frames-link")).select_by_value("__proto__")
        self.awaits(lambda: self.browser.all("[data-frame]"), "no frames")
        self.nothing_went_wrong()
