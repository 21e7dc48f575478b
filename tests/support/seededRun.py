"""A long run of random faults, in a folder of its own and with a seed that is printed."""

import os
import tempfile
from pathlib import Path

PROGRAMS = Path(os.environ.get(
    "KAKB_PROGRAMS", Path(__file__).resolve().parents[2] / "build" / "qt5" / "bin"))
MOST_SHOWN = 20


def seeded_run(make, work, seed, summary, verdict):
    """Makes a run of PROGRAMS, a folder and a seed, and does its work; returns the exit status.

    The run has what it found wrong in `found`. A seed of None is drawn."""
    seed = int(seed) if seed else int.from_bytes(os.urandom(4), "big")
    with tempfile.TemporaryDirectory() as folder:
        run = make(PROGRAMS, Path(folder), seed)
        try:
            work(run)
        finally:
            run.close()
    print(f"seed {seed}, {summary(run)}")
    print(*run.found[:MOST_SHOWN], sep="\n")
    print(f"{verdict}: {len(run.found)}")
    return 1 if run.found else 0
