"""The page as a screen reader hears it."""

from pageTree import PageTree, name_of, state_of
from stationBrowser import ODD_NAME, BrowserTest

VIEWS = ["Values", "Trends", "Link", "Recipes", "Frames"]
COLUMNS = ["Tag", "Value", "Quality", "Age", "Write"]
LIVE = """
const region = document.querySelector("[role=status]#announcer");
window.announced = [];
new MutationObserver(() => window.announced.push(region.textContent))
    .observe(region, { childList: true, characterData: true, subtree: true });
"""


class BrowserReader(BrowserTest):
    """Names, roles, words for states, and what is announced."""

    def tree(self):
        """The page now."""
        return PageTree(self.browser.driver)


    def cells(self, tag):
        """The texts of a tag's row behind its name."""
        tree = self.tree()
        table = tree.one("table", "plc")
        for row in tree.below(table, "row"):
            if any(tree.text(head).startswith(tag) for head in tree.below(row, "rowheader")):
                return [tree.text(cell) for cell in tree.below(row, "cell")]
        raise AssertionError(f"no row of {tag}")

    def test_values_are_a_table_with_words_for_the_quality(self):
        self.browse(1280, 800)
        self.control.command("set MW300=7")
        self.awaits_value(ODD_NAME, "7")
        tree = self.tree()
        table = tree.one("table", "plc")
        self.assertEqual(COLUMNS, [name_of(head) for head in tree.below(table, "columnheader")])
        self.assertEqual(7, len(tree.below(table, "rowheader")))
        self.assertEqual(["7", "good"], self.cells(ODD_NAME)[:2])
        self.control.command("stall 3600")  # the value is stale first, and then stays bad
        self.awaits(lambda: self.cells(ODD_NAME)[:2] == ["7", "bad"], "it is not told as bad")
        self.assertEqual("bad", self.quality(ODD_NAME))

    def test_everything_that_can_be_used_has_a_name(self):
        self.browse(1280, 800)
        self.view("recipes")
        self.browser.one("#recipe-tags").click()  # or it has no table
        for view, part in (("values", "[data-edit]"), ("trends", "[data-lane]"),
                           ("link", "[data-card]"), ("recipes", "[data-column]"),
                           ("frames", "[data-frame]")):
            self.view(view)
            self.awaits(lambda part=part: self.browser.all(part), view)
            tree = self.tree()
            for role in ("button", "textbox", "searchbox", "combobox", "switch", "checkbox", "link",
                         "table", "progressbar", "region", "navigation"):
                self.assertEqual([], [tree.text(node) for node in tree.all(role)
                                      if not name_of(node)], f"{role} without a name in {view}")

    def test_views_are_a_navigation_with_the_current_one_marked(self):
        self.browse(1280, 800)
        tree = self.tree()
        buttons = tree.below(tree.one("navigation", "Views"), "button")
        self.assertEqual(VIEWS, [name_of(button) for button in buttons])
        for view in ("frames", "values"):
            self.view(view)
            [marked] = self.browser.all("nav [aria-current=page]")
            self.assertEqual(view, marked.text.lower())
            regions = self.tree().all("region")
            self.assertEqual([view], [name_of(region).lower() for region in regions])

    def switch(self):
        """What is told of the switch, as the bit that it stands for."""
        told = state_of(self.tree().one("switch", "pump"), "checked")
        return {"false": "0", "true": "1"}.get(told)

    def test_switch_tells_whether_it_is_on(self):
        self.browse(1280, 800)
        self.awaits_good("pump")
        before = self.value("pump")
        self.awaits(lambda: self.switch() == before, "the switch tells another state")
        self.browser.one("[data-switch]").click()
        self.awaits(lambda: self.value("pump") != before, "nothing changed")
        self.awaits(lambda: self.switch() == self.value("pump"), "the switch tells the old state")

    def announced(self):
        """All that was announced since the page was watched."""
        return self.browser.script("return window.announced;")

    def test_outcome_of_a_write_is_announced(self):
        self.browse(1280, 800)
        self.browser.script(LIVE)
        self.write("setpoint", "21.5")
        self.awaits_outcome("setpoint", "confirmed")
        self.assertEqual(["setpoint confirmed"], self.announced())
        self.awaits(lambda: "setpoint confirmed" in self.told("polite"), "it is not told")
        self.write("setpoint", "22.5")
        self.awaits_value("setpoint", "22.5")
        self.awaits(lambda: len(self.announced()) == 2, "the same outcome again is not announced")
        self.control.command("set MW200=17")
        self.awaits_value("guarded", "17")
        self.write("guarded", "99")
        said = self.awaits_outcome("guarded", "refused")
        self.assertEqual(f"guarded {said}", self.announced()[-1])

    def test_loss_of_the_stream_is_announced(self):
        self.browse(1280, 800)
        self.awaits(lambda: "s" in self.browser.text(f"{self.row('setpoint')} .age"), "no beat")
        self.relay.cut()
        self.awaits_stream("lost")
        self.awaits(lambda: "No data since" in " ".join(self.told("assertive")), "it is not told")
        self.relay.resume()
        self.awaits_stream("live")
        self.awaits(lambda: not self.told("assertive"), "it is still told")

    def told(self, manner):
        """The texts of the live regions that are told in a manner."""
        tree = self.tree()
        return [tree.text(node) for node in tree.nodes
                if state_of(node, "live") == manner and state_of(node, "root") is None
                and tree.text(node)]
