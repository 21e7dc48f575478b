"""--attempts and --timeout-ms mean the same in every verb."""

import re
import signal

from commandLine import CommandLineTest, on_each_link
from processes import matching

ONE_SHOT = ("read MW100", "write MW100=1", "recipe download recipe.csv",
            "recipe upload recipe.csv")
TIMEOUT_MS = 150
TRIES = 5
NO_ANSWER = "! station 1: no answer within ([0-9]+) ms$"


class Attempts(CommandLineTest):
    """Every attempt at a silent station is one frame and one wait."""

    def setUp(self):
        super().setUp()
        self.tags("still")
        self.recipe(still=7)

    def shortest_wait(self, count, frames, lines):
        """There are so many frames; returns the shortest of as many waits in the lines, 0 when there
        are fewer."""
        waits = [int(re.search(NO_ANSWER, line).group(1)) for line in matching(lines, NO_ANSWER)]
        self.assertEqual(count, len(frames), lines)
        return min(waits[:count]) if len(waits) >= count else 0

    def assert_full_waits(self, attempts):
        """Each frame of one of some runs has its wait, of the time-out at least but for what a trace of
        whole milliseconds cuts off. A busy machine may send a frame late in its time: the trace then
        shows a shorter wait. attempts() returns the shortest wait of a run."""
        waits = []
        while len(waits) < TRIES and not (waits and waits[-1] >= TIMEOUT_MS - 2):
            waits.append(attempts())
        self.assertLessEqual(TIMEOUT_MS - 2, max(waits))

    @on_each_link
    def test_silent_station_is_tried_so_many_times(self, kind):
        with self.plc(kind, "--silent 1") as plc:
            for verb in ONE_SHOT:
                for count in (1, 2, 4):
                    with self.subTest(verb=verb, count=count):
                        self.assert_full_waits(lambda verb=verb, count=count: self.attempts_of_run(
                            f"{verb} --link {plc.link}", count))

    def attempts_of_run(self, command, count):
        """Runs a command with so many attempts; returns the shortest wait."""
        run = self.host(f"{command} --trace --attempts {count} --timeout-ms {TIMEOUT_MS}", 4)
        return self.shortest_wait(count, matching(run.errors, " > "), run.errors)

    def test_watched_station_that_falls_silent_is_tried_so_many_times(self):
        """The simulated PLC stands still from some moment on; then each attempt is in the trace."""
        for count in (1, 2, 4):
            with self.subTest(count=count), self.plc("pty") as plc:
                self.assert_full_waits(
                    lambda plc=plc, count=count: self.attempts_of_watch(plc, count))

    def attempts_of_watch(self, plc, count):
        """Watches with so many attempts, and stops the PLC; returns the shortest wait."""
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
        behind = run.errors[answered + 1:]
        frames = [line for line in matching(behind, " > ") if float(line.split()[0]) <= bad_at]
        return self.shortest_wait(count, frames, behind)
