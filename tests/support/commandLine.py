"""The test case that runs kakb-host as a user does, in a folder of its own."""

import functools
import os
import shlex
import signal
import tempfile
import unittest
from pathlib import Path

from heldPort import HeldPort
from processes import PATIENCE_S, SLOWER, Program, child_of, matching
from simulatedPlc import LINKS, SimulatedPlc
from tagTables import recipe_table, tag_table

PROGRAMS = Path(os.environ["KAKB_PROGRAMS"])  # the folder of kakb-host and kakb-sim
MOST_SECONDS = 60
QUICK_TRIES = 5
CANNOT_WRITE = ["kakb-host: cannot write the output"]


def on_each_link(test):
    """Runs the test on a pseudo-terminal and on TCP."""
    @functools.wraps(test)
    def on_both(self):
        for kind in LINKS:
            with self.subTest(kind=kind):
                test(self, kind)
    return on_both


def without_powers(*powers):
    """The words in front of a command that take these powers from root; other users lack them."""
    return ("setpriv", "--bounding-set", ",".join(f"-{power}" for power in powers)
            ) if os.getuid() == 0 else ()


class CommandLineTest(unittest.TestCase):
    """A folder of its own for each test; what a test starts ends with it.

    Commands are written as in a shell, and run in the folder."""

    programs = PROGRAMS

    def setUp(self):
        self.folder = Path(self.enterContext(tempfile.TemporaryDirectory()))

    def file(self, name, text):
        """Writes a file into the folder; returns its path."""
        path = self.folder / name
        path.write_text(text, encoding="utf-8")
        return path

    def tags(self, *names):
        """Makes tags.csv of some of the tags that all tests share."""
        return self.file("tags.csv", tag_table(*names))

    def recipe(self, **values):
        """Makes recipe.csv of some of the tags and their values."""
        return self.file("recipe.csv", recipe_table(values))

    def plc(self, kind, arguments="", **options):
        """A simulated PLC, to be used as a context."""
        return self.keep(SimulatedPlc(self.programs / "kakb-sim", self.folder, kind,
                                      *shlex.split(arguments), **options))

    def held_port(self):
        """A port of 127.0.0.1 that only a program of the test takes; it refuses until then."""
        return self.keep(HeldPort()).number

    def keep(self, started):
        """Has something closed at the end of the test at the latest."""
        self.addCleanup(started.close)
        return started

    def start(self, command, prefix=(), stdout=None, stderr=None):
        """Starts kakb-host."""
        words = [*prefix, self.programs / "kakb-host", *shlex.split(command)]
        return self.keep(Program(words, self.folder, stdout, stderr))

    def host(self, command, status=0, prefix=(), stdout=None, stderr=None):
        """Runs kakb-host to its end, which must be with the status."""
        run = self.start(command, prefix, stdout, stderr)
        self.assertEqual(status, run.wait(MOST_SECONDS), run)
        return run

    def objects(self, command, status=0):
        """The JSON objects that kakb-host prints, one on each line."""
        return self.host(f"{command} --json", status).objects

    def quiet(self, command, **options):
        """Runs kakb-host, which must end with status 0 and nothing on standard error."""
        run = self.host(command, **options)
        self.assertEqual([], run.errors, run)
        return run

    def fails(self, status, command, sentence=".", within_ms=None, **options):
        """Runs kakb-host, which must print one sentence that matches and nothing else."""
        run = self.soon(within_ms, command, status, **options) if within_ms \
            else self.host(command, status, **options)
        self.assert_one_sentence(run, sentence)
        return run

    def soon(self, within_ms, command, status=0, **options):
        """Runs kakb-host, which must end within so many milliseconds, or more with a sanitizer. A busy
        machine makes single runs late, so the quickest of some counts."""
        for _ in range(QUICK_TRIES):
            run = self.host(command, status, **options)
            if run.milliseconds < within_ms * SLOWER:
                return run
        self.fail(f"not within {within_ms} ms: {run}")

    def watching(self, options, *patterns, prefix=()):
        """Starts a watch; returns it when each pattern has matched one of its lines."""
        run = self.start(f"watch {options}", prefix)
        run.await_lines(*patterns or [" = "])
        return run

    def end(self, run, number=signal.SIGTERM, status=0, seconds=PATIENCE_S):
        """Sends the signal, which must end the host with the status."""
        self.assertEqual(status, run.signal(number, seconds), run)

    def assert_one_sentence(self, run, sentence="."):
        """One line on standard error, by the host, and nothing on standard output."""
        self.assertEqual(([], 1), (run.lines, len(run.errors)), run)
        self.assertRegex(run.errors[0], "^kakb-host: .", run)
        self.assertRegex(run.errors[0], sentence, run)

    def assert_matches(self, lines, *patterns):
        """Each pattern matches one of the lines."""
        for pattern in patterns:
            self.assertTrue(matching(lines, pattern),
                            "\n".join([f"no line matches {pattern!r}:", *lines]))

    def simulator_of(self, run):
        """The process id of the simulated PLC that a host has started for itself."""
        found = child_of(run, "kakb-sim")
        self.assertIsNotNone(found, f"no kakb-sim beside the host: {run}")
        return found
