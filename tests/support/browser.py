"""Chromium without a screen, driven as a person would: Debian's chromium and chromium-driver."""

import json
from urllib.parse import urlsplit

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By

from processes import PATIENCE_S, eventually

DRIVER = "/usr/bin/chromedriver"
ARGUMENTS = (
    "--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-default-apps",
    "--disable-sync", "--hide-scrollbars", "--force-color-profile=srgb",
    # Every name leads to this machine: a request to elsewhere is seen, and never leaves it.
    "--host-resolver-rules=MAP * 127.0.0.1",
)
LOCAL_SCHEMES = ("data", "blob", "about", "chrome", "chrome-extension")


class Browser:
    """A browser with one or more tabs.

    All it logs is kept: messages() are those of its console, requests() what it asked for."""

    def __init__(self, width, height, dark=False):
        options = webdriver.ChromeOptions()
        for argument in (*ARGUMENTS, f"--window-size={width},{height}"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service(DRIVER), options=options)
        self.size = (width, height)
        self.dark = dark
        self.console, self.asked = [], []
        self._shape_tab()

    def _shape_tab(self):
        """Gives the tab in front the size of the screen, without a window's frame."""
        width, height = self.size
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": "dark" if self.dark else "light"}]})

    def close(self):
        """Ends the browser."""
        self.driver.quit()

    def open(self, url):
        """Opens a page in the tab in front."""
        self.driver.get(url)

    def new_tab(self, url):
        """Opens a page in a further tab; returns the tab."""
        self.driver.switch_to.new_window("tab")
        self._shape_tab()
        self.open(url)
        return self.driver.current_window_handle

    def show(self, tab):
        """Brings a tab to the front."""
        self.driver.switch_to.window(tab)

    def close_tab(self, left):
        """Closes the tab in front, and shows another."""
        self.driver.close()
        self.show(left)

    def all(self, selector):
        """The elements of a CSS selector."""
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def one(self, selector):
        """The only element of a CSS selector."""
        found = self.all(selector)
        assert len(found) == 1, f"{len(found)} elements {selector!r}"
        return found[0]

    # Read by one script each: the page may make an element anew between two questions.

    def text(self, selector):
        """The text of the only element of a selector, as it is in the document."""
        found = self.texts(selector)
        assert len(found) == 1, f"{len(found)} elements {selector!r}"
        return found[0]

    def texts(self, selector):
        """The texts of all elements of a selector."""
        return self.script("return [...document.querySelectorAll(arguments[0])]"
                           ".map((element) => element.textContent);", selector)

    def shown_text(self, selector):
        """The text of all elements of a selector, as a person sees it."""
        return self.script("return [...document.querySelectorAll(arguments[0])]"
                           ".map((element) => element.innerText).join('\\n');", selector)

    def attributes(self, selector, name):
        """An attribute of all elements of a selector."""
        return self.script("return [...document.querySelectorAll(arguments[0])]"
                           ".map((element) => element.getAttribute(arguments[1]));", selector, name)

    def shown_count(self, selector):
        """How many elements of a selector a person sees."""
        return self.script("return [...document.querySelectorAll(arguments[0])]"
                           ".filter((element) => element.checkVisibility()).length;", selector)

    def click(self, selector):
        """Clicks on the only element of a selector, also when the page makes it anew meanwhile."""
        def is_clicked():
            try:
                self.one(selector).click()
            except StaleElementReferenceException:
                return False
            return True
        assert self.shows(is_clicked), f"{selector} never stays"

    def script(self, text, *arguments):
        """Runs JavaScript in the page; returns what it returns."""
        return self.driver.execute_script(text, *arguments)

    def picture(self, path):
        """Writes what is on the screen into a PNG file."""
        assert self.driver.save_screenshot(str(path))

    def requests(self):
        """The addresses that were asked for since the start, those of the browser's own pages left
        out."""
        for entry in self.driver.get_log("performance"):
            message = json.loads(entry["message"])["message"]
            if message["method"] == "Network.requestWillBeSent":
                self.asked.append(message["params"]["request"]["url"])
        return [url for url in self.asked if urlsplit(url).scheme not in LOCAL_SCHEMES]

    def messages(self):
        """What the console got since the start, among it errors and refused content."""
        self.console += self.driver.get_log("browser")
        return [entry["message"] for entry in self.console]

    def shows(self, condition, seconds=PATIENCE_S):
        """Whether a condition becomes true within so many seconds."""
        return eventually(condition, seconds)
