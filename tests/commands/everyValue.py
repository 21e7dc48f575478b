"""Every value that kakb-host prints is compared with what its tag holds, whatever the line does.

usage: everyValue.py PROGRAM_FOLDER [TEST...]

Each register of the simulated PLC holds a value of its own that never changes, so that a value of
another address shows wherever it is printed, and not at the end alone.
"""

import json
import os
import pathlib
import select
import socket
import subprocess
import sys
import tempfile
import tty
import unittest

from rawLine import frame

MARKERS = 3000
MOST_WRITTEN = 100
ANSWER_S = 2
PROGRAMS = pathlib.Path(sys.argv[1])
SECONDS = 4


def value_of(register, station=1):
    """What a register holds; never 0."""
    return (register * 31 + station * 1009) % 65521 + 1


def words_apart():
    """Twenty words, each in a request of its own."""
    return [MARKERS + 200 * i for i in range(20)]


def side_by_side(count):
    """Words in blocks of up to 125."""
    return [MARKERS + i for i in range(count)]


def runs(registers):
    """Registers side by side, as lists of what one frame may write."""
    all_runs = []
    for register in registers:
        if (not all_runs or register != all_runs[-1][-1] + 1
                or len(all_runs[-1]) == MOST_WRITTEN):
            all_runs.append([])
        all_runs[-1].append(register)
    return all_runs


def fill(descriptor, registers, station):
    """Writes the values, whatever becomes of the answers (MODBUS Application Protocol, 6.12)."""
    for run in runs(registers):
        words = "".join(f"{value_of(register, station):04x}" for register in run)
        os.write(descriptor, frame(f"{station:02x} 10 {run[0]:04x} {len(run):04x} "
                                   f"{2 * len(run):02x} {words}"))
        if select.select([descriptor], [], [], ANSWER_S)[0]:
            os.read(descriptor, 4096)


class Plc:
    """kakb-sim on a pseudo-terminal or a TCP port, its registers filled."""

    def __init__(self, folder, kind, registers, *arguments, stations=(1,)):
        line = ["--tcp", "0"] if kind == "tcp" else ["--link-path", str(folder / "plc")]
        self.process = subprocess.Popen(
            [PROGRAMS / "kakb-sim", *line, "--stations", f"{stations[0]}-{stations[-1]}",
             *arguments],
            stdout=subprocess.PIPE, stdin=subprocess.DEVNULL, text=True)
        address = self.process.stdout.readline().strip()
        self.link = address if kind == "tcp" else f"serial:{folder / 'plc'}"
        for station in stations:
            self.fill(address, registers, station)

    @staticmethod
    def fill(address, registers, station):
        """Over the line, as a program before the host would."""
        if address.startswith("tcp:"):
            host, port = address[len("tcp:"):].split(",")
            with socket.create_connection((host, int(port))) as connection:
                fill(connection.fileno(), registers, station)
            return
        terminal = os.open(address, os.O_RDWR | os.O_NOCTTY)
        tty.setraw(terminal)
        fill(terminal, registers, station)
        os.close(terminal)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()


def tag_file(folder, registers, stations=(1,), values=False):
    """Names say station and register."""
    lines = ["name,station,area,address,type" + (",value" if values else "")]
    for station in stations:
        for register in registers:
            address = 2 * (register - MARKERS)
            lines.append(f"{station}/{register},{station},MW,{address},uint16"
                         + (",0" if values else ""))
    path = folder / "tags.csv"
    path.write_text("\n".join(lines) + "\n", encoding="utf-8")
    return path


def expected(name):
    """The value of the tag of a name."""
    station, register = name.split("/")
    return value_of(int(register), int(station))


