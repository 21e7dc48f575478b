#!/usr/bin/python3
"""Minutes of faults: does the station ever show a value as good that was not true?

usage: bench/stationFaults.py [MINUTES [SEED]]
  MINUTES   how long (default: 30)
  SEED      of the faults (default: a new one, which is printed)

A relay is frozen and cut, both programs are stopped, a station falls silent, addresses are refused,
and the line loses, doubles and delays answers.
Exit status: 0 no value was wrong, 1 else.
"""

import os
import sys
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "support"))

from stationFaults import StationFaults  # pylint: disable=wrong-import-position


def main(minutes="30", seed=None):
    """Runs the faults; returns the exit status."""
    seed = int(seed) if seed else int.from_bytes(os.urandom(4), "big")
    with tempfile.TemporaryDirectory() as folder:
        run = StationFaults(PROJECT / "build" / "qt5" / "bin", Path(folder), seed)
        try:
            run.run(60 * float(minutes))
        finally:
            run.close()
    print(f"seed {seed}, {minutes} min: {run.counts}")
    print(*run.found[:20], sep="\n")
    print(f"values shown as good and not true: {len(run.found)}")
    return 1 if run.found else 0


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.replace(".", "", 1).isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
