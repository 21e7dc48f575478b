"""The keys of a watch on a terminal: they scroll, filter, sort and write."""

import re
import signal

from commandLine import CommandLineTest
from processes import eventually, matching
from shellTerminal import ShellTerminal
from tagTables import table

COUNTER = "--signal 1:IW:0:counter:50"
WORDS = 40
STILL_REGISTER = 3050  # of MW 100: words are counted from 3000, by twos
LEVEL_REGISTER = 3060  # of MW 120
MOST_TORN_SCREENS = 2  # captured while tmux draws


class TableKeys(CommandLineTest):
    """A shell runs on the terminal, and a watch in it."""

    def watch(self, plc, tags, options="", columns=80, rows=24):
        """Starts a watch; returns when its table is there."""
        self.shell = self.keep(ShellTerminal(self.folder, self.programs, columns, rows))
        self.awaits("^ready>$")
        self.shell.line(f"kakb-host watch --tags {tags} --link {plc.link} {options}")
        self.awaits("^name +address +value")

    def awaits(self, *patterns):
        """Each pattern matches a line of the screen, now or soon."""
        for pattern in patterns:
            self.assertTrue(self.shell.shows(pattern), "\n".join(
                [f"the screen has no line {pattern!r}:", *self.shell.screen()]))

    def awaits_names(self, *names):
        """The table has exactly these rows, in order."""
        def shown():
            return [row[1] for row in map(re.compile(r"^(\S+(?: \S+)*)  +[MIQ][WX]\d").match,
                                          self.shell.screen()) if row]
        self.assertTrue(eventually(lambda: shown() == list(names)), f"{shown()} for {names}")

    def awaits_mark(self, name):
        """The mark is on the row of this name."""
        def is_marked():
            return [line.split("  ")[0] for line in self.shell.marked()] == [name]
        self.assertTrue(eventually(is_marked), f"{self.shell.marked()} for {name}")

    def ends(self, status):
        """The watch is over, with the status, and the shell has its terminal."""
        self.awaits("^ready>$")
        self.shell.line('echo "status $?"')
        self.awaits(f"^status {status}$")

    def writes(self, value):
        """Types a value for the marked tag, and the yes behind it."""
        self.shell.text("w")
        self.awaits("^value for still ")
        self.shell.text(value)
        self.shell.keys("Enter")
        self.awaits(rf"^write {value} into still \(MW100\)\? y/n$")
        self.shell.text("y")

    def test_keys_scroll_and_the_table_follows_the_size(self):
        tags = self.file("words.csv", table(
            [(f"w{n:02}", 1, "MW", 2 * n, "uint16") for n in range(WORDS)]))
        with self.plc("pty") as plc:
            self.watch(plc, tags)
            self.awaits(f"^1-20 of {WORDS}  ")
            self.awaits_mark("w00")
            self.shell.keys("Down", "Down", "Up")
            self.awaits_mark("w01")
            self.shell.keys("NPage")
            self.awaits_mark("w21")
            self.awaits(f"^3-22 of {WORDS}  ")
            self.shell.keys("End")
            self.awaits_mark("w39")
            self.shell.keys("PPage")
            self.awaits_mark("w19")
            self.shell.resize(40, 10)
            self.awaits(f"^[0-9]+-[0-9]+ of {WORDS}  ", "^name +address +value$",
                        r"^w19 +MW38 +0$")
            self.shell.keys("Home")
            self.awaits_mark("w00")
            self.awaits(f"^1-6 of {WORDS}  ")
            self.shell.resize(120, 50)
            self.awaits("^w39 .*  good$", "^[?] keys  q end ")
            self.shell.text("q")
            self.ends(0)

    def test_filter_sort_and_help(self):
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc, self.tags("still", "count", "lamp"))
            self.awaits_names("still", "count", "lamp")
            self.shell.text("s")
            self.awaits("^sorted by name$")
            self.awaits_names("count", "lamp", "still")
            self.shell.text("s")
            self.awaits_names("count", "still", "lamp")
            self.shell.text("ss/L")
            self.awaits("^filter .*: L_$")
            self.awaits_names("still", "lamp")
            self.shell.text("am")
            self.awaits_names("lamp")
            self.shell.keys("Enter")
            self.awaits("^1-1 of 1  filter Lam ")
            self.shell.text("/")
            self.shell.keys("Escape")
            self.awaits_names("still", "count", "lamp")
            self.shell.text("?")
            self.awaits("^q +ends the watch$", "^any key goes back")
            self.shell.keys("Escape")
            self.awaits_names("still", "count", "lamp")
            self.shell.keys("C-c")
            self.ends(0)

    def test_write_asks_first_and_shows_the_outcome(self):
        with self.plc("pty") as plc:
            self.watch(plc, self.tags("still", "more inputs"))
            self.shell.text("w7")
            self.shell.keys("Enter")
            self.shell.text("n")
            self.awaits("^not written$", "^still +MW100 +0 ")
            self.writes("7")
            self.awaits(r"^still \(MW100\) = 7 confirmed$", "^still +MW100 +7 ")
            self.shell.text("w70000")
            self.shell.keys("Enter")
            self.awaits("^still=70000: 70000 does not fit uint16: 0 to 65535$")
            self.shell.keys("Down")
            self.shell.text("w")
            self.awaits(r"^more inputs \(IW4\) cannot be written: area IW is read-only$")
            self.shell.text("q")
            self.ends(0)
        self.assertEqual([f"1 MW {STILL_REGISTER} 7"], plc.memory())

    def test_value_of_two_words_is_written_whole(self):
        with self.plc("pty") as plc:
            self.watch(plc, self.tags("level"))
            self.shell.text("w21.5")
            self.shell.keys("Enter")
            self.shell.text("y")
            self.awaits(r"^level \(MW120\) = 21\.5 confirmed$", r"^level +MW120 +21\.5 ")
            self.shell.text("q")
            self.ends(0)
        # 21.5 by IEEE 754 is 41AC 0000; the high word is first.
        self.assertEqual([f"1 MW {LEVEL_REGISTER} {0x41AC}"], plc.memory())

    def test_refused_write_says_so_and_leaves_the_polled_value(self):
        with self.plc("pty", "--exception 1 --exception-code 3") as plc:
            self.watch(plc, self.tags("still"))
            self.writes("7")
            self.awaits("refused by the PLC: illegal value")
            self.shell.text("q")
            self.ends(0)
        self.assertEqual([], plc.memory())

    def test_table_shows_what_the_plc_has_while_a_write_is_under_way(self):
        """Late answers: the driver has the written value long before the PLC confirms it."""
        with self.plc("pty", "--delay 1 --delay-ms 700") as plc:
            self.watch(plc, self.tags("still"), "--timeout-ms 5000")
            self.awaits("^still +MW100 +0 ")
            self.writes("7")
            torn = []

            def is_confirmed():
                screen = self.shell.screen()
                if matching(screen, "^still .* = 7 confirmed$"):
                    return True
                torn.extend(matching(screen, "^still +MW100 +7 "))
                return False

            self.assertTrue(eventually(is_confirmed), "the write is never confirmed")
            self.assertLessEqual(len(torn), MOST_TORN_SCREENS, "shows a value before the PLC has it")
            self.awaits("^still +MW100 +7 ")
            self.shell.text("q")
            self.ends(0)

    def test_end_during_a_write_says_that_its_outcome_is_unknown(self):
        with self.plc("pty") as plc:
            self.watch(plc, self.tags("still"), "--timeout-ms 60000", columns=120)
            self.awaits("^still +MW100 +0 ")
            plc.run.process.send_signal(signal.SIGSTOP)
            self.writes("7")
            self.awaits(r"^still \(MW100\) = 7 is being written$")
            self.shell.text("q")
            plc.run.process.send_signal(signal.SIGCONT)
            self.awaits(r"^kakb-host: still \(MW100\): not confirmed: the watch ended; "
                        "what became of it is not known$")
            self.ends(0)

    def test_no_keys_without_standard_input(self):
        """As in a script: the table as before, and what is typed is for the shell."""
        with self.plc("pty") as plc:
            self.watch(plc, self.tags("still"), "< /dev/null")
            self.assertTrue(self.shell.wants_lines(), "the terminal gives single keys")
            self.awaits("^still +MW100 +0 ")
            self.assertEqual([], self.shell.marked())
            self.assertEqual([], matching(self.shell.screen(), "q end"))
            self.shell.keys("C-c")
            self.ends(0)
