"""Ctrl-Z, fg, Ctrl-\\ and the signals that end a watch leave the terminal as it was."""

import os
import re
import signal
import time

from commandLine import CommandLineTest
from processes import eventually, matching
from shellTerminal import ShellTerminal

COUNTER = "--signal 1:IW:0:counter:50"
STANDSTILL_S = 1
KILLED_BY = 128  # the shell adds the signal's number
HEADINGS = "^name +address +value"


class TableJobs(CommandLineTest):
    """A shell with job control runs on the terminal, and a watch in it."""

    def setUp(self):
        super().setUp()
        self.tags("count")
        self.shell = self.keep(ShellTerminal(self.folder, self.programs, columns=120))
        self.awaits("^ready>$")
        self.shell.line("echo what was there before")
        self.awaits("^what was there before$")
        self.before = self.shell.settings()
        self.assertTrue(self.shell.wants_lines())

    def watch(self, plc, before=""):
        """Starts a watch, behind other commands; returns when its table has a value."""
        self.shell.line(f"{before}kakb-host watch --tags tags.csv --link {plc.link}")
        self.awaits_table()

    def awaits(self, *patterns):
        """Each pattern matches a line of the screen, now or soon."""
        for pattern in patterns:
            self.assertTrue(self.shell.shows(pattern), "\n".join(
                [f"the screen has no line {pattern!r}:", *self.shell.screen()]))

    def counted(self):
        """The value of the counter on the screen; -1: none."""
        rows = matching(self.shell.screen(), "^count +IW0 +[0-9]+ ")
        return int(re.search("IW0 +([0-9]+)", rows[0]).group(1)) if rows else -1

    def awaits_table(self):
        """The table is alone on the screen, its counter counts, and keys come one by one."""
        self.awaits(HEADINGS, "^[?] keys  q end ")
        # What is on the screen may still be the table that a stopped watch has left behind.
        self.assertTrue(eventually(lambda: not self.shell.wants_lines()), "it wants whole lines")
        shown = self.counted()
        self.assertTrue(eventually(lambda: self.counted() > shown), "the counter stands still")
        self.assertTrue(eventually(lambda: not matching(
            self.shell.screen(), "ready>|what was there")), "\n".join(self.shell.screen()))

    def awaits_standstill(self):
        """The counter on the screen has not counted for some refreshes."""
        last = [time.monotonic(), self.counted()]

        def stands():
            if self.counted() != last[1]:
                last[:] = time.monotonic(), self.counted()
            return time.monotonic() > last[0] + STANDSTILL_S
        self.assertTrue(eventually(stands), "the counter goes on")

    def awaits_shell(self):
        """The shell has its terminal and its screen again."""
        self.awaits("^ready>$", "^what was there before$")
        self.assertEqual(self.before, self.shell.settings())

    def awaits_end(self, status):
        """The watch is over, with the status."""
        self.awaits_shell()
        self.shell.line('echo "status $?"')
        self.awaits(f"^status {status}$")

    def test_stopped_watch_gives_the_terminal_back_and_fg_takes_it_again(self):
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc)
            for _ in range(2):
                self.shell.keys("C-z")
                self.awaits("Stopped")
                self.awaits_shell()
                self.assertEqual([], matching(self.shell.screen(), HEADINGS))
                self.shell.line("clear; echo what was there before; fg")
                self.awaits_table()
            self.shell.text("q")
            self.awaits_end(0)

    def test_rest_of_a_held_back_frame_is_not_for_the_shells_screen(self):
        """Ctrl-S holds a frame back, Ctrl-Z lets the terminal go on."""
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc)
            self.shell.keys("C-s")
            self.awaits_standstill()
            self.shell.keys("C-z")
            self.awaits("Stopped")
            self.awaits_shell()
            self.shell.line("clear; echo what was there before; fg")
            self.awaits_table()
            self.shell.text("q")
            self.awaits_end(0)

    def test_stopped_in_the_middle_of_a_value_it_goes_on_there(self):
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc)
            self.shell.text("/cou")
            self.awaits("^filter .*: cou_$")
            self.shell.keys("C-z")
            self.awaits("Stopped")
            self.awaits_shell()
            self.shell.line("fg")
            self.awaits("^filter .*: cou_$", HEADINGS)
            self.shell.keys("C-c")
            self.awaits_end(0)

    def test_watch_in_the_background_leaves_the_terminal_alone(self):
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc)
            self.shell.keys("C-z")
            self.awaits("Stopped")
            watch = self.shell.jobs()[0]
            self.shell.line("bg")
            self.assertTrue(eventually(lambda: self.shell.state(watch) != "T"))
            self.shell.line("sleep 1; echo slept")  # four refreshes of the table
            self.awaits("^slept$")
            self.assertEqual([], matching(self.shell.screen(), HEADINGS))
            self.assertNotEqual("T", self.shell.state(watch), "it is stopped")
            self.awaits_shell()
            self.shell.line("fg")
            self.awaits_table()
            self.shell.text("q")
            self.awaits_end(0)

    def test_watch_stopped_by_force_takes_the_terminal_again(self):
        """SIGSTOP cannot be caught: the watch leaves its table behind, but not for good."""
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc)
            os.kill(self.shell.foreground(), signal.SIGSTOP)
            self.awaits("Stopped")
            self.shell.line("stty sane; clear; fg")
            self.awaits_table()
            self.shell.text("q")
            self.awaits_end(0)

    def test_quit_key_ends_the_watch_and_restores_the_terminal(self):
        with self.plc("pty", COUNTER) as plc:
            self.watch(plc)
            self.shell.keys("C-\\")
            self.awaits_end(KILLED_BY + signal.SIGQUIT)

    def test_signals_that_end_the_watch_restore_the_terminal(self):
        with self.plc("pty", COUNTER) as plc:
            for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT):
                self.watch(plc, "clear; echo what was there before; ")
                os.kill(self.shell.foreground(), number)
                self.awaits_end(0)
                self.awaits("^count +IW0 +[0-9]+ ", "^[0-9.]+ exchanges/s .* losses 0$")
