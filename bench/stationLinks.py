#!/usr/bin/python3
"""One kakb-station with many links: its processor time and memory, and whether every tag has its turn.

usage: bench/stationLinks.py [LINKS [SECONDS]]
  LINKS     number of links, each to a kakb-sim of its own over TCP, 30 tags once a second
            (default: 100)
  SECONDS   how long each part is measured (default: 20)

First all links answer. Then ten of them are in trouble: half of their PLCs are stopped, half are
killed. The other links' tags must not miss a turn.
Exit status: 0 all goals are reached, 1 else.
"""

import json
import os
import signal
import sys
import tempfile
import time
from http.client import HTTPConnection
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "support"))

from processes import Program  # pylint: disable=wrong-import-position

PROGRAMS = PROJECT / "build" / "qt5" / "bin"
TAGS = 30
MOST_CORE = 0.10
MOST_MIB = 96
TURN_MS = 1000
LATE_MS = 250  # a turn is a second from the start of a read to the next start, and the exchange
LOOK_S = 0.2
IN_TROUBLE = 10


def processor_seconds(pid):
    """User and system time of a process until now."""
    total = 0
    for thread in os.listdir(f"/proc/{pid}/task"):
        with open(f"/proc/{pid}/task/{thread}/schedstat", encoding="ascii") as stat:
            total += int(stat.read().split()[0])
    return total / 1e9


def resident_mib(pid):
    """The resident memory, with the pages of shared libraries."""
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as lines:
        sizes = {words[0]: int(words[1]) for words in map(str.split, lines) if len(words) == 3}
    return sizes["Rss:"] / 1024


class Station:
    """The station and its simulated PLCs."""

    def __init__(self, folder, links):
        rows = [f"t{number},1,MW,{8 * number},uint16,1s" for number in range(TAGS)]
        (folder / "tags.csv").write_text(
            "\n".join(["name,station,area,address,type,rate", *rows]) + "\n", encoding="utf-8")
        self.plcs = [Program([PROGRAMS / "kakb-sim", "--tcp", "0"], folder) for _ in range(links)]
        config = ['listen = "127.0.0.1:0"', 'state = "state"']
        for number, plc in enumerate(self.plcs):
            plc.await_that(lambda plc=plc: plc.out.endswith("\n"))
            config += ["[[link]]", f'name = "plc {number}"', f'link = "{plc.lines[0]}"',
                       'tags = "tags.csv"', "timeout_ms = 200"]
        (folder / "station.toml").write_text("\n".join(config) + "\n", encoding="utf-8")
        self.run = Program([PROGRAMS / "kakb-station", "--config", "station.toml"],
                           folder)
        self.run.await_that(lambda: self.run.lines)
        self.port = int(self.run.lines[0].rstrip("/").rsplit(":", 1)[1])

    def values(self):
        """What /values tells."""
        connection = HTTPConnection("127.0.0.1", self.port, timeout=30)
        connection.request("GET", "/api/v1/values")
        values = json.loads(connection.getresponse().read())
        connection.close()
        return values

    def close(self):
        """Ends all of it."""
        for program in (self.run, *self.plcs):
            if program.process.poll() is None:
                program.process.send_signal(signal.SIGCONT)
            program.close()


def longest_turns(station, seconds, healthy):
    """By tag of the healthy links, the longest time between two readings in ms, and the share of a
    core that the station took without the looks at its values."""
    seen, longest = {}, {}
    begin = time.monotonic()
    while time.monotonic() < begin + seconds:
        for value in station.values():
            key = (value["link"], value["tag"])
            if value["link"] not in healthy:
                continue
            if key in seen and value["time"] != seen[key]:
                longest[key] = max(longest.get(key, 0), value["time"] - seen[key])
            if value["quality"] != "good":
                longest[key] = float("inf")
            seen[key] = value["time"]
        time.sleep(LOOK_S)
    missing = set(seen) - set(longest)
    return {**longest, **{key: float("inf") for key in missing}}


def share_of_core(station, seconds):
    """The share of a core that the station takes while nobody looks."""
    before, begin = processor_seconds(station.run.pid), time.monotonic()
    time.sleep(seconds)
    return (processor_seconds(station.run.pid) - before) / (time.monotonic() - begin)


def judge(what, reached, goal, limit):
    """Prints one line of the table; returns whether the goal is reached."""
    good = reached <= limit
    print(f"| {what} | {goal} | {reached:.3g} | {'yes' if good else 'NO'} |", flush=True)
    return good


def main(links, seconds):
    """Measures; returns the exit status."""
    good = True
    with tempfile.TemporaryDirectory() as name:
        station = Station(Path(name), links)
        try:
            every = {f"plc {number}" for number in range(links)}
            station.run.await_that(lambda: all(
                value["quality"] == "good" for value in station.values()))
            time.sleep(2)
            good &= judge("share of a core", share_of_core(station, seconds), "<= 0.1", MOST_CORE)
            good &= judge("resident MiB", resident_mib(station.run.pid), "<= 96", MOST_MIB)
            turns = longest_turns(station, seconds, every)
            good &= judge("longest turn, ms", max(turns.values()), "<= 1250", TURN_MS + LATE_MS)
            for number, plc in enumerate(station.plcs[:IN_TROUBLE]):
                plc.process.send_signal(signal.SIGKILL if number % 2 else signal.SIGSTOP)
            healthy = {f"plc {number}" for number in range(IN_TROUBLE, links)}
            turns = longest_turns(station, seconds, healthy)
            good &= judge("longest turn of the others, ms", max(turns.values()), "<= 1250",
                          TURN_MS + LATE_MS)
            good &= judge("share of a core, ten in trouble", share_of_core(station, seconds),
                          "<= 0.1", MOST_CORE)
        finally:
            station.close()
    return 0 if good else 1


if __name__ == "__main__":
    if not all(argument.isdigit() for argument in sys.argv[1:]) or len(sys.argv) > 3:
        sys.exit(__doc__)
    sys.exit(main(*map(int, (sys.argv[1:] + ["100", "20"][len(sys.argv) - 1:]))))
