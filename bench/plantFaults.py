#!/usr/bin/python3
"""Kills of broker, network and station under 500 changes a second: is a sample lost, doubled, or out of
order?

usage: bench/plantFaults.py [KILLS [SEED]]
  KILLS   of each of the three (default: 100)
  SEED    of the faults (default: a new one, which is printed)

Every row of the station's history must have come to a Sparkplug host; a sample comes twice only as
history, in another session, and when it went out behind the last mark that the broker had acknowledged.
The orders that hold are those of tests/support/sampleOrder.py. KAKB_PROGRAMS names the folder of the
programs when they are not those of this tree.
Exit status: 0 nothing was wrong, 1 else.
"""

import os
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
os.environ.setdefault("KAKB_PROGRAMS", str(PROJECT / "build" / "qt5" / "bin"))
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
from plantFaults import PlantFaults, summary
from seededRun import seeded_run


def main(kills="100", seed=None):
    """Runs the faults; returns the exit status."""
    return seeded_run(PlantFaults, lambda run: run.run(int(kills)), seed,
                      lambda run: f"{kills} kills each: {summary(run)}", "samples wrong")


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
