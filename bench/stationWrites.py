#!/usr/bin/python3
"""Writes over a line with losses, spoilt answers and exceptions: is every outcome true?

usage: bench/stationWrites.py [WRITES [SEED]]
  WRITES   how many (default: 10000)
  SEED     of values and faults (default: a new one, which is printed)

Each outcome is compared with the memory of the simulated PLC.
Exit status: 0 every outcome was true, 1 else.
"""

import sys
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "support"))

# pylint: disable=wrong-import-position
from lossyWrites import LossyWrites
from seededRun import seeded_run


def summary(run):
    """The outcomes, and each reason with its number, the most frequent first."""
    reasons = [f"{number} {reason}" for reason, number in run.reasons.most_common() if reason]
    return "\n".join([f"{sum(run.outcomes.values())} writes: {dict(run.outcomes)}", *reasons])


def main(writes="10000", seed=None):
    """Writes; returns the exit status."""
    return seeded_run(LossyWrites, lambda run: run.run(int(writes)), seed, summary,
                      "outcomes that were not true, or missing")


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
