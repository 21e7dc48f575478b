#!/usr/bin/python3
"""How soon an answer on the line is at a subscriber, and how long a rebirth takes.

usage: bench/plantLatency.py [SECONDS]
  SECONDS   how long answers are timed (default: 30)

A relay between station and simulated PLC notes when each answer passes. The host is a Sparkplug
subscriber at a Mosquitto of this machine, on the same clock.
Exit status: 0 both goals are reached, 1 else.
"""

import sys
import tempfile
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
from mosquittoBroker import MosquittoBroker
from processes import Program
from simulatedPlc import SimulatedPlc
from sparkplugHost import SparkplugHost
from sparkplugMessages import command
from stationLinks import PROGRAMS, judge
from tcpRelay import TcpRelay

FIRST_MARKER = 3000  # the number of MW 0
REPLY_BYTES = 7  # station, function code, count of bytes, one word, checksum
BOOLEAN = 11
MOST_LATENCY_MS = 10
MOST_REBIRTH_MS = 100
METRICS = 1000
REBIRTHS = 20


class PassedValues:
    """When a reply with each value of one word passed a relay."""

    def __init__(self):
        self.times = {}  # value: time.time()

    def note(self, data):
        """Bytes of the PLC that are about to be passed on."""
        if len(data) == REPLY_BYTES:
            self.times.setdefault(int.from_bytes(data[3:5], "big"), time.time())


def station_with(folder, rows, link, broker):
    """A station that publishes these tags."""
    (folder / "tags.csv").write_text(
        "\n".join(["name,station,area,address,type", *rows]) + "\n", encoding="utf-8")
    return Program([PROGRAMS / "kakb-station", "--listen", "127.0.0.1:0", "--tags", "tags.csv",
                    "--link", link, "--pace", "50ms", "--state", "state", "--mqtt", broker.url],
                   folder)


def latency_p99(folder, seconds):
    """Milliseconds from the answer on the line to the subscriber."""
    plc = SimulatedPlc(PROGRAMS / "kakb-sim", folder, "tcp", "--signal",
                       f"1:MW:{FIRST_MARKER}:counter:50:60000")
    passed = PassedValues()
    relay = TcpRelay(("127.0.0.1", plc.port), passed.note)
    broker = MosquittoBroker(folder)
    host = SparkplugHost(broker.port, keep=False)
    station = station_with(folder, ["w,1,MW,0,uint16"], f"tcp:127.0.0.1,{relay.port}", broker)
    try:
        host.await_that(lambda host: "plc-1" in host.born)
        with host.lock:
            begin = len(host.samples)
        time.sleep(seconds)
        with host.lock:
            came = [sample for sample in host.samples[begin:] if sample.device]
    finally:
        station.close()
        host.close()
        broker.close()
        relay.close()
        plc.close()
    times = sorted(1000 * (sample.came - passed.times[sample.value]) for sample in came
                   if sample.value in passed.times)
    print(f"{len(times)} answers: p50 {times[len(times) // 2]:.1f} ms, longest {times[-1]:.1f} ms")
    return times[int(len(times) * 0.99)]


def rebirth_ms(folder):
    """The longest time from the request for a rebirth of 1,000 metrics to the last birth."""
    plc = SimulatedPlc(PROGRAMS / "kakb-sim", folder, "tcp")
    broker = MosquittoBroker(folder)
    host = SparkplugHost(broker.port, keep=False)
    rows = [f"w{word},1,MW,{2 * word},uint16" for word in range(METRICS)]
    station = station_with(folder, rows, plc.link, broker)
    longest = 0
    try:
        host.await_that(lambda host: "plc-1" in host.born)
        for _ in range(REBIRTHS):
            with host.lock:
                births = host.births
            begin = time.monotonic()
            host.send("NCMD", command("Node Control/Rebirth", datatype=BOOLEAN, boolean_value=True))
            host.await_that(lambda host, births=births: host.births > births
                            and "plc-1" in host.born)
            longest = max(longest, time.monotonic() - begin)
    finally:
        station.close()
        host.close()
        broker.close()
        plc.close()
    return 1000 * longest


def main(seconds=30):
    """Measures; returns the exit status."""
    with tempfile.TemporaryDirectory() as name:
        good = judge("answer to subscriber, p99, ms", latency_p99(Path(name), seconds), "<= 10",
                     MOST_LATENCY_MS)
    with tempfile.TemporaryDirectory() as name:
        good &= judge("rebirth of 1,000 metrics, longest, ms", rebirth_ms(Path(name)), "<= 100",
                      MOST_REBIRTH_MS)
    return 0 if good else 1


if __name__ == "__main__":
    if not all(argument.isdigit() for argument in sys.argv[1:]) or len(sys.argv) > 2:
        sys.exit(__doc__)
    sys.exit(main(*map(int, sys.argv[1:])))
