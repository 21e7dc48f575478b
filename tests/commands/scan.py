"""The scan: which stations answer on a link."""

import os
import pty
import signal
import tty

from commandLine import CommandLineTest, on_each_link
from processes import matching

PATIENT = "--timeout-ms 1000"  # a busy machine is no silent station
LAST_STATION = 247


def all_bytes(master):
    """What was written to a terminal that nobody has open any more. The system hands it over piece by
    piece."""
    found = b""
    try:
        while piece := os.read(master, 65536):
            found += piece
    except OSError:  # EIO: there is no more
        pass
    return found


class Scan(CommandLineTest):
    """Every station that answers is found, and no other."""

    def found(self, command, status=0):
        return [(one["station"], one["baud"]) for one in self.objects(f"scan {command}", status)]

    @on_each_link
    def test_finds_the_stations_that_answer(self, kind):
        with self.plc(kind, "--stations 3-4 --station 9 --station 247 --silent 4") as plc:
            link = f"--link {plc.link} --stations 3-4,8-9,{LAST_STATION}"
            baud = None if kind == "tcp" else 38400
            self.assertEqual([(3, baud), (9, baud), (LAST_STATION, baud)],
                             self.found(f"{link} {PATIENT} --attempts 1"))
            run = self.host(f"scan {link} {PATIENT} --attempts 1")
            self.assert_matches(run.lines, r"^station 9( at 38400 baud)? answers after [0-9.]+ ms$")
            self.assertEqual(1, len(run.errors), run)
            self.assertRegex(run.errors[0], r"^kakb-host: asking 5 stations; .* [0-9.]+ s at most$")

    def test_says_the_longest_time_ahead(self):
        """A question: 3.5 characters at 9600 baud (10 bits each), 8 bytes, 1 s, 79 bytes."""
        with self.plc("pty") as plc:
            run = self.host(f"scan --link {plc.link},9600 --stations 1 {PATIENT} --attempts 2")
        seconds = float(run.errors[0].split(" takes ")[1].split()[0])
        self.assertAlmostEqual(2 * (1 + (3.5 + 8 + 79) * 10 / 9600), seconds, delta=0.1)

    def test_echoing_adapter_shows_no_station(self):
        with self.plc("pty", "--station 2 --echo") as plc:
            self.assertEqual([(2, 38400)], self.found(f"--link {plc.link} --stations 1-5 {PATIENT}"
                                                      " --attempts 1"))

    def test_tries_each_speed_of_a_serial_link(self):
        """A pseudo-terminal answers at every speed."""
        with self.plc("pty", "--station 2") as plc:
            self.assertEqual([(2, 9600), (2, 38400)],
                             self.found(f"--link {plc.link} --stations 2 --bauds 9600,38400 {PATIENT}"))

    def test_writes_nothing(self):
        """A write of 0 would not show in the memory, so the frames are looked at."""
        with self.plc("pty", "--stations 1-2") as plc:
            run = self.host(f"scan --link {plc.link} --stations 1-4 {PATIENT} --attempts 1 --trace")
        requests = matching(run.errors, " > ")
        self.assertGreaterEqual(len(requests), 4)
        self.assertEqual(requests, matching(requests, r" > [0-9A-F]{2} 0[34] .*: read "))
        self.assertEqual([], plc.memory())

    def test_own_simulated_plc(self):
        self.assertEqual([(5, 38400), (7, 38400)], self.found(
            f"--stations 4-8 {PATIENT} --attempts 1 "
            "--simulator-arguments '--stations 5-7 --silent 6'"))


class EmptyScan(CommandLineTest):
    """A scan without a result says so, and mistakes end before anything is asked."""

    def test_no_station_answers(self):
        with self.plc("tcp", "--silent 1") as plc:
            run = self.host(f"scan --link {plc.link} --stations 1-3 --attempts 1", 4)
        self.assertEqual([], run.lines)
        self.assertEqual("kakb-host: no station answers", run.errors[-1])

    def test_other_bytes_are_unclear(self):
        with self.plc("tcp", "--corrupt 1") as plc:
            run = self.host(f"scan --link {plc.link} --stations 1 {PATIENT} --attempts 1", 4)
        self.assertRegex(run.errors[1], "^kakb-host: station 1: bytes came that are no answer")

    def test_usage(self):
        self.fails(1, "scan --stations 0-3", "--stations takes numbers from 1 to 247")
        self.fails(1, "scan --bauds 9600 --link tcp:127.0.0.1,1", "--bauds needs a serial link")
        self.fails(1, "scan --bauds 100", "--bauds")

    def test_link_that_cannot_be_opened(self):
        run = self.host("scan --link serial:/dev/none --stations 1", 3)
        self.assertRegex(run.errors[-1], "/dev/none")


class InterruptedScan(CommandLineTest):
    """A scan that the user ends keeps what it has found."""

    def test_found_stations_stay(self):
        with self.plc("pty", "--station 1") as plc:
            run = self.start(f"scan --link {plc.link} --timeout-ms 60000 --attempts 1")
            run.await_lines("^station 1 at 38400 baud answers")
            self.assertRegex(run.errors[0], f"asking {LAST_STATION} stations; ")
            self.end(run, signal.SIGINT, 8)
            self.assertEqual("kakb-host: interrupted", run.errors[-1])

    def test_progress_is_drawn_on_a_terminal(self):
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        tty.setraw(slave)
        with self.plc("pty", "--station 1") as plc:
            self.host(f"scan --link {plc.link} --stations 1-3 --attempts 1", stderr=slave)
        os.close(slave)
        shown = all_bytes(master).decode()
        self.assertIn("\r\x1b[K3 of at most 3 questions", shown)
        self.assertTrue(shown.endswith("\r\x1b[K"), repr(shown))
