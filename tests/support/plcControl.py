"""The control socket of kakb-sim, and a record of what was true in the simulated PLC and when."""

import math
import socket
import threading
import time
from bisect import bisect_right

REPLY_BYTES = 4096


class PlcControl:
    """Sends commands to a running simulated PLC; any thread calls it."""

    def __init__(self, path, seconds=10):
        self.lock = threading.Lock()
        self.socket = socket.socket(socket.AF_UNIX)
        self.socket.settimeout(seconds)
        self.socket.connect(str(path))

    def command(self, text):
        """The answer behind "ok"; fails when the simulated PLC refuses the command."""
        with self.lock:
            self.socket.sendall(text.encode() + b"\n")
            answer = b""
            while not answer.endswith(b"\n"):
                answer += self.socket.recv(REPLY_BYTES)
        words = answer.decode().split()
        assert words[0] == "ok", f"{text}: {answer}"
        return words[1] if len(words) > 1 else ""

    def close(self):
        """Leaves the simulated PLC running."""
        self.socket.close()


class TrueValues:
    """The values that a word had, and the spans of time in which it can have had them.

    A value is set some time between the moments before and behind the command, so the spans of two
    values overlap a little: no value is called wrong that may have been true."""

    def __init__(self):
        self.lock = threading.Lock()
        self.begins = []  # of setting; ascending. Guarded by lock, as is the rest.
        self.ends = []  # the latest moment at which the value before was still there
        self.values = []

    def begin(self, value):
        """From now on the word may have the value. Call it before the command is sent: a reader may
        see the value before the command is answered."""
        with self.lock:
            self.values.append(value)
            self.begins.append(time.monotonic())
            self.ends.append(math.inf)

    def end(self):
        """From now on the word has the last value, and no other one."""
        with self.lock:
            self.ends[-1] = time.monotonic()

    def among(self, earliest, latest):
        """The values that the word can have had at some moment of a span."""
        with self.lock:
            last = bisect_right(self.begins, latest)
            first = max(0, bisect_right(self.ends, earliest) - 1)
            return set(self.values[first:last])

    def last(self):
        """The present value."""
        with self.lock:
            return self.values[-1]


class ChangingWords:
    """Changes words of a simulated PLC, one after the other, and records what is true.

    The upper bits of a value are the word's own number: the value of another word is always
    seen."""

    STEPS = 2048

    def __init__(self, control, places):
        self.control = control
        self.places = places  # name: address for "set"
        self.true = {name: TrueValues() for name in places}
        self.numbers = {name: number for number, name in enumerate(places)}
        self.step = 0
        self.may_run = threading.Event()
        self.ended = False
        for name in places:
            self._set(name)
        self.may_run.set()
        self.turn = threading.Lock()  # held while a word is set
        self.thread = threading.Thread(target=self._run, daemon=True)

    def start(self, every):
        """Changes one word every so many seconds."""
        self.every = every
        self.thread.start()

    def pause(self):
        """No word changes until resume()."""
        self.may_run.clear()
        with self.turn:
            pass

    def resume(self):
        """The words change again."""
        self.may_run.set()

    def close(self):
        """Ends the changes."""
        self.ended = True
        self.may_run.set()
        if self.thread.is_alive():
            self.thread.join()

    def _set(self, name):
        value = self.numbers[name] * self.STEPS + self.step % self.STEPS
        self.true[name].begin(value)
        self.control.command(f"set {self.places[name]}={value}")
        self.true[name].end()

    def _run(self):
        names = list(self.places)
        while not self.ended:
            self.may_run.wait()
            with self.turn:
                if not self.may_run.is_set() or self.ended:
                    continue
                self._set(names[self.step % len(names)])
                self.step += 1
            time.sleep(self.every)
