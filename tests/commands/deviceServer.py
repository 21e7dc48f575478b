#!/usr/bin/env python3
"""A serial device server with a slow PLC behind it.

usage: deviceServer.py DELAY_MS HANG_UPS

It serves one host after the other and prints the link to it. Nothing tells it which host an answer
is for: what the PLC answers goes to whoever is connected then or, after 20 ms, next. Each answer
comes so much later than its request. With each of the first requests, so many, it hangs up and
passes the request on all the same.

Of station 1, MW100 is 4711, MW4000 is 99, and all other words are 0 (MODBUS Application Protocol
V1.1b3, 6.3).
"""

import collections
import selectors
import socket
import sys
import time

from pymodbus.utilities import computeCRC

REQUEST_BYTES = 8
NETWORK_S = 0.02
WORDS = {3050: 4711, 5000: 99}


def answer(request):
    """The reply to a read of words."""
    first, count = (int.from_bytes(request[at:at + 2], "big") for at in (2, 4))
    words = (WORDS.get(number, 0) for number in range(first, first + count))
    frame = request[:2] + bytes([2 * count]) + b"".join(word.to_bytes(2, "big") for word in words)
    return frame + computeCRC(frame).to_bytes(2, "big")


class DeviceServer:
    """Its two sides: the network, and the line to the PLC."""

    def __init__(self, delay, hang_ups):
        self.delay = delay
        self.hang_ups = hang_ups
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.host = None
        self.received = b""
        self.ready = 0
        self.coming = collections.deque()
        self.selector = selectors.DefaultSelector()
        self.selector.register(self.listener, selectors.EVENT_READ)

    def until_answer(self):
        """The seconds until the next one can be passed on; None: there is none, or nobody."""
        if not self.host or not self.coming:
            return None
        return max(self.coming[0][0], self.ready) - time.monotonic()

    def pass_answers_on(self):
        """Those that have come."""
        while (left := self.until_answer()) is not None and left <= 0:
            self.host.sendall(self.coming.popleft()[1])

    def take_host(self):
        """The next one, when the last one has gone."""
        self.host, _ = self.listener.accept()
        self.ready = time.monotonic() + NETWORK_S
        self.host.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.selector.unregister(self.listener)
        self.selector.register(self.host, selectors.EVENT_READ)

    def drop_host(self):
        """Without a word to the PLC."""
        self.selector.unregister(self.host)
        self.selector.register(self.listener, selectors.EVENT_READ)
        self.host.close()
        self.host, self.received = None, b""

    def take_bytes(self):
        """From the host to the PLC."""
        try:
            chunk = self.host.recv(REQUEST_BYTES - len(self.received))
        except ConnectionError:
            chunk = b""
        if not chunk:
            self.drop_host()
            return
        self.received += chunk
        if len(self.received) < REQUEST_BYTES:
            return
        self.coming.append((time.monotonic() + self.delay, answer(self.received)))
        self.received = b""
        if self.hang_ups > 0:
            self.hang_ups -= 1
            self.drop_host()

    def serve(self):
        """Until it is killed."""
        print(f"tcp:127.0.0.1,{self.listener.getsockname()[1]}", flush=True)
        while True:
            left = self.until_answer()
            for key, _ in self.selector.select(None if left is None else max(left, 0)):
                if key.fileobj is self.listener:
                    self.take_host()
                else:
                    self.take_bytes()
            self.pass_answers_on()


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    DeviceServer(int(sys.argv[1]) / 1000, int(sys.argv[2])).serve()
