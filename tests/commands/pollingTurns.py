"""The pace of a watch, the rates of tags, and tags that the PLC refuses."""

import re

from commandLine import CommandLineTest
from tagTables import HEADER, table

RATED = HEADER + ",rate"
ILLEGAL = re.escape("refused by the PLC: illegal address (exception 2)")


def most_turns(run, pace_ms):
    """The cycles that can have begun while a program ran: a busy machine ends it late."""
    return 1 + run.milliseconds // pace_ms


def reads(run):
    """The requests of a watch with --trace that are no fences, by their first register."""
    sent = (re.search(r"> .*: read \d+ (?:holding|input) registers? from (\d+)$", line)
            for line in run.errors)
    firsts = [int(found[1]) for found in sent if found]
    return {first: firsts.count(first) for first in firsts}


class PollingTurns(CommandLineTest):
    """How often a watch reads."""

    def watched(self, rows, options, header=RATED):
        """The run and the reads of a watch of two seconds."""
        self.file("tags.csv", table(rows, header))
        run = self.host(f"watch --tags tags.csv --seconds 2 --trace {options}")
        return run, reads(run)

    def test_network_peer_is_not_flooded(self):
        """A slow machine makes fewer cycles, never more."""
        with self.plc("tcp") as plc:
            run, found = self.watched([("a", 1, "MW", 100, "uint16")], f"--link {plc.link}", HEADER)
        self.assertIn(found[3050], range(1, most_turns(run, 100) + 1))

    def test_pace_is_chosen(self):
        """Three cycles begin within two seconds, at 0, 1 and perhaps 2 s; without a pace, many."""
        rows = [("a", 1, "MW", 100, "uint16"), ("b", 1, "MW", 1000, "uint16")]
        run, found = self.watched(rows, "--every 1s", HEADER)
        self.assertLessEqual(found[3050], most_turns(run, 1000))
        with self.plc("tcp") as plc:
            _, found = self.watched(rows, f"--link {plc.link} --every 0", HEADER)
        self.assertGreater(found[3050], 21)

    def test_each_tag_has_its_rate(self):
        """A tag within two fast tags is read with them and needs no request."""
        run, found = self.watched([("fast", 1, "MW", 100, "uint16", ""),
                              ("also", 1, "MW", 104, "uint16", "fast"),
                              ("within", 1, "MW", 102, "uint16", "once"),
                              ("slow", 1, "MW", 1000, "uint16", "1s"),
                              ("once", 1, "MW", 2000, "uint16", "once")], "")
        self.assertEqual({3050, 3500, 4000}, set(found))
        self.assertGreater(found[3050], 3)
        self.assertLessEqual(found[3500], most_turns(run, 1000))
        self.assertEqual(1, found[4000])

    def test_plan_shows_the_rates(self):
        """A network without a turnaround has no wire time, and so no load."""
        self.file("tags.csv", table([("a", 1, "MW", 100, "uint16", ""),
                                     ("b", 1, "MW", 1000, "uint16", "500ms")], RATED))
        self.assert_matches(self.host("plan --tags tags.csv --every 5s").lines,
                            " fast 01 03 0b ea .*  a$", " 500ms 01 03 0d ac .*  b$",
                            "^pace: +a cycle begins every 5s at the earliest$",
                            r"^at their rates: +1 requests, 2\.00 a second, [0-9.]+ % of the line$")
        self.assert_matches(
            self.host("plan --tags tags.csv --turnaround-us 0 --link tcp:127.0.0.1,1").lines,
            "^pace: +a cycle begins every 100ms at the earliest$",
            r"^at their rates: +1 requests, 2\.00 a second$")

    def test_wrong_durations_are_refused(self):
        """In an option and in a tag file."""
        for duration in "1", "1h", "1.5s", "-1s", "fast":
            self.fails(1, f"watch --every={duration}", "no duration such as 500ms, 10s or 5m")
        self.file("tags.csv", table([("a", 1, "MW", 100, "uint16", "often")], RATED))
        self.fails(1, "plan --tags tags.csv", 'line 2: rate "often" is unknown')


class RefusedTags(CommandLineTest):
    """A PLC without some of the registers."""

    def test_read_prints_what_the_plc_gives(self):
        """Eight words in one request, one of them illegal."""
        with self.plc("tcp", "--refuse MW104") as plc:
            self.host(f"write --link {plc.link} MW100=7 MW114=8")
            run = self.host(f"read --link {plc.link} MW100+8", status=5)
        self.assertEqual(["MW100 = 7", "MW102 = 0", "MW106 = 0", "MW108 = 0", "MW110 = 0",
                          "MW112 = 0", "MW114 = 8"], run.lines)
        self.assertEqual(1, len(run.errors), run)
        self.assertRegex(run.errors[0], f"MW104.*{ILLEGAL}$")

    def test_watch_shows_only_the_refused_tag_as_bad(self):
        """Also when the refused register lies between the tags."""
        self.file("tags.csv", table([("a", 1, "MW", 100, "uint16"), ("b", 1, "MW", 104, "uint16"),
                                     ("c", 1, "MW", 106, "uint16")]))
        with self.plc("pty", "--refuse MW102 --refuse MW106") as plc:
            run = self.watching(f"--link {plc.link} --tags tags.csv", "a .* = 0$", "b .* = 0$",
                                f"c .*{ILLEGAL}$")
            self.end(run)
        self.assertFalse([line for line in run.lines if re.search("[ab] .*refused", line)])
