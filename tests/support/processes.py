"""Programs that a test starts: their output, their end, and waits on events with a time limit."""

import json
import os
import re
import select
import shlex
import signal
import subprocess
import tempfile
import time

PATIENCE_S = 20  # for what comes at once on an idle machine
POLL_S = 0.01
# A sanitizer makes a program some times slower: limits of what is a moment otherwise grow by this.
SLOWER = float(os.environ.get("KAKB_SLOWER", "1"))
SANITIZER_REPORT = re.compile(r"Sanitizer: |runtime error: ")


def eventually(condition, seconds=PATIENCE_S):
    """Whether the condition becomes true within so many seconds."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            return False
        time.sleep(POLL_S)
    return True


def wait_until(moment):
    """For what the clock alone decides; the moment is one of time.monotonic()."""
    time.sleep(max(0, moment - time.monotonic()))


def ends(pid, seconds):
    """Whether a process ends within so many seconds; it need not be a child of the test."""
    try:
        descriptor = os.pidfd_open(pid)
    except ProcessLookupError:
        return True
    try:
        return bool(select.select([descriptor], [], [], seconds)[0])
    finally:
        os.close(descriptor)


def child_of(process, name):
    """The process id of the only child of that name; None: there is none."""
    found = subprocess.run(["pgrep", "-P", str(process.pid), "-x", name], check=False, text=True,
                           stdout=subprocess.PIPE).stdout.split()
    assert len(found) < 2, f"{len(found)} processes {name}"
    return int(found[0]) if found else None


class Program:
    """A started program.

    Its standard output and error go to files, so that a full pipe never holds it, unless the test
    gives other descriptors."""

    def __init__(self, command, folder, stdout=None, stderr=None, stdin=subprocess.DEVNULL):
        self.command = shlex.join(map(str, command))
        self.out_file, self.err_file = (tempfile.TemporaryFile(dir=folder) for _ in range(2))
        self.started = time.monotonic()
        self.milliseconds = None
        self.process = subprocess.Popen(
            [str(word) for word in command], cwd=folder, stdin=stdin,
            stdout=self.out_file if stdout is None else stdout,
            stderr=self.err_file if stderr is None else stderr)
        self.pid = self.process.pid

    @property
    def status(self):
        """The exit status; None while it runs, -N after signal N."""
        return self.process.returncode

    @property
    def out(self):
        """All of standard output until now."""
        return _text(self.out_file)

    @property
    def err(self):
        """All of standard error until now."""
        return _text(self.err_file)

    @property
    def lines(self):
        """The lines of standard output."""
        return self.out.splitlines()

    @property
    def errors(self):
        """The lines of standard error."""
        return self.err.splitlines()

    @property
    def objects(self):
        """The JSON objects on the lines of standard output."""
        return [json.loads(line) for line in self.lines]

    def __str__(self):
        shown = [f"{self.command}: status {self.status}, {self.milliseconds} ms"]
        shown += ["stdout: " + line for line in self.lines]
        shown += ["stderr: " + line for line in self.errors]
        return "\n".join(shown)

    def wait(self, seconds):
        """The exit status; fails when the program does not end within so many seconds."""
        if self.status is None:
            assert ends(self.pid, seconds), f"does not end within {seconds} s: {self}"
            self.process.wait()
            self.milliseconds = round(1000 * (time.monotonic() - self.started))
        return self.status

    def await_that(self, condition, seconds=PATIENCE_S):
        """Waits until the condition is true; fails when it does not become true, or the program
        has ended before."""
        def settled():
            return condition() or self.process.poll() is not None
        assert eventually(settled, seconds) and condition(), f"never came true: {self}"

    def await_lines(self, *patterns, seconds=PATIENCE_S):
        """Waits until each pattern matches a line of standard output."""
        self.await_that(lambda: all(matching(self.lines, pattern) for pattern in patterns), seconds)

    def await_request(self):
        """Waits until a program with --trace has sent a request."""
        self.await_that(lambda: matching(self.errors, " > "))

    def signal(self, number, seconds):
        """Sends a signal that ends the program; milliseconds then count from the signal."""
        self.started = time.monotonic()
        self.process.send_signal(number)
        return self.wait(seconds)

    def close(self):
        """Kills the program if it still runs; fails when a sanitizer has found something in it.

        Closing it again does nothing."""
        if self.err_file.closed:
            return
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        self.process.wait()
        report = str(self) if SANITIZER_REPORT.search(self.err) else None
        for file in (self.out_file, self.err_file):
            file.close()
        assert not report, report


def matching(lines, pattern):
    """The lines that match."""
    return [line for line in lines if re.search(pattern, line)]


def _text(file):
    """What is in a file, without moving the place where its writer goes on."""
    size = os.fstat(file.fileno()).st_size
    return os.pread(file.fileno(), size, 0).decode("utf-8", "replace")
