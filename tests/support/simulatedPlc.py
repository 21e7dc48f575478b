"""kakb-sim as a process, and the bytes on its line without a host in between."""

import os
import select
import signal
import socket
import subprocess
import time
import tty
from pathlib import Path

from processes import PATIENCE_S, Program

LINKS = ("pty", "tcp")
CHUNK_BYTES = 4096
LOCKS = Path("/run/lock")


def forget_locks(terminal):
    """Takes away the locks of a new pseudo-terminal. The system gives its number again and again: they
    are of programs that were killed, whose process numbers others may have by now."""
    name = "LCK.." + terminal.removeprefix("/dev/").replace("/", "_")
    for lock in (LOCKS / name, *LOCKS.glob(f"{name}.rmlock*")):
        lock.unlink(missing_ok=True)


class SimulatedPlc:
    """kakb-sim on a pseudo-terminal ("pty"), a serial port ("serial") or a TCP port ("tcp").

    As a context it ends with status 0; then memory() and report() say what became of it."""

    def __init__(self, program, folder, kind, *arguments, port=0, prefix=()):
        self.folder = folder
        self.kind = kind
        self.master = self.slave = None
        for old in ("dump", "report"):
            (folder / old).unlink(missing_ok=True)
        command = [*prefix, program, *self._line_arguments(port), "--dump", "dump",
                   "--report", "report", *arguments]
        self.run = Program(command, folder, stdin=subprocess.PIPE)
        self.run.await_that(lambda: self.run.out.endswith("\n"))
        self.address = self.run.lines[0]
        if kind == "pty":
            forget_locks(self.address)
        self.link = self.address if kind == "tcp" else f"serial:{folder / 'plc'}"

    def _line_arguments(self, port):
        """A serial port is one end of a pair of terminals; the other end is the host's."""
        if self.kind == "tcp":
            return ["--tcp", str(port)]
        if self.kind == "pty":
            return ["--link-path", self.folder / "plc"]
        self.master, self.slave = os.openpty()
        return ["--serial", os.ttyname(self.slave)]

    @property
    def port(self):
        """The number of the TCP port; elsewhere 0."""
        return int(self.address.split(",")[-1]) if self.kind == "tcp" else 0

    def __enter__(self):
        return self

    def __exit__(self, failed, *_):
        try:
            if not failed:
                self.stop()
        finally:
            self.close()

    def stop(self, number=signal.SIGTERM):
        """Ends the PLC, which must end well; without a signal by the end of its standard input."""
        if self.run.status is None:
            if number:
                self.run.process.send_signal(number)
            self.run.process.stdin.close()
            assert self.run.wait(PATIENCE_S) == 0, str(self.run)

    def kill(self):
        """Ends the PLC as a crash does: nothing is cleaned up."""
        self.run.signal(signal.SIGKILL, PATIENCE_S)
        (self.folder / "plc").unlink(missing_ok=True)

    def close(self):
        """Releases everything; kills the PLC if it still runs."""
        self.run.process.stdin.close()
        self.run.close()
        for descriptor in (self.master, self.slave):
            if descriptor is not None:
                os.close(descriptor)
        self.master = self.slave = None

    def memory(self):
        """All that is not 0 in the PLC that was stopped: lines "STATION AREA REGISTER VALUE"."""
        return (self.folder / "dump").read_text(encoding="utf-8").splitlines()

    def report(self):
        """The counts of the PLC that was stopped."""
        lines = (self.folder / "report").read_text(encoding="utf-8").splitlines()
        return {key: int(value) for key, value in map(str.split, lines)}


class RawLine:
    """The host's end of a PLC's line; received bytes are kept with the moment they were seen."""

    def __init__(self, plc):
        self.owned = None
        self.descriptor = plc.master if plc.kind == "serial" else self._opened(plc)
        self.coming = b""
        self.times = []

    def _opened(self, plc):
        if plc.kind == "pty":
            self.owned = os.open(plc.address, os.O_RDWR | os.O_NOCTTY)
            tty.setraw(self.owned)
        else:
            with socket.create_connection(("127.0.0.1", plc.port)) as connection:
                connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
                self.owned = connection.detach()
        return self.owned

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.owned is not None:
            os.close(self.owned)

    def send(self, *frames):
        """All frames at once."""
        os.write(self.descriptor, b"".join(frames))

    def has_bytes(self, seconds):
        """Whether the PLC sends something within so many seconds."""
        return bool(select.select([self.descriptor], [], [], max(0, seconds))[0])

    def drop_answer(self, seconds):
        """Takes what comes within so many seconds, if something comes."""
        if self.has_bytes(seconds):
            os.read(self.descriptor, CHUNK_BYTES)

    def receive(self, count):
        """The next so many bytes, and when the last byte was seen."""
        deadline = time.monotonic() + PATIENCE_S
        while len(self.coming) < count:
            assert self.has_bytes(deadline - time.monotonic()), (
                f"{count} bytes are due, this came: {self.coming.hex(' ')}")
            chunk = os.read(self.descriptor, CHUNK_BYTES)
            assert chunk, "the PLC has closed the line"
            self.coming += chunk
            self.times += [time.monotonic()] * len(chunk)
        received, seen = self.coming[:count], self.times[count - 1]
        self.coming, self.times = self.coming[count:], self.times[count:]
        return received, seen

    def expect(self, wanted):
        """These bytes and no others come next; returns when the last byte was seen."""
        received, seen = self.receive(len(wanted))
        assert received == wanted, f"{wanted.hex(' ')} is due, this came: {received.hex(' ')}"
        return seen

    def exchange(self, request, reply):
        """One request and its reply; when the request was sent and when the reply was there."""
        sent = time.monotonic()
        self.send(request)
        return sent, self.expect(reply)
