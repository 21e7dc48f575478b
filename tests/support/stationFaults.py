"""A station on a line that fails in every way, and a watch over what it shows.

A relay between station and simulated PLC is frozen and cut, both programs are stopped, a station
falls silent, addresses are refused, and the line loses, doubles and delays answers. Meanwhile the
words of the PLC change. Each value that the station shows as good must have been the word's at a
moment that the rule of quality allows, and at the time that is shown with it."""

import json
import random
import signal
import threading
import time
from http.client import HTTPConnection, HTTPException

from plcControl import ChangingWords, PlcControl
from processes import Program
from simulatedPlc import SimulatedPlc
from tcpRelay import TcpRelay

TIMEOUT_MS = 100
# No answer for three turns or 2 s; a turn is a cycle of under 0.3 s here.
LIMIT_S = 2.0
LATE_MS = 300
# The answer tells of a moment behind its request. The time that is shown is the earliest that the
# answer can have been made, so the value may be younger, but not older by more than a wait and what
# the machine takes.
ANSWER_S = TIMEOUT_MS / 1000
LOSS_S = 0.1
BUSY_S = 0.2
WORDS = 16
FAR = 300  # so far apart that each word is a request of its own, all of the same length
LINE_FAULTS = ("--drop", "0.01", "--corrupt", "0.01", "--duplicate", "0.01:30", "--truncate",
               "0.005", "--stray-before", "0.005", "--late", f"0.02:{LATE_MS}", "--exception", "0.005")
# A silent station is asked again after up to 8 s, a lost link is opened again after up to 8 s, and a
# line with faults may lose the first answers.
BACK_S = 30


def places():
    """Words far apart and words in a row, on two stations."""
    far = {f"far {number}": (1, 2 * FAR * number) for number in range(10)}
    near = {f"near {number}": (2, 20 + 2 * number) for number in range(WORDS)}
    return {**far, **near}


def tag_file():
    """The tag file of these words."""
    rows = [f"{name},{station},MW,{number},uint16" for name, (station, number) in places().items()]
    return "\n".join(["name,station,area,address,type", *rows]) + "\n"


