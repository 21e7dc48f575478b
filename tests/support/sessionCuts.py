"""Sessions of a station that are cut at every point, between restarts and kills of the station: each
CONNECT has to take the next number, and its births have to carry the same."""

import json
import random
import signal
from collections import Counter

from bareBroker import CONNACK, CONNECT, PUBLISH, BareBroker
from heldPort import HeldPort
from processes import PATIENCE_S
from simulatedPlc import SimulatedPlc
from sparkplugMessages import payload_of
from stationProgram import Station

NUMBERS = 256
# The pauses grow when a whole list has been tried in vain; a restart begins them anew.
PORTS, DEAD_PORTS = 24, 4
# Behind which packet of the station a session ends: a number of packets, of all kinds.
LONGEST_SESSION = 12
UNANSWERED, REFUSED = 0.15, 0.1  # shares of the CONNECTs
CHANGES = "1:MW:3000:counter:10:60000"  # of MW 0, so that a session goes on behind its births
TOPIC = "spBv1.0/kakb/{}/kakb-station"


class SessionCuts:
    """Runs the sessions; `found` has what was wrong, in sentences."""

    def __init__(self, programs, folder, seed):
        self.random = random.Random(seed)
        self.programs, self.folder = programs, folder
        self.found = []
        self.counts = Counter()
        self.last = -1  # number of the last CONNECT; -1: there was none
        self.was_killed = False  # since the last CONNECT
        self.broker = BareBroker(PORTS)
        self.plc = SimulatedPlc(programs / "kakb-sim", folder, "tcp", "--signal", CHANGES)
        (folder / "tags.csv").write_text(
            "name,station,area,address,type\nw,1,MW,0,uint16\n", encoding="utf-8")
        self.dead = [HeldPort() for _ in range(DEAD_PORTS)]
        self.servers = self.broker.ports + [dead.number for dead in self.dead]
        self.random.shuffle(self.servers)
        self.station = self._started()

    def run(self, reconnects, restarts):
        """Makes so many of each, in a random order."""
        ends = ["cut"] * reconnects + ["restart"] * restarts
        self.random.shuffle(ends)
        for end in ends:
            client = self.broker.accept(PATIENCE_S)
            if not client:
                self.found.append("the station does not come back")
                return
            self._serve(client, end)

    def close(self):
        """Ends all programs."""
        self.station.close()
        self.broker.close()
        for dead in self.dead:
            dead.close()
        self.plc.close()

    def _started(self):
        servers = [word for port in self.servers for word in ("--mqtt", f"mqtt://127.0.0.1:{port}")]
        return Station([self.programs / "kakb-station", "--listen", "127.0.0.1:0", "--tags",
                        "tags.csv", "--link", self.plc.link, "--pace", "10ms", "--state", "state",
                        *servers], self.folder)

    def _serve(self, client, end):
        """One session, until a random packet of it, or as long as the station likes."""
        packet = client.read()
        if not packet or packet.kind != CONNECT:
            self.found.append(f"a connection begins with {packet}")
            return
        number = self._judge_connect(packet)
        draw = self.random.random()
        if draw < UNANSWERED:
            self.counts["without an answer"] += 1
        elif draw < UNANSWERED + REFUSED:
            self.counts["refused"] += 1
            client.send(CONNACK, b"\0\3")
        else:
            client.answer(packet)
            self._go_on(client, number, self.random.randrange(LONGEST_SESSION))
        if end == "restart":
            self._restart(client, number)
        client.cut(is_reset=self.random.random() < 0.3)

    def _go_on(self, client, number, packets):
        """Answers so many packets of a session; the last one may stay without an answer."""
        born = False
        for left in range(packets, 0, -1):
            packet = client.read()
            if not packet:
                self.found.append("the station left a session")
                return
            if packet.kind == PUBLISH:
                self._judge(packet, number, born)
                born = True
            if left > 1 or self.random.random() < 0.5:
                client.answer(packet)
        self.counts["cut behind births" if born else "cut ahead of births"] += 1

    def _restart(self, client, number):
        """Ends the station by a signal in the middle of the session, and starts it again."""
        is_kill = self.random.random() < 0.5
        self.counts["killed" if is_kill else "stopped"] += 1
        self.station.process.send_signal(signal.SIGKILL if is_kill else signal.SIGTERM)
        while packet := client.read():
            if packet.kind == PUBLISH:
                self._judge(packet, number, True)
            client.answer(packet)
        self.station.process.wait()
        self.station.close()
        while left := self.broker.accept(0):  # who came ahead of the signal
            packet = left.read()
            if packet:
                self._judge_connect(packet)
            left.cut()
        self.was_killed = self.was_killed or is_kill
        self.station = self._started()

    def _judge_connect(self, packet):
        """The will is the death with the next number; returns that."""
        topic, payload = packet.will()
        number = self._number("will", payload)
        expected = (self.last + 1) % NUMBERS
        # A kill between the storing of a number and the CONNECT leaves it out.
        left_out = (expected + 1) % NUMBERS
        if topic != TOPIC.format("NDEATH"):
            self.found.append(f"a will on {topic}")
        if number == left_out and self.was_killed:
            self.counts["left out by a kill"] += 1
        elif number != expected:
            self.found.append(f"CONNECT {number} behind {self.last}")
        self.last, self.was_killed = number, False
        self.counts["sessions"] += 1
        return number

    def _judge(self, packet, number, born):
        """The first message is the node's birth; births and deaths carry the session's number."""
        kind = packet.topic.split("/")[2]
        if not born and packet.topic != TOPIC.format("NBIRTH"):
            self.found.append(f"a session begins with {packet.topic}")
        if kind in ("NBIRTH", "NDEATH"):
            self.counts[kind] += 1
            told = self._number(kind, packet.payload)
            if told != number:
                self.found.append(f"{kind} {told} in session {number}")

    def _number(self, kind, payload):
        metrics = [metric for metric in payload_of(payload).metrics if metric.name == "bdSeq"]
        if len(metrics) != 1 or metrics[0].datatype != 4:
            self.found.append(f"{kind} with {metrics}")
            return self.last
        return metrics[0].long_value


def summary(run):
    """One line."""
    return json.dumps(dict(run.counts))