class EveryValue(unittest.TestCase):
    """Runs of the programs together."""

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.folder.name)
        self.addCleanup(self.folder.cleanup)

    def host(self, *arguments):
        """Runs kakb-host to its end."""
        return subprocess.run([PROGRAMS / "kakb-host", *arguments], capture_output=True, text=True,
                              stdin=subprocess.DEVNULL, check=False, timeout=100)

    def watch(self, plc, registers, timeout_ms=200, stations=(1,), seconds=SECONDS, share_shown=1):
        """Watches for some seconds and judges every line.

        At least that share of the tags has to be shown. Returns the lines that tell of values, and
        the figures at the end."""
        tags = tag_file(self.path, registers, stations)
        done = self.host("watch", "--tags", str(tags), "--link", plc.link, "--json", "--seconds",
                         str(seconds), "--timeout-ms", str(timeout_ms))
        self.assertEqual(0, done.returncode, done.stderr)
        lines = [json.loads(line) for line in done.stdout.splitlines()]
        values = [line for line in lines if line.get("good")]
        wrong = [line for line in values if line["value"] != expected(line["name"])]
        self.assertEqual([], wrong[:5], f"{len(wrong)} of {len(values)} values")
        shown = {line["name"] for line in values}
        self.assertGreaterEqual(len(shown), share_shown * len(registers) * len(stations),
                                "tags shown good")
        return values, lines[-1]

    def test_doubled_answers(self):
        """Of every plan, on both kinds of link, at two rates."""
        plans = {"apart": words_apart(), "blocks": side_by_side(2000), "one": side_by_side(20)}
        for kind in ("tcp", "pty"):
            for share in ("0.01:30", "0.1:5"):
                for name, registers in plans.items():
                    with self.subTest(kind=kind, share=share, plan=name), \
                            Plc(self.path, kind, registers, "--duplicate", share, "--baud",
                                "115200", "--trickle") as plc:
                        self.watch(plc, registers, timeout_ms=500, seconds=2)

    def test_doubled_answers_to_read_and_upload(self):
        """What a verb reports with status 0 is right."""
        for registers in (words_apart(), side_by_side(500)):
            with Plc(self.path, "tcp", registers, "--duplicate", "0.2:5") as plc:
                tags = tag_file(self.path, registers)
                for _ in range(5):
                    done = self.host("read", "--tags", str(tags), "--link", plc.link, "--json")
                    self.assertEqual(0, done.returncode, done.stderr)
                    for line in map(json.loads, done.stdout.splitlines()):
                        self.assertEqual(expected(line["name"]), line["value"], line)
                recipe = tag_file(self.path, registers, values=True)
                for _ in range(5):
                    done = self.host("recipe", "upload", str(recipe), "--link", plc.link,
                                     "--verify")
                    self.assertEqual(0, done.returncode, done.stderr)
                    for line in recipe.read_text(encoding="utf-8").splitlines()[1:]:
                        self.assertEqual(str(expected(line.split(",")[0])), line.split(",")[-1])

    def test_one_stall(self):
        """Everything is answered after it, in order, and full speed is back within a second."""
        registers = words_apart()
        for stall, timeout_ms in (("0.12", 40), ("0.78", 100)):
            for kind in ("tcp", "pty"):
                with self.subTest(stall=stall, timeout_ms=timeout_ms, kind=kind), \
                        Plc(self.path, kind, registers, "--stall", stall, "--service-ms", "2",
                            "--turnaround-us", "2000") as plc:
                    values, _ = self.watch(plc, registers, timeout_ms)
                    latest = max(line["time"] for line in values)
                    self.assertLess(latest, 1 + float(stall) + 1, "good again too late")

    def test_late_answers(self):
        """By up to three and eleven time-outs, in order."""
        registers = words_apart()
        for kind, late in (("tcp", "0.3:120"), ("tcp", "0.3:440"), ("pty", "1:440")):
            with self.subTest(kind=kind, late=late), \
                    Plc(self.path, kind, registers, "--late", late) as plc:
                self.watch(plc, registers, timeout_ms=40, seconds=8)

    def test_two_stations_one_stalls(self):
        """The other one's values stay right, and it is polled on."""
        registers = words_apart()
        with Plc(self.path, "tcp", registers, "--stall", "1:3", "--stall-station", "1",
                 "--turnaround-us", "2000", stations=(1, 2)) as plc:
            self.watch(plc, registers, 40, (1, 2), seconds=8)

    def test_damaged_and_doubled(self):
        """With three of ten replies damaged some tags may wait for their first value for long."""
        registers = words_apart()
        for share, share_shown in (("0.01", 1), ("0.1", 1), ("0.3", 0.5)):
            with self.subTest(share=share), \
                    Plc(self.path, "tcp", registers, "--corrupt", share, "--duplicate", share,
                        "--late", f"{share}:300") as plc:
                self.watch(plc, registers, timeout_ms=100, seconds=8, share_shown=share_shown)

    def test_echo(self):
        """Of a silent, a refusing and an answering PLC, one write each."""
        for kind in ("tcp", "pty"):
            for arguments, status in ((["--silent", "1"], 4),
                                      (["--exception", "1", "--exception-code", "4"], 5), ([], 0)):
                with self.subTest(kind=kind, arguments=arguments), \
                        Plc(self.path, kind, [], "--echo", *arguments) as plc:
                    done = self.host("write", "MW100=7", "MX4.0=1", "--link", plc.link,
                                     "--timeout-ms", "50")
                    self.assertEqual(status, done.returncode, done.stdout + done.stderr)
                    self.assertEqual(0 if status else 2, done.stdout.count("confirmed"))
                    self.assertEqual(1, done.stderr.count("returns what is sent"))
        with Plc(self.path, "pty", words_apart(), "--echo") as plc:
            self.watch(plc, words_apart())

    def test_echo_that_is_told(self):
        """An echo that is denied passes for the answer: only then."""
        with Plc(self.path, "pty", [], "--echo", "--silent", "1") as plc:
            done = self.host("write", "MW100=7", "--link", plc.link, "--timeout-ms", "50", "--echo",
                             "yes")
            self.assertEqual(4, done.returncode)
            self.assertEqual("", done.stdout)
            self.assertNotIn("returns what is sent", done.stderr)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[2:]], verbosity=2)
