"""RabbitMQ nodes of a test's own on loopback ports, which the test can kill and start again."""

import subprocess
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from heldPort import HeldPort

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "cluster.sh"
IS_INSTALLED = Path("/usr/lib/rabbitmq/bin/rabbitmq-server").exists()


class RabbitCluster:
    """Its nodes, from 1 on, take clients from the start on; close() ends them. They end as well when
    the process of the test ends in another way: a guard sees its pipe closed."""

    def __init__(self, folder, nodes=3):
        self.folder = folder / "cluster"
        self.held = list(self._hold_ports(nodes))
        self.guard = subprocess.Popen(
            ["sh", "-c", 'cat; exec "$0" stop "$1"', SCRIPT, self.folder],
            stdin=subprocess.PIPE, start_new_session=True)
        try:
            self.ports = [int(port) for port in self._do("start", nodes).split()]
        except BaseException:
            self.close()
            raise

    def url(self, node):
        """As --mqtt takes it."""
        return f"mqtt://127.0.0.1:{self.ports[node - 1]}"

    def kill(self, node):
        """Ends it without a word to its clients."""
        self._do("kill", node)

    def revive(self, node):
        """Starts it again, and waits until it takes clients."""
        self._do("revive", node)

    def close(self):
        """Ends all nodes."""
        self.guard.stdin.close()
        self.guard.wait()
        for port in self.held:
            port.close()

    def _hold_ports(self, nodes):
        """Ports that stay the cluster's while their node is down; the script takes what it finds."""
        (self.folder / "ports").mkdir(parents=True)
        kinds = [(kind, node) for kind in ("amqp", "mqtt", "dist") for node in range(1, nodes + 1)]
        for kind, node in [("epmd", 0), *kinds]:
            port = HeldPort()
            (self.folder / "ports" / f"{kind}-{node}").write_text(f"{port.number}\n", "utf-8")
            yield port

    def _do(self, verb, number):
        return subprocess.run([SCRIPT, verb, self.folder, str(number)], check=True,
                              stdout=subprocess.PIPE, text=True).stdout


class RabbitBroker:
    """A cluster, to be used as a MosquittoBroker is.

    `url` is that of the first node and `port` that of the last one: a station and its host are at
    different nodes."""

    def __init__(self, folder, nodes):
        self.cluster = RabbitCluster(folder, nodes)
        self.nodes = range(1, nodes + 1)
        self.port, self.url = self.cluster.ports[-1], self.cluster.url(1)

    def kill(self):
        """Ends all nodes without a word to their clients."""
        for node in self.nodes:
            self.cluster.kill(node)

    def start(self):
        """Starts all nodes again, at once: a node that was not the last one waits for the others."""
        with ThreadPoolExecutor() as threads:
            list(threads.map(self.cluster.revive, self.nodes))

    def close(self):
        """Ends them."""
        self.cluster.close()
