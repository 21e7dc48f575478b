"""--attempts and --timeout-ms mean the same in every verb."""

import re
import signal

from commandLine import CommandLineTest, on_each_link
from processes import matching

ONE_SHOT = ("read MW100", "write MW100=1", "recipe download recipe.csv",
            "recipe upload recipe.csv")
TIMEOUT_MS = 150
NO_ANSWER = "! station 1: no answer within ([0-9]+) ms$"


class Attempts(CommandLineTest):
    """Every attempt at a silent station is one frame and one wait."""

    def setUp(self):
        super().setUp()
        self.tags("still")
        self.recipe(still=7)

    def assert_attempts(self, count, lines):
        """So many frames, and as many waits of at least the time-out, but for what a trace of
        whole milliseconds cuts off."""
        waits = [int(re.search(NO_ANSWER, line).group(1)) for line in matching(lines, NO_ANSWER)]
        self.assertEqual((count, count), (len(matching(lines, " > ")), len(waits)), lines)
        self.assertLessEqual(TIMEOUT_MS - 2, min(waits), lines)

    @on_each_link
    def test_silent_station_is_tried_so_many_times(self, kind):
        with self.plc(kind, "--silent 1") as plc:
            for verb in ONE_SHOT:
                for count in (1, 2, 4):
                    with self.subTest(verb=verb, count=count):
                        run = self.host(f"{verb} --trace --link {plc.link} --attempts {count} "
                                        f"--timeout-ms {TIMEOUT_MS}", 4)
                        self.assert_attempts(count, run.errors)

    def test_watched_station_that_falls_silent_is_tried_so_many_times(self):
        """The simulated PLC stands still from some moment on; then each attempt is in the trace."""
        for count in (1, 2, 4):
            with self.subTest(count=count), self.plc("pty") as plc:
                run = self.watching(f"--tags tags.csv --trace --link {plc.link} --attempts {count} "
                                    f"--timeout-ms {TIMEOUT_MS}", " = 0$")
                plc.run.process.send_signal(signal.SIGSTOP)
                try:
                    run.await_lines("  still  MW100 bad: station 1 does not answer$")
                    self.end(run)
                finally:
                    plc.run.process.send_signal(signal.SIGCONT)
                bad_at = float(matching(run.lines, " bad: ")[0].split()[0])
                answered = max(i for i, line in enumerate(run.errors) if " < " in line)
                self.assert_attempts(count, [line for line in run.errors[answered + 1:]
                                             if float(line.split()[0]) <= bad_at])
