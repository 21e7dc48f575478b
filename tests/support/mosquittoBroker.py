"""A Mosquitto of a test's own on a free loopback port, which the test can kill and start again."""

import shutil
import socket
import subprocess

from processes import PATIENCE_S, eventually

MOSQUITTO = shutil.which("mosquitto") or "/usr/sbin/mosquitto"


def free_port():
    """A port of 127.0.0.1 that nobody listens on now."""
    with socket.create_server(("127.0.0.1", 0)) as listener:
        return listener.getsockname()[1]


class MosquittoBroker:
    """Listens from the start on; close() ends it."""

    def __init__(self, folder, lines=("allow_anonymous true",)):
        self.port = free_port()
        self.config = folder / f"mosquitto-{self.port}.conf"
        self.output = folder / f"mosquitto-{self.port}.log"
        self.config.write_text("\n".join([f"listener {self.port} 127.0.0.1", "user root",
                                          "max_queued_messages 0", *lines]) + "\n", "utf-8")
        self.process = None
        self.start()

    @property
    def url(self):
        """As --mqtt takes it."""
        return f"mqtt://127.0.0.1:{self.port}"

    def start(self):
        """Starts it, and waits until it takes connections."""
        with open(self.output, "ab") as output:
            self.process = subprocess.Popen([MOSQUITTO, "-c", self.config], stdout=output,
                                            stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL)
        assert eventually(self._listens, PATIENCE_S), self.output.read_text("utf-8")

    def kill(self):
        """Ends it without a word to its clients."""
        self.process.kill()
        self.process.wait()

    def close(self):
        """Ends it."""
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait()

    def _listens(self):
        try:
            socket.create_connection(("127.0.0.1", self.port), 1).close()
        except OSError:
            return False
        return True
