#!/usr/bin/python3
"""One kakb-station with very many links, which publishes every value: what it costs, and whether links
in trouble delay the others.

usage: bench/plantLinks.py [LINKS [TAGS [SECONDS [MINUTES]]]]
  LINKS     number of links, each to a kakb-sim of its own over TCP (default: 500)
  TAGS      tags of each link, all of which change and are read once a second (default: 30)
  SECONDS   how long each part is measured (default: 30)
  MINUTES   30 or more: the resident memory is noted each minute for so long, and the last ten
            minutes must have what the minutes 11 to 20 had; no PLC is stopped then. The memory of
            each link's last frames fills in the first minutes.

First all links answer. Then a tenth of the PLCs is stopped: the others' samples must come to a Sparkplug
host in their turns as before.
Exit status: 0 all goals are reached, 1 else.
"""

import sys
import tempfile
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
from mosquittoBroker import MosquittoBroker
from processes import Program, eventually
from sparkplugHost import SparkplugHost
from stationLinks import PROGRAMS, judge, processor_seconds, resident_mib

FIRST_MARKER = 3000  # the number of MW 0
MB_OF_MIB = 1.048576
# Share of a core and resident MB, by the number of links.
GOALS = {500: (0.30, 150), 1000: (0.60, 300)}
ALL_POLLED_S = 20
MOST_MOVED_MS = 10
SIGSTOP, SIGCONT = 19, 18
FLAT_FROM, FLAT_UNTIL, LAST_MINUTES, SHORTEST_HOUR = 10, 20, 10, 30
MOST_GROWTH = 0.01  # of the memory, or MOST_GROWTH_MIB
MOST_GROWTH_MIB = 1


class PlantLinks:
    """The simulated PLCs, the broker, the host and the station."""

    def __init__(self, folder, links, tags):
        rows = [f"t{number},1,MW,{2 * number},uint16,1s" for number in range(tags)]
        (folder / "tags.csv").write_text(
            "\n".join(["name,station,area,address,type,rate", *rows]) + "\n", encoding="utf-8")
        signals = [argument for number in range(tags) for argument in
                   ("--signal", f"1:MW:{FIRST_MARKER + number}:counter:1000:60000")]
        # The client of the host waits by select(), which takes descriptors below 1024 only: it comes
        # before the PLCs.
        self.broker = MosquittoBroker(folder)
        self.host = SparkplugHost(self.broker.port, keep=False)
        self.plcs = [Program([PROGRAMS / "kakb-sim", "--tcp", "0", *signals], folder)
                     for _ in range(links)]
        config = ['listen = "127.0.0.1:0"', 'state = "state"', "[mqtt]",
                  f'servers = ["{self.broker.url}"]']
        for number, plc in enumerate(self.plcs):
            plc.await_that(lambda plc=plc: plc.out.endswith("\n"))
            config += ["[[link]]", f'name = "plc {number}"', f'link = "{plc.lines[0]}"',
                       'tags = "tags.csv"', "timeout_ms = 200"]
        (folder / "station.toml").write_text("\n".join(config) + "\n", encoding="utf-8")
        self.began = time.monotonic()
        self.run = Program([PROGRAMS / "kakb-station", "--config", "station.toml"], folder)

    def await_all(self, links, tags):
        """Waits until the host has a good value of every tag; returns the seconds since the start."""
        def is_whole():
            with self.host.lock:
                return sum(quality == "good" for _, quality in self.host.values.values()) \
                    >= links * tags
        assert eventually(is_whole, 120), f"not every tag was polled\n{self.run}"
        return time.monotonic() - self.began

    def share_of_core(self, seconds):
        """The share of a core that the station takes."""
        before, begin = processor_seconds(self.run.pid), time.monotonic()
        time.sleep(seconds)
        return (processor_seconds(self.run.pid) - before) / (time.monotonic() - begin)

    def turns_p99(self, seconds, healthy):
        """The time within which 99 % of the samples of these devices follow the one before, in ms,
        by the times that the samples have."""
        with self.host.lock:
            begin = len(self.host.samples)
        time.sleep(seconds)
        with self.host.lock:
            came = self.host.samples[begin:]
        last, turns = {}, []
        for sample in came:
            key = (sample.device, sample.name)
            if sample.device in healthy and key in last:
                turns.append(sample.time - last[key])
            last[key] = sample.time
        assert turns, "nothing came"
        return sorted(turns)[int(len(turns) * 0.99)]

    def memory_by_minute(self, minutes):
        """The resident MiB at the end of each minute, printed as they come."""
        begin, noted = time.monotonic(), []
        while len(noted) < minutes:
            while time.monotonic() < begin + 60 * (len(noted) + 1):
                time.sleep(1)
                with self.host.lock:
                    self.host.samples.clear()  # an hour's would not fit into memory
                    self.host.marks.clear()
            noted.append(resident_mib(self.run.pid))
            print(f"minute {len(noted)}: {noted[-1]:.1f} MiB", flush=True)
        return noted

    def stop(self, count):
        """Stops the first PLCs: they keep their connections and answer nothing."""
        for plc in self.plcs[:count]:
            plc.process.send_signal(SIGSTOP)

    def close(self):
        """Ends all of it."""
        self.host.close()
        self.run.close()
        for plc in self.plcs:
            plc.process.send_signal(SIGCONT)
            plc.close()
        self.broker.close()


