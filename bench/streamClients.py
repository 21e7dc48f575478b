#!/usr/bin/env python3
"""Clients of the station's event stream that count what comes.

usage: streamClients.py HOST:PORT READING STOPPED SECONDS
  READING   clients that take everything at once
  STOPPED   clients that take nothing behind the head of the answer

Prints, for the clients that read, as JSON: {"clients","seconds","messages","gaps","bytes"}, counted
from the first second on, and the fewest and the most messages that one client got.
"""

import json
import selectors
import socket
import sys
import time

CHUNK_BYTES = 262144
MESSAGE = b"\nevent: values\n"
FULL = b'\ndata: {"full":true'
SETTLING_S = 1


class Client:
    """One client of the stream."""

    def __init__(self, host, port):
        self.socket = socket.create_connection((host, port))
        request = f"GET /api/v1/events HTTP/1.1\r\nHost: {host}:{port}\r\n\r\n"
        self.socket.sendall(request.encode())
        self.tail = b""
        self.begin_count()

    def begin_count(self):
        """Counts from now on."""
        self.messages = self.gaps = self.bytes = 0

    def take(self):
        """Takes what has come."""
        data = self.socket.recv(CHUNK_BYTES)
        if not data:
            sys.exit("the station hung up")
        text = self.tail + data
        self.messages += text.count(MESSAGE)
        self.gaps += text.count(FULL)
        self.bytes += len(data)
        # A name that is cut at the end of the piece counts with the next one.
        self.tail = text[-len(FULL) + 1:]
        self.messages -= self.tail.count(MESSAGE)
        self.gaps -= self.tail.count(FULL)


def read_for(selector, seconds):
    """Takes all that comes for so many seconds."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        for key, _ in selector.select(0.1):
            key.data.take()


def main(address, reading, stopped, seconds):
    """Reads, then prints what was counted."""
    host, port = address.rsplit(":", 1)
    clients = [Client(host, int(port)) for _ in range(reading)]
    idle = [Client(host, int(port)) for _ in range(stopped)]
    selector = selectors.DefaultSelector()
    for client in clients:
        selector.register(client.socket, selectors.EVENT_READ, client)
    read_for(selector, SETTLING_S)
    for client in clients:
        client.begin_count()
    print("reading", flush=True)
    read_for(selector, seconds)
    print(json.dumps({
        "clients": reading, "stopped": len(idle), "seconds": seconds,
        "messages": sum(client.messages for client in clients),
        "fewest": min(client.messages for client in clients),
        "most": max(client.messages for client in clients),
        "gaps": sum(client.gaps for client in clients),
        "bytes": sum(client.bytes for client in clients)}), flush=True)
    sys.stdin.read()  # the connections stay open until whoever measures has looked


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    main(sys.argv[1], *map(int, sys.argv[2:4]), float(sys.argv[4]))
