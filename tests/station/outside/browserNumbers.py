"""The text of a value on the page is the text that the list of values has for it."""

import json
import struct
from urllib.request import urlopen

from stationBrowser import BrowserTest

FLOATS = {
    "ten thousand millions": 1e10, "one in ten millions": 1e-7, "tenth": 0.1, "minus zero": -0.0,
    "not a number": float("nan"), "endless": float("inf"), "endless below": float("-inf"),
    "million": 1e6, "seven digits": 1234567, "smallest": 1e-45, "largest": 3.4028235e38,
    "third": -1 / 3, "plain": 21.5,
}
NEVER_READ = "refused word"
HEADER = "name,station,area,address,type,access\n"


def place(number):
    """The address of a float."""
    return 100 + 4 * number


class BrowserNumbers(BrowserTest):
    """Values that a browser by itself writes in another way."""

    plc_arguments = ("--demo-signals", "--control", "control", "--refuse", "MW600",
                     "--refuse", "MW100:2:write")
    tags = HEADER + "".join(
        f"{name},1,MW,{place(number)},float32:high,rw\n" for number, name in enumerate(FLOATS)
    ) + ("most,1,MW,400,uint32,ro\nleast,1,MW,404,int32,ro\nmillions,1,MW,408,uint32,ro\n"
         f"bit on,1,MX,500.1,bool,rw\nbit off,1,MX,500.2,bool,rw\n{NEVER_READ},1,MW,600,uint16,ro\n")
    good_tag = "plain"

    def setUp(self):
        super().setUp()
        for number, value in enumerate(FLOATS.values()):
            self.set_words(place(number), struct.unpack(">HH", struct.pack(">f", value)))
        self.set_words(400, (0xFFFF, 0xFFFF))
        self.set_words(404, (0, 0x8000))
        self.set_words(408, (0x8480, 0x1E))  # the low word first
        self.control.command("set MX500.1=1")

    def set_words(self, address, words):
        """Sets words of the PLC that lie behind each other."""
        for number, word in enumerate(words):
            self.control.command(f"set MW{address + 2 * number}={word}")

    def listed(self):
        """The text of each value in the list of values, by tag, with bits as 0 and 1; what is null is
        left out."""
        with urlopen(self.address() + "api/v1/values") as answer:
            values = json.loads(answer.read(), parse_float=str, parse_int=str)
        texts = {value["tag"]: value["value"] for value in values if value["value"] is not None}
        return {tag: str(int(text)) if isinstance(text, bool) else text
                for tag, text in texts.items()}

    def test_values_have_the_text_of_the_list(self):
        self.browse(1280, 800)
        for tag, text in (("most", "4294967295"), ("least", "-2147483648"), ("millions", "2000000"),
                          ("bit on", "1"), ("bit off", "0"), ("tenth", "0.1"),
                          ("endless", "inf"), ("ten thousand millions", "1e+10")):
            self.awaits_value(tag, text)
        listed = self.listed()
        self.assertEqual({*FLOATS, "most", "least", "millions", "bit on", "bit off"}, {*listed})
        self.assertEqual(listed, {tag: self.value(tag) for tag in listed})
        self.nothing_went_wrong()

    def test_value_that_was_never_read_has_no_text_and_is_seen_as_a_dash(self):
        self.browse(1280, 800)
        self.assertEqual(("", "bad"), (self.value(NEVER_READ), self.quality(NEVER_READ)))
        self.assertEqual('"\u2014"', self.browser.script(
            "return getComputedStyle(document.querySelector(arguments[0]), '::before').content;",
            self.cell(NEVER_READ)))
        self.assertEqual("none", self.browser.script(
            "return getComputedStyle(document.querySelector(arguments[0]), '::before').content;",
            self.cell("plain")))

    def test_refused_write_tells_the_value_that_is_shown(self):
        self.browse(800, 480)
        self.awaits_value("ten thousand millions", "1e+10")
        self.write("ten thousand millions", "5")
        said = self.awaits_outcome("ten thousand millions", "refused")
        self.assertTrue(said.endswith("rolled back to 1e+10"), said)
