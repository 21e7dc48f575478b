"""A closed terminal ends both programs in order, unless they were started with nohup."""

import os
import signal

from commandLine import CommandLineTest
from processes import ends

COUNTER = "--signal 1:IW:0:counter:20"
FIGURES = "^[0-9.]+ exchanges/s .* losses 0$"


class ClosedTerminal(CommandLineTest):
    """A terminal that is closed sends SIGHUP."""

    def setUp(self):
        super().setUp()
        self.tags("count", "still")

    def await_more(self, watch):
        """The counter's values are still shown."""
        shown = len(watch.lines)
        watch.await_that(lambda: len(watch.lines) > shown + 5)

    def test_watch_ends_with_its_figures_unless_under_nohup(self):
        with self.plc("pty", COUNTER) as plc:
            watch = self.watching(f"--tags tags.csv --link {plc.link}")
            self.end(watch, signal.SIGHUP)
            self.assertRegex(watch.lines[-1], FIGURES)
            watch = self.watching(f"--tags tags.csv --link {plc.link}", prefix=("nohup",))
            watch.process.send_signal(signal.SIGHUP)
            self.await_more(watch)
            self.end(watch, signal.SIGINT)

    def test_own_simulated_plc_is_ended_by_its_host(self):
        """The signal reaches the simulated PLC as well, which must not look like a lost link."""
        watch = self.watching("--tags tags.csv")
        simulator = self.simulator_of(watch)
        os.kill(simulator, signal.SIGHUP)
        self.await_more(watch)
        self.end(watch, signal.SIGHUP)
        self.assertRegex(watch.lines[-1], FIGURES)
        self.assertTrue(ends(simulator, 0), "SIGHUP leaves kakb-sim behind")

    def test_simulated_plc_dumps_its_memory_and_ends_unless_under_nohup(self):
        with self.plc("pty") as plc:
            self.host(f"write MW100=7 --link {plc.link}")
            plc.stop(signal.SIGHUP)
        self.assertEqual(["1 MW 3050 7"], plc.memory())
        self.assertFalse((self.folder / "plc").is_symlink(), "the link is left behind")
        with self.plc("pty", prefix=("nohup",)) as plc:
            plc.run.process.send_signal(signal.SIGHUP)
            self.host(f"read MW100 --link {plc.link}")
