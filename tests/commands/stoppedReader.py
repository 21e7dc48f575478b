"""A reader that takes nothing any more cannot hold a verb that is to end, by itself or because it
was asked to. Output that could not be shown is a failure."""

import array
import fcntl
import os
import pty
import re
import signal
import struct
import termios
import threading
import tty

from commandLine import CANNOT_WRITE, CommandLineTest
from networkPeers import CountingPeer
from processes import matching
from tagTables import DEMO_TAGS, MARKERS, table, word_rows

PAGE = 4096  # bytes
ROWS, COLUMNS = 400, 200  # of the terminal: room for some of the tags
WORDS = 4000  # their first values are more than a pipe holds
# More frames than the host keeps, and those that a pipe takes besides.
EXCHANGES = 25000
FRAME = re.compile(r"^ *[0-9]+\.[0-9]{6} [<>] ", re.MULTILINE)
HOLE = re.compile(r"^([0-9]+) frames missed: the output was blocked$", re.MULTILINE)
MANY_FRAMES = 200
CHUNK_BYTES = 65536


def fill(reader, writer, room=0):
    """Leaves so many bytes of room in a pipe or a terminal."""
    os.set_blocking(writer, False)
    try:
        while True:
            os.write(writer, b"x" * PAGE)
    except BlockingIOError:
        pass
    os.set_blocking(writer, True)  # the mode is also that of the program which gets this end
    if room:
        os.read(reader, room)


def bytes_in(reader):
    """What waits to be read."""
    count = array.array("i", [0])
    fcntl.ioctl(reader, termios.FIONREAD, count)
    return count[0]


class StoppedReader(CommandLineTest):
    """A simulated PLC, and output that nobody reads."""

    def setUp(self):
        super().setUp()
        self.file("many.csv", table(word_rows(range(MARKERS, MARKERS + WORDS))))
        self.link = self.enterContext(self.plc("pty", "--stations 1-2")).link
        self.watch = f"watch --tags many.csv --link {self.link}"

    def closed_later(self, *descriptors):
        """Gives the descriptors back at the end of the test."""
        for descriptor in descriptors:
            self.addCleanup(os.close, descriptor)
        return descriptors

    def pipe(self):
        """An empty pipe: the end to read, and the end to write."""
        return self.closed_later(*os.pipe())

    def full_pipe(self, room=0):
        """The end to write of a pipe with so many bytes of room."""
        reader, writer = self.pipe()
        fill(reader, writer, room)
        return writer

    def test_watch_ends_by_itself_before_a_full_pipe_or_terminal(self):
        reader, screen = self.closed_later(*pty.openpty())
        tty.setraw(screen)
        fcntl.ioctl(screen, termios.TIOCSWINSZ, struct.pack("HHHH", ROWS, COLUMNS, 0, 0))
        fill(reader, screen, PAGE)
        # A page is room, but less than a watch writes at once.
        for output, json in ((self.full_pipe(PAGE), ""), (self.full_pipe(PAGE), "--json"),
                             (screen, "")):
            with self.subTest(tty=output == screen, json=json):
                run = self.start(f"{self.watch} --seconds 1 {json}", stdout=output)
                self.assertEqual((1, CANNOT_WRITE), (run.wait(10), run.errors), run)

    def test_watch_shows_all_when_only_the_trace_is_blocked(self):
        run = self.start(f"watch --tags {DEMO_TAGS} --link {self.link} --seconds 1 --trace",
                         stderr=self.full_pipe())
        self.assertEqual(0, run.wait(10), run)
        self.assert_matches(run.lines, " exchanges/s ")

    def test_signal_ends_a_blocked_watch(self):
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            run = self.start(f"{self.watch} --trace", stdout=self.full_pipe())
            run.await_that(lambda run=run: matching(run.errors, " < "))
            self.end(run, number, status=1, seconds=10)
            self.assertIn(CANNOT_WRITE[0], run.errors)

    def test_blocked_read_waits_until_it_is_signalled(self):
        reader, writer = self.pipe()
        run = self.start(f"read --tags many.csv --link {self.link}", stdout=writer)
        run.await_that(lambda: bytes_in(reader) > 0)
        self.assertIsNone(run.process.poll(), run)
        self.end(run, signal.SIGTERM, status=1, seconds=10)
        self.assertEqual(CANNOT_WRITE, run.errors)


class StartedReader(threading.Thread):
    """Takes everything from a pipe, from now on until nobody writes any more."""

    def __init__(self, descriptor):
        super().__init__()
        self.pipe = open(descriptor, "rb", buffering=0)
        self.taken = b""
        self.start()

    @property
    def text(self):
        """Everything until now."""
        return self.taken.decode("utf-8", "replace")

    def run(self):
        with self.pipe:
            while chunk := self.pipe.read(CHUNK_BYTES):
                self.taken += chunk


class StoppedReaderOfTheTrace(CommandLineTest):
    """A watch of one word, whose peer answers at once and counts. The exchange is not delayed:
    frames are missed instead, and both the trace and the capture say how many."""

    def test_missed_frames_are_counted(self):
        self.tags("still")
        peer = self.keep(CountingPeer())
        output, trace = os.pipe()
        watch = self.start(f"watch --tags tags.csv --link {peer.link} --every 0 --trace"
                           " --pcap watch.pcap",
                           stderr=trace)
        os.close(trace)
        watch.await_that(lambda: peer.answered() >= EXCHANGES, 60)
        # The kept frames come ahead of the hole, and others behind it.
        reader = StartedReader(output)
        watch.await_that(lambda: HOLE.search(reader.text), 60)
        watch.await_that(
            lambda: len(FRAME.findall(HOLE.split(reader.text, 1)[-1])) > MANY_FRAMES)
        self.end(watch, signal.SIGINT, seconds=20)
        reader.join()
        peer.process.join()
        self.assertEqual(0, peer.process.exitcode)
        missed = sum(map(int, HOLE.findall(reader.text)))
        traced = len(FRAME.findall(reader.text))
        self.assertAlmostEqual(2 * peer.answered(), traced + missed, delta=2)
        self.assertEqual(
            [f"kakb-host: the capture lacks {missed} frames: the output was blocked"],
            matching(reader.text.splitlines(), "^kakb-host: "))
