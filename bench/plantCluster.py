#!/usr/bin/python3
"""A cluster of three RabbitMQ nodes that are killed one after the other under 500 changes a second: does
a station with all three in its list go on, and is a sample lost?

usage: bench/plantCluster.py [KILLS]
  KILLS   of the first two nodes in turn (default: 4)

The host listens at the third node, which stays: what the cluster gets, the host gets. A killed node is
started again before the next one goes, since a cluster without a majority takes no client.
Exit status: 0 nothing was wrong, 1 else.
"""

import os
import subprocess
import sys
import time
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
os.environ["KAKB_PROGRAMS"] = str(PROJECT / "build" / "qt5" / "bin")
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
from plantFaults import DEVICE, PlantFaults, summary
from seededRun import seeded_run
from sparkplugHost import SparkplugHost

CLUSTER = PROJECT / "scripts" / "cluster.sh"
RETURN_S = 60  # of a station whose server was killed


class PlantCluster(PlantFaults):
    """Brokers that are nodes of a cluster."""

    def run(self, kills, kinds=()):
        """Kills so many nodes, and judges."""
        self.host.await_that(lambda host: DEVICE in host.born, RETURN_S)
        for kill in range(kills):
            time.sleep(self.random.uniform(2, 5))
            node = str(kill % 2 + 1)
            births = self.host.births
            was_used = self._server() == self.servers[int(node) - 1]
            self.cuts.append(time.time())
            self._cluster("kill", node)
            self.counts["node"] += 1
            if was_used:
                self.counts["node in use"] += 1
                self.host.await_that(lambda host, births=births: host.births > births
                                     and DEVICE in host.born, RETURN_S)
            self._cluster("revive", node)
        self._settle()
        self._judge()

    def _server(self):
        return self.station.get("/api/v1/plant").json[0]["server"]

    def _cluster(self, *words):
        done = subprocess.run([CLUSTER, words[0], self.folder / "cluster", *words[1:]], check=True,
                              stdout=subprocess.PIPE, text=True)
        return done.stdout.split()

    def _open_broker(self):
        ports = self._cluster("start")
        self.host = SparkplugHost(int(ports[2]), keep=False)
        return [f"mqtt://127.0.0.1:{port}" for port in ports]

    def _close_broker(self):
        self._cluster("stop")


def main(kills="4"):
    """Runs the kills; returns the exit status."""
    return seeded_run(PlantCluster, lambda run: run.run(int(kills)), None,
                      lambda run: f"{kills} nodes killed: {summary(run)}", "samples wrong")


if __name__ == "__main__":
    if len(sys.argv) > 2 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
