"""A watch as a health check: --until and --fail-when-bad, and the statuses they end with."""

import signal

from commandLine import CommandLineTest, on_each_link
from shellTerminal import ShellTerminal

COUNTER = "--signal 1:IW:0:counter:50"
IN_TIME_S = 30  # for what comes within a second on an idle machine


class HealthChecks(CommandLineTest):
    """Without a terminal, as in a script."""

    def setUp(self):
        super().setUp()
        self.tags("count", "still", "level")

    def watch(self, plc, options, status):
        """A watch that ends by itself, with the status."""
        run = self.start(f"watch --tags tags.csv --link {plc.link} {options}")
        self.assertEqual(status, run.wait(IN_TIME_S), run)
        self.assertRegex(run.lines[-1], "exchanges/s|exchangesPerSecond", run)
        return run

    @on_each_link
    def test_until_ends_with_0_when_the_value_was_read(self, kind):
        with self.plc(kind, COUNTER) as plc:
            for condition in ("still=0", "MW100=0x0", "'count>20'", "'level<0.5'",
                              "still=0 --until 'count>40' --until level=0"):
                self.assertEqual([], self.watch(plc, f"--until {condition}", 0).errors)
            self.watch(plc, "--until 'count>60' --json", 0)

    def test_until_that_is_not_true_in_time_ends_with_9_and_says_what_was_read(self):
        with self.plc("pty") as plc:
            run = self.watch(plc, "--until still=7 --until count=0 --seconds 3", 9)
            self.assertEqual(["kakb-host: --until did not come true in time: still=7, the value is "
                              "0"], run.errors)

    def test_value_that_was_not_read_is_no_value(self):
        """A tag begins as 0, but nobody has read it."""
        with self.plc("pty", "--silent 1") as plc:
            run = self.watch(plc, "--until still=0 --seconds 3 --timeout-ms 50", 9)
            self.assertEqual(["kakb-host: --until did not come true in time: still=0, the tag is "
                              "bad: station 1 does not answer"], run.errors)

    def test_tag_that_is_bad_for_too_long_ends_with_9_its_name_and_the_reason(self):
        self.tags("still", "silent word")
        with self.plc("pty", "--stations 1-2 --silent 2") as plc:
            run = self.watch(plc, "--fail-when-bad 0.5 --timeout-ms 150", 9)
            self.assertEqual(1, len(run.errors), run)
            self.assertRegex(run.errors[0], r"^kakb-host: silent word \(2:MW0\) has been bad for "
                             r"[0-9]+\.[0-9] s: station 2 does not answer$")
            self.assertGreaterEqual(run.milliseconds, 500)
            self.fails(1, f"watch --tags tags.csv --link {plc.link} --fail-when-bad 5 --seconds 5",
                       "--fail-when-bad must be shorter than --seconds: no tag could be bad for so")

    def test_tag_that_becomes_bad_ends_the_watch(self):
        with self.plc("pty") as plc:
            run = self.watching(f"--tags tags.csv --link {plc.link} --fail-when-bad 0.5 "
                                "--timeout-ms 150", "still  MW100 = 0")
            plc.run.process.send_signal(signal.SIGSTOP)
            self.assertEqual(9, run.wait(IN_TIME_S), run)
            plc.run.process.send_signal(signal.SIGCONT)
            self.assertRegex(run.errors[-1], " has been bad for .* station 1 does not answer$")

    def test_interrupted_check_is_not_done(self):
        with self.plc("pty") as plc:
            for number in (signal.SIGINT, signal.SIGTERM):
                run = self.watching(f"--tags tags.csv --link {plc.link} --until still=7",
                                    "still  MW100 = 0")
                self.end(run, number, 8)
                self.assertEqual(["kakb-host: interrupted before --until came true: still=7, the "
                                  "value is 0"], run.errors)

    def test_unusable_conditions_are_named_before_anything_starts(self):
        link = "--link serial:/dev/none"
        for condition, sentence in (
                ("still", "is not NAME=VALUE, NAME>VALUE or NAME<VALUE"),
                ("none=3", '"none" is no name or address of a watched tag'),
                ("still=70000", "70000 does not fit uint16: 0 to 65535")):
            self.fails(1, f"watch --tags tags.csv {link} --until {condition}",
                       f"^kakb-host: --until {condition}: {sentence}$")
        for seconds in ("0", "-1", "nan", "x"):
            self.fails(1, f"watch --tags tags.csv {link} --fail-when-bad {seconds}",
                       "--fail-when-bad")

    def test_check_on_a_terminal_leaves_table_figures_and_reason(self):
        self.tags("still", "silent word")
        shell = self.keep(ShellTerminal(self.folder, self.programs, columns=120))
        with self.plc("pty", "--stations 1-2 --silent 2") as plc:
            shell.line(f"kakb-host watch --tags tags.csv --link {plc.link} --timeout-ms 150 "
                       "--fail-when-bad 0.5; echo status $?")
            self.assertTrue(shell.shows("^status 9$"), "\n".join(shell.screen()))
            self.assert_matches(
                shell.screen(), "^still +MW100 +0 .* good$",
                "^silent word +2:MW0 .* bad: station 2 does not answer$", "^[0-9.]+ exchanges/s ",
                r"^kakb-host: silent word \(2:MW0\) has been bad for [0-9.]+ s: station 2 does not ")
            shell.line(f"clear; kakb-host watch --tags tags.csv --link {plc.link} --timeout-ms 150 "
                       "--until still=0; echo status $?")
            self.assertTrue(shell.shows("^status 0$"), "\n".join(shell.screen()))
