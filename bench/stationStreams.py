#!/usr/bin/env python3
"""What many clients of the station's event stream cost: 1,000 tags that change ten times a second.

usage: bench/stationStreams.py [PROGRAM_FOLDER [SECONDS]]
  PROGRAM_FOLDER   default build/qt5/bin
  SECONDS          for each row, 2 or more (default 10)

The processor time is the station's own, so that other programs hardly matter. The first client's
memory is mostly that of the messages, which all clients share. A client's own memory is what each
further one adds.

Exit status: 0 50 clients cost at most 10 % of a core and 64 kB each, and those that read get ten
messages a second without a gap also beside clients that stopped; 1 they did not.
"""

import json
import sys
import tempfile
import time
from pathlib import Path

from processFigures import cpu_seconds, ended, resident_kb, started

HERE = Path(__file__).resolve().parent
TAGS = 1000
FIRST_MARKER = 3000  # the number of MW 0
MOST_CORE_PERCENT = 10
MOST_CLIENT_KB = 64
ROWS = ((0, 0), (1, 0), (50, 0), (25, 25))  # clients that read, clients that stopped


class Bench:
    """A simulated PLC whose words count up, and a station that reads them."""

    def __init__(self, programs, folder):
        signals = [argument for word in range(TAGS)
                   for argument in ("--signal", f"1:MW:{FIRST_MARKER + word}:counter:50:60000")]
        self.plc, link = started([programs / "kakb-sim", "--tcp", "0", *signals])
        rows = [f"w{word},1,MW,{2 * word},uint16" for word in range(TAGS)]
        tags = folder / "tags.csv"
        tags.write_text("\n".join(["name,station,area,address,type", *rows, ""]), encoding="ascii")
        self.station, url = started([
            programs / "kakb-station", "--listen", "127.0.0.1:0", "--state", folder, "--no-history",
            "--link", link, "--tags", tags])
        self.address = url.removeprefix("http://").rstrip("/")
        time.sleep(2)

    def close(self):
        """Ends both."""
        ended(self.station)
        ended(self.plc)

    def row(self, reading, stopped, seconds):
        """The share of a core in percent, the resident kB, and what the clients counted."""
        pid = self.station.pid
        if not reading:
            before = cpu_seconds(pid)
            time.sleep(seconds)
            return 100 * (cpu_seconds(pid) - before) / seconds, resident_kb(pid), None
        clients, _ = started([sys.executable, HERE / "streamClients.py", self.address, reading,
                              stopped, seconds])
        before, begin = cpu_seconds(pid), time.monotonic()
        counted = json.loads(clients.stdout.readline())
        percent = 100 * (cpu_seconds(pid) - before) / (time.monotonic() - begin)
        resident = resident_kb(pid)
        ended(clients)
        time.sleep(1)
        return percent, resident, counted


def is_reached(counted, percent, client_kb):
    """Whether a row with clients keeps the goals."""
    ten_a_second = 0.95 * 10 * counted["seconds"]
    return (percent <= MOST_CORE_PERCENT and client_kb <= MOST_CLIENT_KB and
            counted["fewest"] >= ten_a_second and counted["gaps"] == 0)


def main(programs="build/qt5/bin", seconds="10"):
    """Prints a row for each number of clients; returns the exit status."""
    status = 0
    with tempfile.TemporaryDirectory() as folder:
        bench = Bench(Path(programs).resolve(), Path(folder))
        try:
            print("reading stopped    core  resident  kB/client  messages/s of one  gaps   MB/s")
            first_kb = 0
            for reading, stopped in ROWS:
                percent, resident, counted = bench.row(reading, stopped, float(seconds))
                line = f"{reading:7} {stopped:7} {percent:5.1f} % {resident:6} kB"
                if counted:
                    first_kb = first_kb or resident
                    client_kb = (resident - first_kb) / max(1, reading + stopped - 1)
                    fewest, most = (counted[key] / counted["seconds"] for key in ("fewest", "most"))
                    line += (f"  {client_kb:9.1f}  {fewest:8.2f} to {most:5.2f}  {counted['gaps']:4}"
                             f"  {counted['bytes'] / counted['seconds'] / 1e6:5.1f}")
                    if reading + stopped > 1 and not is_reached(counted, percent, client_kb):
                        status = 1
                print(line, flush=True)
        finally:
            bench.close()
    return status


if __name__ == "__main__":
    if len(sys.argv) > 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