def mean(numbers):
    """Their mean."""
    return sum(numbers) / len(numbers)


def is_flat(noted):
    """Judges the resident memory of the minutes."""
    first, last = mean(noted[FLAT_FROM:FLAT_UNTIL]), mean(noted[-LAST_MINUTES:])
    most = max(MOST_GROWTH_MIB, MOST_GROWTH * first)
    print(f"minutes {FLAT_FROM + 1} to {FLAT_UNTIL}: {first:.1f} MiB; "
          f"the last {LAST_MINUTES}: {last:.1f} MiB")
    return judge("growth, MiB", last - first, f"<= {most:.1f}", most)


def keeps_others_in_turn(plant, links, seconds):
    """Stops a tenth of the PLCs and judges the turns of the others."""
    healthy = {f"plc {number}-1" for number in range(links // 10, links)}
    before = plant.turns_p99(seconds, healthy)
    plant.stop(links // 10)
    time.sleep(5)
    moved = plant.turns_p99(seconds, healthy) - before
    print(f"p99 of a turn while all answer: {before} ms")
    return judge("p99 of a turn moved by, ms", moved, "<= 10", MOST_MOVED_MS)


def main(links, tags, seconds, minutes):
    """Measures; returns the exit status."""
    most_core, most_mb = GOALS.get(links, (1, 1000))
    with tempfile.TemporaryDirectory() as name:
        plant = PlantLinks(Path(name), links, tags)
        try:
            good = judge("all polled, s", plant.await_all(links, tags), "<= 20", ALL_POLLED_S)
            time.sleep(3)
            good &= judge("share of a core", plant.share_of_core(seconds), f"<= {most_core}",
                          most_core)
            good &= judge("resident MB", resident_mib(plant.run.pid) * MB_OF_MIB, f"<= {most_mb}",
                          most_mb)
            if minutes:
                good &= is_flat(plant.memory_by_minute(minutes))
                good &= judge("share of a core", plant.share_of_core(seconds),
                              f"<= {most_core}", most_core)
            else:
                good &= keeps_others_in_turn(plant, links, seconds)
            with plant.host.lock:
                print(*plant.host.broken[:10], sep="\n")
                good &= not plant.host.broken
        finally:
            plant.close()
    return 0 if good else 1


if __name__ == "__main__":
    if not all(argument.isdigit() for argument in sys.argv[1:]) or len(sys.argv) > 5:
        sys.exit(__doc__)
    NUMBERS = [int(argument) for argument in sys.argv[1:]]
    NUMBERS += (500, 30, 30, 0)[len(NUMBERS):]
    if 0 < NUMBERS[3] < SHORTEST_HOUR:
        sys.exit(__doc__)
    sys.exit(main(*NUMBERS))
