"""Every value that kakb-host prints is compared with what its tag holds, whatever the line does.

Each register of the simulated PLC holds a value of its own that never changes, so that a value of
another address shows wherever it is printed, and not at the end alone."""

import contextlib

from commandLine import CommandLineTest
from processes import matching
from rtuFrames import write_words
from simulatedPlc import RawLine
from tagTables import HEADER, MARKERS, table, word_rows

MOST_WRITTEN = 100
ANSWER_S = 2
APART = [MARKERS + 200 * i for i in range(20)]  # each word in a request of its own


def value_of(register, station=1):
    """What a register holds; never 0."""
    return (register * 31 + station * 1009) % 65521 + 1


def expected(name):
    """The value of the tag of a name, which says station and register."""
    station, register = name.split("/")
    return value_of(int(register), int(station))


def side_by_side(count):
    """Words in blocks of up to 125."""
    return range(MARKERS, MARKERS + count)


def runs(registers):
    """Registers side by side, as lists of what one frame may write."""
    all_runs = []
    for register in registers:
        if (not all_runs or register != all_runs[-1][-1] + 1
                or len(all_runs[-1]) == MOST_WRITTEN):
            all_runs.append([])
        all_runs[-1].append(register)
    return all_runs


class EveryValue(CommandLineTest):
    """The simulated PLC's registers are filled over its line, as by a program before the host."""

    @contextlib.contextmanager
    def filled(self, kind, registers, arguments, stations=(1,)):
        """A simulated PLC, and the tags of its registers in tags.csv and recipe.csv."""
        rows = word_rows(registers, stations)
        self.file("tags.csv", table(rows))
        self.file("recipe.csv", table([(*row, 0) for row in rows], HEADER + ",value"))
        with self.subTest(kind=kind, tags=len(rows), arguments=arguments), \
                self.plc(kind, f"--stations {stations[0]}-{stations[-1]} {arguments}") as plc:
            with RawLine(plc) as line:
                for station in stations:
                    for run in runs(registers):
                        line.send(write_words(station, run[0],
                                              [value_of(register, station) for register in run]))
                        line.drop_answer(ANSWER_S)
            yield plc

    def watch(self, plc, tags, timeout_ms=200, seconds=4):
        """Watches for some seconds and judges every line.

        A busy machine may show the last tags only after the end, so half of the tags is enough."""
        lines = self.objects(f"watch --tags tags.csv --link {plc.link} --seconds {seconds} "
                             f"--timeout-ms {timeout_ms}")
        values = [line for line in lines if line.get("good")]
        wrong = [line for line in values if line["value"] != expected(line["name"])]
        self.assertEqual([], wrong[:5], f"{len(wrong)} of {len(values)} values")
        self.assertGreaterEqual(2 * len({line["name"] for line in values}), tags, "tags shown good")

    def test_doubled_answers_to_a_watch(self):
        for kind in ("tcp", "pty"):
            for share in ("0.01:30", "0.1:5"):
                for registers in (APART, side_by_side(2000), side_by_side(20)):
                    with self.filled(kind, registers,
                                     f"--duplicate {share} --baud 115200 --trickle") as plc:
                        self.watch(plc, len(registers), timeout_ms=500, seconds=2)

    def test_doubled_answers_to_read_and_upload(self):
        for registers in (APART, side_by_side(500)):
            with self.filled("tcp", registers, "--duplicate 0.2:5") as plc:
                for _ in range(5):
                    read = self.objects(f"read --tags tags.csv --link {plc.link}")
                    self.assertEqual(
                        {f"1/{register}": value_of(register) for register in registers},
                        {line["name"]: line["value"] for line in read})
                for _ in range(5):
                    self.host(f"recipe upload recipe.csv --link {plc.link} --verify")
                    lines = (self.folder / "recipe.csv").read_text(encoding="utf-8").splitlines()
                    self.assertEqual([str(value_of(register)) for register in registers],
                                     [line.split(",")[-1] for line in lines[1:]])

    def test_stall(self):
        """How soon it is over is shown on a clock that jumps: a busy machine says nothing of it."""
        for stall, timeout_ms in ((0.12, 40), (0.78, 100)):
            for kind in ("tcp", "pty"):
                with self.filled(kind, APART, f"--stall {stall} --service-ms 2 "
                                 "--turnaround-us 2000") as plc:
                    self.watch(plc, len(APART), timeout_ms)

    def test_answers_late_by_many_time_outs(self):
        for kind, late in (("tcp", "0.3:120"), ("tcp", "0.3:440"), ("pty", "1:440")):
            with self.filled(kind, APART, f"--late {late}") as plc:
                self.watch(plc, len(APART), timeout_ms=40, seconds=8)

    def test_stall_of_one_of_two_stations(self):
        with self.filled("tcp", APART, "--stall 1:3 --stall-station 1 --turnaround-us 2000",
                         stations=(1, 2)) as plc:
            self.watch(plc, 2 * len(APART), timeout_ms=40, seconds=8)

    def test_damaged_and_doubled_answers(self):
        for share in (0.01, 0.1, 0.3):
            with self.filled("tcp", APART, f"--corrupt {share} --duplicate {share} "
                             f"--late {share}:300") as plc:
                self.watch(plc, len(APART), timeout_ms=100, seconds=8)

    def test_echo_confirms_no_write(self):
        """Of a silent, a refusing and an answering PLC, one write each; a watch shows no echo."""
        for kind in ("tcp", "pty"):
            for fault, status in (("--silent 1", 4), ("--exception 1 --exception-code 4", 5),
                                  ("", 0)):
                with self.filled(kind, [], f"--echo {fault}") as plc:
                    patience_ms = 50 if status == 4 else 2000  # only a silent PLC is waited for
                    run = self.host(f"write MW100=7 MX4.0=1 --link {plc.link} "
                                    f"--timeout-ms {patience_ms}", status)
                    self.assertEqual(0 if status else 2, run.out.count("confirmed"), run)
                    self.assertEqual(1, len(matching(run.errors, "returns what is sent")), run)
        with self.filled("pty", APART, "--echo") as plc:
            self.watch(plc, len(APART))

    def test_echo_that_is_told_confirms_no_write(self):
        """An echo that is denied passes for the answer: only then."""
        with self.filled("pty", [], "--echo --silent 1") as plc:
            run = self.host(f"write MW100=7 --link {plc.link} --timeout-ms 50 --echo yes", 4)
        self.assertEqual("", run.out)
        self.assertNotIn("returns what is sent", run.err)
