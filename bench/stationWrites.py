#!/usr/bin/python3
"""Writes over a line with losses, spoilt answers and exceptions: is every outcome true?

usage: bench/stationWrites.py [WRITES [SEED]]
  WRITES   how many (default: 10000)
  SEED     of values and faults (default: a new one, which is printed)

Each outcome is compared with the memory of the simulated PLC.
Exit status: 0 every outcome was true, 1 else.
"""

import os
import sys
import tempfile
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
sys.path.insert(0, str(PROJECT / "tests" / "support"))

from lossyWrites import LossyWrites  # pylint: disable=wrong-import-position


def main(writes="10000", seed=None):
    """Writes; returns the exit status."""
    seed = int(seed) if seed else int.from_bytes(os.urandom(4), "big")
    with tempfile.TemporaryDirectory() as folder:
        run = LossyWrites(PROJECT / "build" / "qt5" / "bin", Path(folder), seed)
        try:
            run.run(int(writes))
        finally:
            run.close()
    print(f"seed {seed}, {sum(run.outcomes.values())} writes: {dict(run.outcomes)}")
    print(*run.reasons.most_common(), sep="\n")
    print(*run.found[:20], sep="\n")
    print(f"outcomes that were not true, or missing: {len(run.found)}")
    return 1 if run.found else 0


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
