"""Ctrl-C, SIGTERM and SIGHUP end a verb at once, whatever it waits for."""

import signal

from commandLine import CommandLineTest, on_each_link
from networkPeers import SilentPort
from processes import SLOWER, matching

SIGNALS = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
FIGURES = "[0-9.]+ exchanges/s  retries [0-9]+ .* losses 0$"
INTERRUPTED = "^kakb-host: interrupted$"
AT_ONCE_MS = 500
TRIES = 5  # of which the quickest counts: a busy machine makes single ends late


class Interrupts(CommandLineTest):
    """A time-out of a minute would hold the verb for longer than any test waits."""

    def setUp(self):
        super().setUp()
        self.tags("still")

    def interrupted(self, number, status, command, is_ready):
        """Signals the host as soon as it is ready: is_ready(host)."""
        for _ in range(TRIES):
            run = self.start(f"{command} --timeout-ms 60000")
            run.await_that(lambda run=run: is_ready(run))
            self.end(run, number, status)
            if run.milliseconds < AT_ONCE_MS * SLOWER:
                return run
        self.fail(f"not at once: {run}")

    def test_interrupt_while_connecting(self):
        port = self.keep(SilentPort())
        link = f"--link {port.link}"
        for number in SIGNALS:
            run = self.interrupted(number, 8, f"read MW100 {link}", lambda _: port.is_asked())
            self.assert_one_sentence(run, "interrupted")
            run = self.interrupted(number, 8, f"write MW100=1 {link}", lambda _: port.is_asked())
            self.assert_one_sentence(run, "^kakb-host: MW100: not sent: interrupted$")
            run = self.interrupted(number, 0, f"watch --tags tags.csv {link}",
                                   lambda _: port.is_asked())
            self.assert_matches(run.lines, f"^link lost  {FIGURES}")

    def test_connecting_times_out(self):
        port = self.keep(SilentPort())
        self.fails(3, f"read MW100 --link {port.link}",
                   r"127\.0\.0\.1, port [0-9]+: Connection timed out$", within_ms=8000)

    @on_each_link
    def test_interrupt_while_waiting_for_a_reply(self, kind):
        self.recipe(still=7)
        with self.plc(kind, "--silent 1") as plc:
            def requested(command):
                return self.interrupted(number, 8, f"{command} --trace --link {plc.link}",
                                        lambda run: matching(run.errors, " > "))

            for number in SIGNALS:
                for command in ("read MW100", "recipe upload recipe.csv"):
                    self.assert_matches(requested(command).errors, INTERRUPTED)
                self.assert_matches(requested("recipe download recipe.csv").errors,
                                    "^kakb-host: MW100 of station 1: not sent: interrupted$")
                errors = requested("write MW100=1 QX0.5=1").errors
                self.assertEqual(["kakb-host: MW100: not sent: interrupted",
                                  "kakb-host: QX0.5: not sent: interrupted"], errors[-2:])

    @on_each_link
    def test_interrupted_watch_ends_with_its_figures(self, kind):
        with self.plc(kind) as plc:
            for number in SIGNALS:
                run = self.interrupted(number, 0, f"watch --tags tags.csv --link {plc.link}",
                                       lambda run: matching(run.lines, "MW100 = 0"))
                self.assertEqual([], run.errors, run)
                self.assertRegex(run.lines[-1], f"^{FIGURES}")
