"""Kills of the cluster's node that a station is connected to, under 500 changes a second."""

import time

from plantFaults import DEVICE, PlantFaults
from rabbitCluster import RabbitCluster
from sparkplugHost import SparkplugHost
from tcpRelay import TcpRelay

RETURN_S = 120  # of a station whose server was killed


class ClusterFaults(PlantFaults):
    """The host listens at the third node, which stays: what the cluster gets, the host gets. The
    station comes there by a relay, whose cut sends it on to the first node.

    A killed node is started again before the next one goes, so that most of the cluster is always
    there."""

    def run(self, kills, kinds=()):
        """Kills so many nodes in use, and judges."""
        self.host.await_that(lambda host: DEVICE in host.born, RETURN_S)
        for _ in range(kills):
            if self._node() == 3:
                self._end_session("cut", self.relay.cut)
                self.relay.resume()
            node = self._node()
            self._end_session("node", lambda node=node: self.cluster.kill(node))
            self.cluster.revive(node)
        self._settle()
        self._judge()

    def _end_session(self, kind, fault):
        """Makes the fault, and waits until the station was born again elsewhere."""
        time.sleep(self.random.uniform(2, 5))
        births = self.host.births
        self.cuts.append(time.time())
        fault()
        self.counts[kind] += 1
        self.host.await_that(lambda host: host.births > births and DEVICE in host.born, RETURN_S)

    def _node(self):
        return self.servers.index(self.station.get("/api/v1/plant").json[0]["server"]) + 1

    def _open_broker(self):
        self.cluster = RabbitCluster(self.folder)
        self.relay = TcpRelay(("127.0.0.1", self.cluster.ports[2]))
        self.host = SparkplugHost(self.cluster.ports[2], keep=False)
        return [self.cluster.url(1), self.cluster.url(2), f"mqtt://127.0.0.1:{self.relay.port}"]

    def _close_broker(self):
        self.relay.close()
        self.cluster.close()
