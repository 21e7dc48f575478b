"""The plan's requests must be the requests that pymodbus builds for the same registers."""

import re

from pymodbus.factory import ClientDecoder
from pymodbus.framer.rtu_framer import ModbusRtuFramer
from pymodbus.register_read_message import (
    ReadHoldingRegistersRequest as Holding,
    ReadInputRegistersRequest as Input,
)

from commandLine import CommandLineTest
from tagTables import DEMO_TAGS

# Registers by the device's map: MW n at 3000 + n / 2, MX b.k in register 3000 + b / 2. "door" is a
# bit of register 4.
READS = {(1, Input, 0, 5): {"count", "more inputs", "door"}, (2, Holding, 20, 1): {"other speed"},
         (1, Holding, 3060, 4): {"level", "batch"}, (1, Holding, 3006, 1): {"lamp"},
         (3, Holding, 0, 1): {"beacon"}}
INPUTS = "count", "more inputs", "door"  # in the registers 0, 2 and 4


def requests():
    """The bytes of each request, and the tags that it reads."""
    framer = ModbusRtuFramer(ClientDecoder())
    return {framer.buildPacket(request(first, count, station)): names
            for (station, request, first, count), names in READS.items()}


class Plan(CommandLineTest):
    """What would be asked, without a link."""

    def setUp(self):
        super().setUp()
        self.tags(*(name for names in READS.values() for name in sorted(names)))

    def test_requests_are_those_of_pymodbus(self):
        plan, = self.objects("plan --tags tags.csv")
        self.assertEqual(requests(), {bytes.fromhex(block["request"]): set(block["tags"])
                                      for block in plan["blocks"]})
        self.assertEqual((5, 8), (plan["grouped"]["requests"], plan["single"]["requests"]))
        self.assert_matches(
            self.host("plan --tags tags.csv").lines,
            *(f" {request.hex(' ')} " for request in requests()),
            "^station +area +number +count +tags +request +reply +names$",
            "^grouped: +5 requests, [0-9.]+ ms a cycle$",
            "^without grouping: +8 requests, [0-9.]+ ms a cycle$")

    def test_cycle_time_is_that_of_the_wire(self):
        """At 9600 baud about four times that at 38400; a network has no wire time."""
        def cycle_times(link):
            plan, = self.objects(f"plan --tags tags.csv --turnaround-us 0 {link}")
            return plan["grouped"]["cycleTimeUs"], plan["single"]["cycleTimeUs"]

        self.assertGreater(cycle_times("--link serial:/dev/none,9600")[0], 3 * cycle_times("")[0])
        self.assertEqual((None, None), cycle_times("--link tcp:127.0.0.1,1"))
        run = self.host("plan --tags tags.csv --turnaround-us 0 --link tcp:127.0.0.1,1")
        self.assert_matches(run.lines, "^grouped: +4 requests, no wire time$",
                            "^without grouping: +8 requests, no wire time$")

    def test_default_tags_and_a_missing_tag_file(self):
        self.assertEqual(self.host(f"plan --tags {DEMO_TAGS}").out, self.host("plan").out)
        self.fails(1, "plan --tags none.csv")


class Gaps(CommandLineTest):
    """The registers between the tags are read along, if the user lets the host do so."""

    def setUp(self):
        super().setUp()
        self.tags(*INPUTS)

    def first_inputs(self, run):
        """First registers of the reads of inputs that are no fences."""
        trace = "\n".join(run.errors)
        return {int(first) for first, fence in
                re.findall(r"read [0-9]+ input registers? from ([0-9]+)(, a fence)?", trace)
                if not fence}

    def test_limit_is_kept_and_shown(self):
        for limit, requests, words, longest in (("", 1, 2, 1), ("--gap 1", 1, 2, 1),
                                                ("--gap 0", 3, 0, 0)):
            with self.subTest(limit=limit):
                plan, = self.objects(f"plan {limit} --tags tags.csv")
                self.assertEqual(requests, plan["grouped"]["requests"])
                self.assertEqual(
                    {"words": words, "longest": longest,
                     "limit": int(limit[-1]) if limit else None}, plan["gaps"])
                self.assert_matches(
                    self.host(f"plan {limit} --tags tags.csv").lines,
                    f"^words in gaps: +{words} words, at most {longest} in a row" +
                    (f", the limit is {limit[-1]}$" if limit else "$"))

    def test_read_and_watch_keep_the_limit(self):
        options = "--trace --tags tags.csv"
        self.assertEqual({0}, self.first_inputs(self.host(f"read {options}")))
        self.assertEqual({0, 2, 4}, self.first_inputs(self.host(f"read --gap 0 {options}")))
        watch = self.watching(f"--gap 0 {options}", *(f"{name}.* = " for name in INPUTS))
        self.end(watch)
        self.assertEqual({0, 2, 4}, self.first_inputs(watch))

    def test_limit_is_a_number_of_words(self):
        for limit in ("-1", "126", "x", "1.5"):
            self.fails(1, f"plan --gap {limit} --tags tags.csv", "--gap")
