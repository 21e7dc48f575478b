"""RabbitMQ nodes of a test's own on loopback ports, which the test can kill and start again."""

import subprocess
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[2] / "scripts" / "cluster.sh"
IS_INSTALLED = Path("/usr/lib/rabbitmq/bin/rabbitmq-server").exists()


class RabbitCluster:
    """Its nodes, from 1 on, take clients from the start on; close() ends them. They end as well when
    the process of the test ends in another way: a guard sees its pipe closed."""

    def __init__(self, folder, nodes=3):
        self.folder = folder / "cluster"
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

    def _do(self, verb, number):
        return subprocess.run([SCRIPT, verb, self.folder, str(number)], check=True,
                              stdout=subprocess.PIPE, text=True).stdout


class RabbitBroker:
    """One node, to be used as a MosquittoBroker is."""

    def __init__(self, folder):
        self.cluster = RabbitCluster(folder, 1)
        self.port, self.url = self.cluster.ports[0], self.cluster.url(1)

    def kill(self):
        """Ends it without a word to its clients."""
        self.cluster.kill(1)

    def start(self):
        """Starts it again."""
        self.cluster.revive(1)

    def close(self):
        """Ends it."""
        self.cluster.close()
