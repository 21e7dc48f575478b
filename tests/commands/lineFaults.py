"""The simulated PLC's stalls, late answers, duplicates and echoes, byte by byte on the line.

usage: lineFaults.py PROGRAM_FOLDER

No answer is asked to be soon: a busy machine makes everything later, and nothing sooner. Only what is
sent into a stall, or ahead of a second copy, has most of a second to be there.
"""

import sys
import time

from rawLine import Plc, frame

FIRST_STALL_AFTER_S = 1
INTO_THE_STALL_S = 0.05


def write(station, value):
    """MW 3001; the answer is the same (MODBUS Application Protocol V1.1b3, 6.6)."""
    return frame(f"{station:02x} 06 0b b9 {value:04x}")


def read(station):
    """MW 3001, and its answer when this is the value (6.3)."""
    return frame(f"{station:02x} 03 0b b9 00 01")


def read_answer(station, value):
    """Of read()."""
    return frame(f"{station:02x} 03 02 {value:04x}")


def counter(line):
    """IW 0 of station 1 and when it was asked for and read (6.4)."""
    sent = time.monotonic()
    line.send(frame("01 04 00 00 00 01"))
    value, seen = counter_value(line)
    return value, sent, seen


def counter_value(line):
    """Out of the answer that comes next."""
    answer, seen = line.receive(7)
    assert answer == frame(answer[:5].hex()) and answer[:3] == b"\x01\x04\x02", answer.hex(" ")
    return int.from_bytes(answer[3:5], "big"), seen


def wait_until(moment):
    """On this program's clock."""
    time.sleep(max(0, moment - time.monotonic()))


def stall_is_answered_in_order(programs, kind):
    """The values are those at the end of the stall, and each answer takes its time."""
    with Plc(programs, kind, "--stall", "1", "--service-ms", "50",
             "--signal", "1:IW:0:counter:10") as plc:
        before, sent, seen = counter(plc.line)
        wait_until(seen + FIRST_STALL_AFTER_S + INTO_THE_STALL_S)
        plc.line.send(write(1, 7), read(1), write(1, 8), read(1), frame("01 04 00 00 00 01"))
        stall_end = sent + FIRST_STALL_AFTER_S + 1
        for number, answer in enumerate(
                [write(1, 7), read_answer(1, 7), write(1, 8), read_answer(1, 8)]):
            at = plc.line.expect(answer)
            assert at >= stall_end + 0.05 * number, f"answer {number} is too soon"
        after, at = counter_value(plc.line)
        assert at >= stall_end + 0.05 * 4, "the last answer is too soon"
        counted = (after - before) % 65536
        assert counted >= 200 + 20 - 1, f"it was executed when 10 ms had passed {counted} times"
        plc.expect_report(requests=6, replies=6, stalled=5)


def stalls_come_again(programs, kind):
    """A host that asks all the time finds several, and loses nothing."""
    with Plc(programs, kind, "--stall", "0.2:0.4") as plc:
        stalls, value = 0, 0
        while stalls < 3:
            value += 1
            sent, seen = plc.line.exchange(write(1, value % 65536), write(1, value % 65536))
            if seen - sent >= 0.15:
                stalls += 1
        plc.expect_report(requests=value, replies=value)


def stall_of_one_station_leaves_the_other(programs, kind):
    """What was asked second is answered first."""
    with Plc(programs, kind, "--stations", "1-2", "--stall", "1", "--stall-station", "2") as plc:
        sent, seen = plc.line.exchange(write(2, 1), write(2, 1))
        wait_until(seen + FIRST_STALL_AFTER_S + INTO_THE_STALL_S)
        plc.line.send(write(2, 5), write(1, 6), read(2))
        plc.line.expect(write(1, 6))
        at = plc.line.expect(write(2, 5))
        assert at >= sent + FIRST_STALL_AFTER_S + 1, "answered during the stall"
        plc.line.expect(read_answer(2, 5))
        plc.expect_report(requests=4, replies=4, stalled=2)


def late_answers_keep_the_order_of_their_station(programs, kind):
    """And not that of the line."""
    with Plc(programs, kind, "--stations", "1-2", "--late", "1:300") as plc:
        requests = [write(station, value) for value in range(10) for station in (1, 2)]
        sent = time.monotonic()
        plc.line.send(*requests)
        received, seen = plc.line.receive(sum(map(len, requests)))
        answers = [received[at:at + 8] for at in range(0, len(received), 8)]
        for station in (1, 2):
            expected = [request for request in requests if request[0] == station]
            assert [answer for answer in answers if answer[0] == station] == expected, answers
        assert answers != requests, "none went ahead of another station's"
        assert seen >= sent + 0.1, "none was late"
        plc.expect_report(requests=20, replies=20, late=20)


def duplicate_comes_by_itself(programs, kind):
    """The next answer waits for it."""
    with Plc(programs, kind, "--duplicate", "1:900", "--fault-exchanges", "1") as plc:
        sent, _ = plc.line.exchange(write(1, 7), write(1, 7))
        assert not plc.line.coming, "the second copy came with the first one"
        plc.line.send(read(1))
        at = plc.line.expect(write(1, 7))
        assert at >= sent + 0.9, "the second copy is too soon"
        plc.line.expect(read_answer(1, 7))
        plc.expect_report(requests=2, replies=2, duplicate=1)


def duplicate_comes_right_behind(programs, kind):
    """Without a time of its own."""
    with Plc(programs, kind, "--duplicate", "1") as plc:
        plc.line.send(write(1, 7), read(1))
        plc.line.expect(2 * write(1, 7) + 2 * read_answer(1, 7))
        plc.expect_report(requests=2, replies=2, duplicate=2)


def echo_comes_ahead_of_the_answer(programs, kind):
    """Of whatever was sent; a silent station's requests have nothing else."""
    with Plc(programs, kind, "--stations", "1-2", "--silent", "1", "--echo") as plc:
        garbage, broadcast, absent = b"\xff\xff\xff", write(0, 3), read(9)
        unanswered = [garbage, broadcast, absent, read(1)]
        for sent in unanswered:
            plc.line.exchange(sent, sent)
        plc.line.exchange(read(2), read(2) + read_answer(2, 3))
        start = b"\x02"
        plc.line.exchange(start, start)
        echoed = sum(map(len, unanswered)) + len(read(2)) + len(start)
        plc.expect_report(requests=4, replies=1, silent=1, foreign=1, broadcasts=1, echoed=echoed)


def main(programs):
    """Goes on after a failure, so that all of them are told."""
    failed = False
    for scenario, kinds in [
            (stall_is_answered_in_order, ("pty", "tcp")),
            (stalls_come_again, ("pty",)),
            (stall_of_one_station_leaves_the_other, ("tcp",)),
            (late_answers_keep_the_order_of_their_station, ("pty", "tcp")),
            (duplicate_comes_by_itself, ("pty", "serial", "tcp")),
            (duplicate_comes_right_behind, ("pty", "serial", "tcp")),
            (echo_comes_ahead_of_the_answer, ("pty", "serial", "tcp"))]:
        for kind in kinds:
            try:
                scenario(programs, kind)
                print(f"{kind}: {scenario.__name__}")
            except AssertionError as error:
                print(f"FAILED: {kind}: {scenario.__name__}: {error}", file=sys.stderr)
                failed = True
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
