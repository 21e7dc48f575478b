#!/usr/bin/python3
"""A cluster of three RabbitMQ nodes, of which the one in use is killed again and again under 500 changes
a second: does a station with all three in its list go on, and is a sample lost?

usage: bench/plantCluster.py [KILLS [SEED]]
  KILLS   of the node that the station is connected to (default: 10)
  SEED    of the pauses between them (default: a new one, which is printed)

The host is at the third node, which stays; the station is sent on from there by a cut of its network.
Exit status: 0 nothing was wrong, 1 else.
"""

import os
import sys
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
os.environ["KAKB_PROGRAMS"] = str(PROJECT / "build" / "qt5" / "bin")
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
from clusterFaults import ClusterFaults
from plantFaults import summary
from seededRun import seeded_run


def main(kills="10", seed=None):
    """Runs the kills; returns the exit status."""
    return seeded_run(ClusterFaults, lambda run: run.run(int(kills)), seed,
                      lambda run: f"{kills} nodes in use killed: {summary(run)}", "samples wrong")


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
