"""The simulated PLC's stalls, late answers, duplicates and echoes, byte by byte on the line.

No answer has to be soon: a busy machine makes everything later, and nothing sooner. Only requests
that are sent into a stall, or ahead of a second copy, have most of a second to arrive."""

import contextlib
import time

from commandLine import CommandLineTest
from processes import wait_until
from rtuFrames import frame, is_whole
from simulatedPlc import RawLine

FIRST_STALL_AFTER_S = 1
INTO_THE_STALL_S = 0.05
READ_COUNTER = frame("01 04 00 00 00 01")  # IW 0 of station 1 (6.4)


def write(station, value):
    """MW 3001; the answer is the same (MODBUS Application Protocol V1.1b3, 6.6)."""
    return frame(f"{station:02x} 06 0b b9 {value:04x}")


def read(station):
    """A read of MW 3001 (6.3)."""
    return frame(f"{station:02x} 03 0b b9 00 01")


def read_answer(station, value):
    """The answer when this is the value."""
    return frame(f"{station:02x} 03 02 {value:04x}")


class LineFaults(CommandLineTest):
    """A client that knows no driver."""

    @contextlib.contextmanager
    def line(self, kind, arguments, **counts):
        """The line of a PLC whose report has these counts in the end."""
        with self.subTest(kind=kind):
            with self.plc(kind, f"--until-stdin-ends {arguments}") as plc, RawLine(plc) as line:
                yield line
                plc.stop(None)
            report = plc.report()
            self.assertEqual(counts, {key: report[key] for key in counts})

    def counter_value(self, line):
        """The value in the answer that comes next, and when it came."""
        answer, seen = line.receive(7)
        self.assertTrue(is_whole(answer) and answer[:3] == b"\x01\x04\x02", answer.hex(" "))
        return int.from_bytes(answer[3:5], "big"), seen

    def test_stall_is_answered_in_order(self):
        """The values are those at the end of the stall, and each answer takes its time."""
        for kind in ("pty", "tcp"):
            with self.line(kind, "--stall 1 --service-ms 50 --signal 1:IW:0:counter:10",
                           requests=6, replies=6, stalled=5) as line:
                sent = time.monotonic()
                line.send(READ_COUNTER)
                before, seen = self.counter_value(line)
                wait_until(seen + FIRST_STALL_AFTER_S + INTO_THE_STALL_S)
                line.send(write(1, 7), read(1), write(1, 8), read(1), READ_COUNTER)
                stall_end = sent + FIRST_STALL_AFTER_S + 1
                answers = [write(1, 7), read_answer(1, 7), write(1, 8), read_answer(1, 8)]
                for number, answer in enumerate(answers):
                    self.assertGreaterEqual(line.expect(answer), stall_end + 0.05 * number)
                after, at = self.counter_value(line)
                self.assertGreaterEqual(at, stall_end + 0.05 * len(answers))
                # Steps of 10 ms: a second until the stall, a second of stall, and four answers.
                self.assertGreaterEqual((after - before) % 65536, 100 + 100 + 20 - 1)

    def test_repeated_stalls_lose_nothing(self):
        stalls, value = 0, 0
        with self.plc("pty", "--stall 0.2:0.4") as plc, RawLine(plc) as line:
            while stalls < 3:
                value += 1
                sent, seen = line.exchange(write(1, value % 65536), write(1, value % 65536))
                stalls += seen - sent >= 0.15
        self.assertEqual((value, value), (plc.report()["requests"], plc.report()["replies"]))

    def test_stall_of_one_station_leaves_the_other(self):
        with self.line("tcp", "--stations 1-2 --stall 1 --stall-station 2",
                       requests=4, replies=4, stalled=2) as line:
            sent, seen = line.exchange(write(2, 1), write(2, 1))
            wait_until(seen + FIRST_STALL_AFTER_S + INTO_THE_STALL_S)
            line.send(write(2, 5), write(1, 6), read(2))
            line.expect(write(1, 6))
            self.assertGreaterEqual(line.expect(write(2, 5)), sent + FIRST_STALL_AFTER_S + 1)
            line.expect(read_answer(2, 5))

    def test_late_answers_keep_the_order_of_their_station_only(self):
        requests = [write(station, value) for value in range(10) for station in (1, 2)]
        for kind in ("pty", "tcp"):
            with self.line(kind, "--stations 1-2 --late 1:300",
                           requests=20, replies=20, late=20) as line:
                sent = time.monotonic()
                line.send(*requests)
                received, seen = line.receive(sum(map(len, requests)))
                answers = [received[at:at + 8] for at in range(0, len(received), 8)]
                for station in (1, 2):
                    self.assertEqual([request for request in requests if request[0] == station],
                                     [answer for answer in answers if answer[0] == station])
                self.assertNotEqual(requests, answers, "no answer overtakes another station's")
                self.assertGreaterEqual(seen, sent + 0.1, "no answer is late")

    def test_delayed_duplicate_comes_ahead_of_the_next_answer(self):
        for kind in ("pty", "serial", "tcp"):
            with self.line(kind, "--duplicate 1:900 --fault-exchanges 1",
                           requests=2, replies=2, duplicate=1) as line:
                sent, _ = line.exchange(write(1, 7), write(1, 7))
                self.assertEqual(b"", line.coming, "the second copy comes with the first copy")
                line.send(read(1))
                self.assertGreaterEqual(line.expect(write(1, 7)), sent + 0.9)
                line.expect(read_answer(1, 7))

    def test_duplicate_comes_right_behind_the_answer(self):
        for kind in ("pty", "serial", "tcp"):
            with self.line(kind, "--duplicate 1", requests=2, replies=2, duplicate=2) as line:
                line.send(write(1, 7), read(1))
                line.expect(2 * write(1, 7) + 2 * read_answer(1, 7))

    def test_echo_comes_ahead_of_the_answer(self):
        """It is an echo of whatever was sent; a silent station's requests have nothing else."""
        garbage, start = b"\xff\xff\xff", b"\x02"
        unanswered = [garbage, write(0, 3), read(9), read(1)]
        echoed = sum(map(len, [*unanswered, read(2), start]))
        for kind in ("pty", "serial", "tcp"):
            with self.line(kind, "--stations 1-2 --silent 1 --echo", requests=4, replies=1,
                           silent=1, foreign=1, broadcasts=1, echoed=echoed) as line:
                for sent in unanswered:
                    line.exchange(sent, sent)
                line.exchange(read(2), read(2) + read_answer(2, 3))
                line.exchange(start, start)
