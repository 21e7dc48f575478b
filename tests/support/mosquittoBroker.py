"""A Mosquitto of a test's own on a loopback port, which the test can kill and start again."""

import shutil
import socket
import subprocess

from heldPort import HeldPort
from processes import PATIENCE_S, eventually

MOSQUITTO = shutil.which("mosquitto") or "/usr/sbin/mosquitto"


class MosquittoBroker:
    """Listens from the start on; close() ends it."""

    def __init__(self, folder, lines=("allow_anonymous true",)):
        self.held = HeldPort()  # the broker's own while it is down, too
        self.port = self.held.number
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
        self.stop()
        self.held.close()

    def stop(self):
        """Ends it; it may be started again."""
        if self.process.poll() is None:
            self.process.terminate()
            self.process.wait()

    def _listens(self):
        try:
            socket.create_connection(("127.0.0.1", self.port), 1).close()
        except OSError:
            return False
        return True
