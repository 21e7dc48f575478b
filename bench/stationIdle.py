#!/usr/bin/env python3
"""What the station costs while nothing happens: one link, one client of the stream as a page is one.

usage: bench/stationIdle.py [PROGRAM_FOLDER [SECONDS]]
  PROGRAM_FOLDER   default build/qt5/bin
  SECONDS          how long each program is measured, 2 or more (default 20)

40 words at rest are read from a simulated PLC over TCP, every 100 ms. `kakb-host watch` reads the
same words beside the station, from a PLC of its own, in the same time.

Exit status: 0 the station has at most 16 MiB resident and takes at most 1 % of a core more than
`kakb-host watch`; 1 it does not.
"""

import subprocess
import sys
import tempfile
import time
from pathlib import Path

from processFigures import cpu_seconds, ended, resident_kb, started

HERE = Path(__file__).resolve().parent
TAGS = 40
MOST_KB = 16 * 1024
MOST_MORE_PERCENT = 1
START_S = 3


def percent(used, seconds):
    """A share of a core."""
    return 100 * used / seconds


def main(programs="build/qt5/bin", seconds="20"):
    """Prints a row for each program; returns the exit status."""
    programs, seconds = Path(programs).resolve(), float(seconds)
    with tempfile.TemporaryDirectory() as folder:
        tags = Path(folder) / "tags.csv"
        rows = [f"w{word},1,MW,{2 * word},uint16" for word in range(TAGS)]
        tags.write_text("\n".join(["name,station,area,address,type", *rows, ""]), encoding="ascii")
        plcs = [started([programs / "kakb-sim", "--tcp", "0"]) for _ in range(2)]
        links = [link for _, link in plcs]
        station, url = started([programs / "kakb-station", "--listen", "127.0.0.1:0", "--state",
                                folder, "--link", links[0], "--tags", tags])
        watch = subprocess.Popen(
            [programs / "kakb-host", "watch", "--link", links[1], "--tags", tags, "--every",
             "100ms"], stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
        address = url.removeprefix("http://").rstrip("/")
        client, _ = started([sys.executable, HERE / "streamClients.py", address, 1, 0, 3600])
        running = [client, station, watch, *(plc for plc, _ in plcs)]
        try:
            time.sleep(START_S)
            before, begin = [cpu_seconds(one.pid) for one in (station, watch)], time.monotonic()
            time.sleep(seconds)
            passed = time.monotonic() - begin
            used = [percent(cpu_seconds(one.pid) - was, passed)
                    for one, was in zip((station, watch), before)]
            resident = [resident_kb(one.pid) for one in (station, watch)]
        finally:
            for one in running:
                ended(one)
    for name, share, size in zip(("kakb-station", "kakb-host watch"), used, resident):
        print(f"{name:16} {share:5.2f} % of a core {size:6} kB resident")
    return 0 if resident[0] <= MOST_KB and used[0] - used[1] <= MOST_MORE_PERCENT else 1


if __name__ == "__main__":
    if len(sys.argv) > 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