class StationFaults:
    """Runs a station under faults for a time; wrong() lists what it showed that was not true."""

    def __init__(self, programs, folder, seed, busy_s=BUSY_S):
        """The machine takes so many seconds at most for what is done at once otherwise."""
        self.random = random.Random(seed)
        self.busy_s = busy_s
        self.folder = folder
        self.found = []  # guarded by lock, as are the counts
        self.counts = {"looks": 0, "good": 0, "other": 0, "faults": 0}
        self.lock = threading.Lock()
        self.plc = SimulatedPlc(programs / "kakb-sim", folder, "tcp", "--stations", "1-2",
                                "--control", "control", "--seed", str(seed), *LINE_FAULTS)
        self.relay = TcpRelay(("127.0.0.1", self.plc.port))
        self.control = PlcControl(folder / "control")
        self.words = ChangingWords(self.control, {
            name: f"{station}:MW{number}" for name, (station, number) in places().items()})
        (folder / "tags.csv").write_text(tag_file(), encoding="utf-8")
        self.station = Program(
            [programs / "kakb-station", "--listen", "127.0.0.1:0", "--tags", "tags.csv", "--link",
             f"tcp:127.0.0.1,{self.relay.port}", "--timeout-ms", str(TIMEOUT_MS), "--attempts", "2",
             "--pause-ms", "100", "--no-history"], folder)
        self.station.await_that(lambda: self.station.lines)
        self.port = int(self.station.lines[0].rstrip("/").rsplit(":", 1)[1])
        self.wall = time.time() - time.monotonic()
        self.lost_since = None  # while the relay is cut; guarded by lock
        self.ended = False

    def run(self, seconds):
        """Makes faults for so long, then waits for the return of every value."""
        watch = threading.Thread(target=self._watch, daemon=True)
        self.words.start(0.02)
        watch.start()
        end = time.monotonic() + seconds
        while time.monotonic() < end and not self.found:
            time.sleep(self.random.uniform(0.2, 3))
            self._fault(self.random.choice([0.05, 0.3, 1, 2.5, 6]) * self.random.uniform(0.5, 1.5))
        self._await_return()
        self.ended = True
        watch.join()

    def close(self):
        """Ends all programs."""
        self.words.close()
        self.control.close()
        self.station.close()
        self.relay.close()
        self.plc.close()

    def _fault(self, seconds):
        kind = self.random.choice(("freeze", "cut", "stop plc", "stop station", "silent", "refuse"))
        with self.lock:
            self.counts["faults"] += 1
            self.counts[kind] = self.counts.get(kind, 0) + 1
        begin, finish = {
            "freeze": (self.relay.freeze, self.relay.resume),
            "cut": (self._cut, self._join),
            "stop plc": (self._stop_plc, self._continue_plc),
            "stop station": (lambda: self.station.process.send_signal(signal.SIGSTOP),
                             lambda: self.station.process.send_signal(signal.SIGCONT)),
            "silent": (lambda: self.control.command("silent 2 on"),
                       lambda: self.control.command("silent 2 off")),
            "refuse": (lambda: self.control.command("refuse 1:MW600..MW1200"),
                       lambda: self.control.command("refuse none")),
        }[kind]
        begin()
        time.sleep(seconds)
        finish()

    def _cut(self):
        self.relay.cut()
        with self.lock:
            self.lost_since = time.monotonic()

    def _join(self):
        with self.lock:
            self.lost_since = None
        self.relay.resume()

    def _stop_plc(self):
        self.words.pause()  # a stopped PLC takes no command
        self.plc.run.process.send_signal(signal.SIGSTOP)

    def _continue_plc(self):
        self.plc.run.process.send_signal(signal.SIGCONT)
        self.words.resume()

    def _watch(self):
        connection = HTTPConnection("127.0.0.1", self.port, timeout=60)
        while not self.ended:
            with self.lock:
                lost = self.lost_since
            begin = time.monotonic()
            try:
                connection.request("GET", "/api/v1/values")
                shown = json.loads(connection.getresponse().read())
            except (OSError, HTTPException) as error:
                self._tell(f"no answer: {error!r}")
                return
            end = time.monotonic()
            with self.lock:
                lost = lost if lost is not None and lost == self.lost_since else None
            self._judge(shown, begin, end, lost)
            time.sleep(0.03)
        connection.close()

    def _judge(self, shown, begin, end, lost):
        good = [tag for tag in shown if tag["quality"] == "good"]
        with self.lock:
            self.counts["looks"] += 1
            self.counts["good"] += len(good)
            self.counts["other"] += len(shown) - len(good)
        if lost is not None and good:
            late = begin - lost
            if late > LOSS_S + self.busy_s:
                self._tell(f"{len(good)} values good {late:.3f} s after the loss of the link")
        for tag in good:
            self._judge_value(tag, begin, end)

    def _judge_value(self, tag, begin, end):
        true, value = self.words.true[tag["tag"]], tag["value"]
        if value not in true.among(begin - LIMIT_S, end):
            self._tell(f"{tag} was not true in the {LIMIT_S} s before")
        came = tag["time"] / 1000 - self.wall
        if value not in true.among(came - ANSWER_S - self.busy_s, end):
            self._tell(f"{tag} was not true since its time, {begin - came:.3f} s before")

    def _tell(self, sentence):
        with self.lock:
            self.found.append(sentence)

    def _await_return(self):
        begin = time.monotonic()
        while not self._all_good() and not self.found:
            if time.monotonic() > begin + BACK_S:
                self._tell(f"not every value is good {BACK_S} s after the last fault")
            time.sleep(0.05)

    def _all_good(self):
        connection = HTTPConnection("127.0.0.1", self.port, timeout=60)
        connection.request("GET", "/api/v1/values")
        shown = json.loads(connection.getresponse().read())
        connection.close()
        return all(tag["quality"] == "good" for tag in shown)
