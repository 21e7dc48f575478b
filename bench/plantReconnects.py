#!/usr/bin/python3
"""Sessions that a broker cuts at random packets, between stops and kills of the station: has each
CONNECT the next bdSeq, and each birth that of its session's will?

usage: bench/plantReconnects.py [RECONNECTS [RESTARTS [SEED]]]
  RECONNECTS   sessions that the broker cuts (default: 900)
  RESTARTS     sessions that a stop or a kill of the station ends (default: 100)
  SEED         of the ends (default: a new one, which is printed)

Exit status: 0 nothing was wrong, 1 else.
"""

import os
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
os.environ["KAKB_PROGRAMS"] = str(PROJECT / "build" / "qt5" / "bin")
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
from seededRun import seeded_run
from sessionCuts import SessionCuts, summary


def main(reconnects="900", restarts="100", seed=None):
    """Runs the sessions; returns the exit status."""
    return seeded_run(SessionCuts, lambda run: run.run(int(reconnects), int(restarts)), seed,
                      summary, "numbers wrong")


if __name__ == "__main__":
    if len(sys.argv) > 4 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
