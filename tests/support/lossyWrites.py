"""Many writes through the station over a line that loses, spoils and refuses, each of them judged
by the memory of the simulated PLC at its end."""

import json
import random
import struct
import threading
from collections import Counter
from http.client import HTTPConnection

from plcControl import PlcControl
from processes import Program
from simulatedPlc import SimulatedPlc

FAULTS = ("--drop", "0.05", "--drop-request", "0.05", "--corrupt", "0.1", "--exception", "0.1",
          "--exception-code", "1")
TIMEOUT_MS = 40
WRITERS = 4
NOT_SENT = "not sent"
OUTCOMES = ("confirmed", "refused", "failed")
HEADERS = {"Content-Type": "application/json", "X-Kakb": "1"}


class Target:
    """A tag, and the words or the bit of the PLC that hold it."""

    def __init__(self, name, kind, number):
        self.name = name
        self.kind = kind
        area = "QX" if kind == "bool" else "MW"
        self.line = f"{name},1,{area},{f'{number}.0' if kind == 'bool' else number},{kind},rw"
        self.places = {"bool": [f"QX{number}.0"], "uint16": [f"MW{number}"],
                       "float32:low": [f"MW{number}", f"MW{number + 2}"]}[kind]

    def new_value(self, source, old):
        """A value that the target does not have."""
        if self.kind == "bool":
            return not old[0]
        if self.kind == "uint16":
            return (old[0] + source.randrange(1, 0xFFFF)) % 0x10000
        return source.randrange(1, 1 << 24) / 8

    def words(self, value):
        """The words that a value is, as the PLC has them."""
        if self.kind == "float32:low":
            return list(struct.unpack("<HH", struct.pack("<f", value)))
        return [int(value)]


class HttpWriter:
    """Writes by the station's API, on a connection of its own."""

    def __init__(self, port):
        self.connection = HTTPConnection("127.0.0.1", port, timeout=60)

    def write(self, target, value):
        """Writes, and returns the status and the outcome."""
        self.connection.request("POST", "/api/v1/write", json.dumps(
            {"link": "plc", "tag": target.name, "value": value}), HEADERS)
        answer = self.connection.getresponse()
        return answer.status, json.loads(answer.read())

    def close(self):
        """Ends the connection."""
        self.connection.close()


class LossyWrites:
    """Starts the programs; run() writes. wrong() tells what was told and not true."""

    def __init__(self, programs, folder, seed, *words):
        """The station gets these further words on its command line."""
        self.targets = [Target(f"{kind} {number}", kind, 20 * (3 * number + place))
                        for number in range(WRITERS)
                        for place, kind in enumerate(("uint16", "bool", "float32:low"))]
        tags = "\n".join(["name,station,area,address,type,access",
                          *(target.line for target in self.targets)])
        (folder / "tags.csv").write_text(tags + "\n", encoding="utf-8")
        self.plc = SimulatedPlc(programs / "kakb-sim", folder, "tcp", "--control", "control",
                                "--seed", str(seed), *FAULTS)
        self.control = PlcControl(folder / "control")
        self.station = Program(
            [programs / "kakb-station", "--listen", "127.0.0.1:0", "--tags", "tags.csv", "--link",
             self.plc.link, "--timeout-ms", str(TIMEOUT_MS), "--attempts", "3", "--allow-writes",
             "--no-history", *words], folder)
        self.station.await_that(lambda: self.station.lines)
        self.port = int(self.station.lines[0].rstrip("/").rsplit(":", 1)[1])
        self.seed = seed
        self.lock = threading.Lock()
        self.found = []  # guarded by lock
        self.outcomes, self.reasons = Counter(), Counter()  # guarded by lock

    def close(self):
        """Ends the programs."""
        self.control.close()
        self.station.close()
        self.plc.close()

    def run(self, writes):
        """Writes so many values, several at once."""
        threads = [threading.Thread(target=self._write_all, args=(number, writes // WRITERS))
                   for number in range(WRITERS)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()

    def _memory(self, target):
        return [int(self.control.command(f"get {place}")) for place in target.places]

    def _write_all(self, number, writes):
        source = random.Random(self.seed * WRITERS + number)
        own = self.targets[3 * number:3 * number + 3]
        writer = self._writer(source)
        for _ in range(writes):
            target = source.choice(own)
            before = self._memory(target)
            value = target.new_value(source, before)
            self._judge(target, before, value, *writer.write(target, value))
        writer.close()

    def _writer(self, _):
        """What a thread writes by: write() returns a status, 200 for an outcome, and the outcome."""
        return HttpWriter(self.port)

    def _judge(self, target, before, value, status, told):
        wanted, present = target.words(value), self._memory(target)
        outcome, reason = told.get("outcome"), told.get("reason") or ""
        with self.lock:
            self.outcomes[outcome] += 1
            self.reasons[reason] += 1
            if status != 200 or outcome not in OUTCOMES:
                self.found.append(f"no outcome: {status} {told}")
            elif outcome == "confirmed" and present != wanted:
                self.found.append(f"confirmed, but the PLC has {present}: {wanted} {told}")
            elif outcome == "confirmed" and target.words(told["value"]) != wanted:
                self.found.append(f"confirmed, but the tag does not hold it: {value} {told}")
            elif outcome == "refused" and present != before:
                self.found.append(f"refused, but the PLC has executed it: {told}")
            elif outcome == "failed" and NOT_SENT in reason and present != before:
                self.found.append(f"not sent, but the PLC has executed it: {told}")
            elif outcome != "confirmed" and (not reason or present not in (before, wanted)):
                self.found.append(f"{before} -> {wanted}, the PLC has {present}: {told}")
