#!/usr/bin/python3
"""Processor time of an exchange over TCP: kakb-host polls one word as fast as kakb-sim answers.

usage: bench/exchangeCost.py [SECONDS]
  SECONDS   how long (default: 5)

User and system time of the whole process, divided by its exchanges. The simulated PLC's own time is
not in it.
Exit status: 0 at most 30.5 us, 1 else.
"""

import resource
import subprocess
import sys
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "support"))

from simulatedPlc import SimulatedPlc  # pylint: disable=wrong-import-position

PROGRAMS = PROJECT / "build" / "qt5" / "bin"
MOST_US = 30.5


def main(seconds):
    """Measures; returns the exit status."""
    with tempfile.TemporaryDirectory() as name:
        folder = Path(name)
        (folder / "tags.csv").write_text("name,station,area,address,type\na,1,MW,0,uint16\n",
                                         encoding="utf-8")
        plc = SimulatedPlc(PROGRAMS / "kakb-sim", folder, "tcp")
        try:
            before = resource.getrusage(resource.RUSAGE_CHILDREN)
            watch = subprocess.run(
                [PROGRAMS / "kakb-host", "watch", "--tags", "tags.csv", "--link", plc.link,
                 "--every", "0", "--seconds", str(seconds)],
                cwd=folder, check=True, text=True, stdout=subprocess.PIPE)
            after = resource.getrusage(resource.RUSAGE_CHILDREN)
        finally:
            plc.stop()
            plc.close()
        exchanges = plc.report()["requests"]
    used = after.ru_utime - before.ru_utime + after.ru_stime - before.ru_stime
    cost = used / exchanges * 1e6
    print(watch.stdout.splitlines()[-1])
    print(f"{cost:.1f} us of processor time an exchange, {exchanges} exchanges")
    return 0 if cost <= MOST_US else 1


if __name__ == "__main__":
    if not all(argument.isdigit() for argument in sys.argv[1:]) or len(sys.argv) > 2:
        sys.exit(__doc__)
    sys.exit(main(int((sys.argv[1:] or ["5"])[0])))
