"""A simulated PLC and the bytes on its line, without a host in between."""

import contextlib
import os
import select
import socket
import subprocess
import tempfile
import time
import tty
from pathlib import Path

from pymodbus.utilities import computeCRC

SECONDS_TO_ANSWER = 30
CHUNK_BYTES = 4096


def frame(text):
    """Bytes from hex digits, with their checksum behind them."""
    body = bytes.fromhex(text)
    return body + computeCRC(body).to_bytes(2, "big")


class Line:
    """The host's end of it; what comes is kept with the moment at which it was seen."""

    def __init__(self, descriptor):
        self.descriptor = descriptor
        self.coming = b""
        self.times = []

    def send(self, *frames):
        """All at once."""
        os.write(self.descriptor, b"".join(frames))

    def receive(self, count):
        """The next so many bytes, and when the last of them was seen."""
        deadline = time.monotonic() + SECONDS_TO_ANSWER
        while len(self.coming) < count:
            left = deadline - time.monotonic()
            if left <= 0 or not select.select([self.descriptor], [], [], left)[0]:
                raise AssertionError(f"{count} bytes are due, this came: {self.coming.hex(' ')}")
            chunk = os.read(self.descriptor, CHUNK_BYTES)
            self.coming += chunk
            self.times += [time.monotonic()] * len(chunk)
        received, seen = self.coming[:count], self.times[count - 1]
        self.coming, self.times = self.coming[count:], self.times[count:]
        return received, seen

    def expect(self, wanted):
        """These bytes and no others come next; the moment at which they were all there."""
        received, seen = self.receive(len(wanted))
        assert received == wanted, f"{wanted.hex(' ')} is due, this came: {received.hex(' ')}"
        return seen

    def exchange(self, request, reply):
        """One request and its reply; when it was sent and when the reply was there."""
        sent = time.monotonic()
        self.send(request)
        return sent, self.expect(reply)


class Plc:
    """A simulated PLC as a process of its own."""

    def __init__(self, programs, kind, *arguments):
        self.kept = contextlib.ExitStack()
        folder = self.kept.enter_context(tempfile.TemporaryDirectory())
        self.report_file = Path(folder) / "report"
        self.master = None
        self.process = subprocess.Popen(
            [Path(programs) / "kakb-sim", *self.link_arguments(kind), "--until-stdin-ends",
             "--report", self.report_file, *arguments],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.line = Line(self.opened(self.process.stdout.readline().strip()))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.wait(SECONDS_TO_ANSWER)
        self.process.stdout.close()
        self.kept.close()

    def link_arguments(self, kind):
        """A serial port is one end of a pair of terminals; the other one is the host's."""
        if kind == "tcp":
            return ["--tcp", "0"]
        if kind == "pty":
            return []
        self.master, slave = os.openpty()
        self.kept.callback(os.close, self.master)
        self.kept.callback(os.close, slave)
        return ["--serial", os.ttyname(slave)]

    def opened(self, address):
        """The host's end of the line that the PLC names."""
        assert address, "kakb-sim says no address"
        if self.master is not None:
            return self.master
        if address.startswith("tcp:"):
            host, port = address[len("tcp:"):].split(",")
            connection = socket.create_connection((host, int(port)))
            connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            self.kept.callback(connection.close)
            return connection.fileno()
        terminal = os.open(address, os.O_RDWR | os.O_NOCTTY)
        self.kept.callback(os.close, terminal)
        tty.setraw(terminal)
        return terminal

    def expect_report(self, **counts):
        """Ends the PLC and compares these counts of its report."""
        self.process.stdin.close()
        self.process.wait(SECONDS_TO_ANSWER)
        lines = self.report_file.read_text(encoding="utf-8").splitlines()
        report = {key: int(value) for key, value in map(str.split, lines)}
        found = {key: report.get(key) for key in counts}
        assert found == counts, f"the report says {found}, not {counts}"
