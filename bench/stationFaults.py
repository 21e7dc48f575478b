#!/usr/bin/python3
"""Minutes of faults: does the station ever show a value as good that was not true?

usage: bench/stationFaults.py [MINUTES [SEED]]
  MINUTES   how long (default: 30)
  SEED      of the faults (default: a new one, which is printed)

A relay is frozen and cut, both programs are stopped, a station falls silent, addresses are refused,
and the line loses, doubles and delays answers.
Exit status: 0 no value was wrong, 1 else.
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "support"))

# pylint: disable=wrong-import-position
from stationFaults import StationFaults
from seededRun import seeded_run


def main(minutes="30", seed=None):
    """Runs the faults; returns the exit status."""
    return seeded_run(StationFaults, lambda run: run.run(60 * float(minutes)), seed,
                      lambda run: f"{minutes} min: {run.counts}",
                      "values shown as good and not true")


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.replace(".", "", 1).isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
