"""What the host shows on a terminal: a table in place while it watches, the old screen and the last
table when it ends, and a recipe's progress."""

import re

from commandLine import CommandLineTest
from processes import eventually, matching
from shellTerminal import ShellTerminal
from tagTables import DEMO_RECIPE, DEMO_TAGS

KEYS = "? keys  q end  / filter  s sort  w write"  # the bottom line
ROWS = (r"fill level +IW0 +[0-9]+ +0\.[0-9] s +[0-9]+  good", r"door open +IX8\.0 +[01] .*  good",
        r"setpoint +MW100 +21\.5 .*  good", r"pump +QX0\.5 +1 .*  good",
        r"marker lamp +MX20\.0 +[01] .*  good", "speed of line 2 +2:QW40 +-300 .*  good")
MOST_LINES = 17  # of the table with the lines around it


class TerminalTable(CommandLineTest):
    """A shell runs on the terminal."""

    def setUp(self):
        super().setUp()
        self.shell = self.keep(ShellTerminal(self.folder, self.programs))
        self.awaits("^ready>$")

    def keys(self, text):
        """Types a line."""
        self.shell.line(text)

    def screen(self):
        """The lines of the screen."""
        return self.shell.screen()

    def runs(self, command):
        """Types a command on a cleared screen."""
        self.keys(f"clear; {command}")

    def interrupts(self):
        """Types Ctrl-C."""
        self.shell.keys("C-c")

    def awaits(self, *patterns):
        """Each pattern matches a line of the screen, now or soon."""
        for pattern in patterns:
            self.assertTrue(self.shell.shows(pattern), "\n".join(
                [f"the screen has no line {pattern!r}:", *self.screen()]))

    def awaits_end(self, status):
        """The command ends with the status, and the screen is whole."""
        self.awaits("^ready>$")
        # Typed only now, so that a prompt in the middle of other text shows.
        self.keys('echo "status $?"')
        self.awaits(f"^status {status}$", r'^ready> echo "status \$\?"$')

    def lacks(self, pattern):
        """No line of the screen matches."""
        self.assertEqual([], matching(self.screen(), pattern))

    def fits(self, columns, rows):
        """The table is whole on a screen of this size."""
        self.shell.resize(columns, rows)
        self.assertTrue(eventually(lambda: self.screen()[rows - 1:] == [KEYS]), "no bottom line")
        self.awaits("^name +address +value +age +changes +state *$",
                    *(f"^{row} *$" for row in ROWS),
                    "^[0-9.]+ exchanges/s  retries 0  give-ups 0  refused 0", "(^|  )reply p50 ",
                    "(^|  )losses 0$")
        lines = list(filter(None, self.screen()))
        self.assertLessEqual(len(lines), MOST_LINES, "\n".join(lines))

    def value(self):
        """The value of a ramp, when the table shows one."""
        rows = matching(self.screen(), "^fill level +IW0 +[0-9]+ ")
        return re.search("IW0 +([0-9]+)", rows[0]).group(1) if rows else None

    def test_watch_shows_a_table_and_restores_the_screen(self):
        with self.plc("pty", "--stations 1-2 --demo-signals") as plc:
            self.host(f"write --tags {DEMO_TAGS} setpoint=21.5 pump=1 'speed of line 2=-300' "
                      f"--link {plc.link}")
            self.keys("echo what was there before")
            # Keys that arrive while the shell is busy would be echoed into the line above.
            self.awaits("^what was there before$")
            self.keys(f"kakb-host watch --tags {DEMO_TAGS} --link {plc.link}")
            self.awaits("^fill level ")
            self.fits(100, 30)
            self.fits(80, 24)
            self.lacks("what was there before")  # the table is on a screen of its own
            before = self.value()
            self.assertTrue(eventually(lambda: self.value() not in (None, before), 5),
                            "the value of a ramp does not change")
            self.shell.resize(80, 10)
            self.awaits("^1-6 of [0-9]+ ")
            self.shell.resize(100, 30)
            self.awaits(f"^{ROWS[-1]}")
            self.interrupts()
            self.awaits_end(0)
            # The last table stays below what was there before, with the figures below it.
            self.awaits("^what was there before$", f"^{ROWS[-1]}")
            self.assertRegex(" ".join(self.screen()),
                             f"what was there before .*{ROWS[0]} .*{ROWS[-1]} .*exchanges/s  ")

    def test_json_is_plain_and_a_recipe_shows_progress(self):
        with self.plc("pty", "--stations 1-2 --demo-signals") as plc:
            self.runs(f"kakb-host watch --tags {DEMO_TAGS} --link {plc.link} --json")
            self.awaits(r'^\{"address":')
            self.interrupts()
            self.awaits_end(0)
            self.runs(f"kakb-host recipe download {DEMO_RECIPE} --verify --link {plc.link}")
            self.awaits(r"^writing ([0-9]+) of \1 blocks$",
                        r"^reading back ([0-9]+) of \1 blocks$", "^downloaded 9 values, verified$")
            self.awaits_end(0)
        with self.plc("pty", "--stations 1-2 --silent 2") as plc:
            self.runs(f"kakb-host recipe download {DEMO_RECIPE} --timeout-ms 300 "
                      f"--link {plc.link}")
            self.awaits("^kakb-host: QW40 of station 2: not sent: station 2 is silent$")
            self.awaits_end(4)

    def test_interrupt_is_no_lost_link(self):
        """Ctrl-C reaches the simulated PLC that the host started as well."""
        self.runs(f"kakb-host watch --tags {DEMO_TAGS}")
        self.awaits("^fill level ")
        self.interrupts()
        self.awaits_end(0)
        self.awaits("^[0-9.]+ exchanges/s  retries 0  give-ups 0  refused 0 ")
        self.lacks("link lost|losses 1")

    def test_nothing_is_drawn_without_a_link(self):
        self.runs(f"kakb-host watch --tags {DEMO_TAGS} --link serial:{self.folder}/none")
        self.awaits("^kakb-host: .*No such file or directory$")
        self.awaits_end(3)
        self.lacks("^name +address")
