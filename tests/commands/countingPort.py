#!/usr/bin/env python3
"""A TCP peer that answers each read of 8 bytes with words that are all 7, and counts.

usage: countingPort.py EXCHANGES FILE

Prints the link to it, and when the host has hung up how many requests it has answered. After so many
exchanges it makes the file.
"""

import socket
import sys
from pathlib import Path

from pymodbus.utilities import computeCRC

REQUEST_BYTES = 8


def answer(request):
    """As many registers as are asked for (MODBUS Application Protocol V1.1b3, 6.3)."""
    count = int.from_bytes(request[4:6], "big")
    frame = request[:2] + bytes([2 * count]) + bytes.fromhex("0007") * count
    return frame + computeCRC(frame).to_bytes(2, "big")


def serve(host, enough, file):
    """Until the host hangs up."""
    host.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    received, answered = b"", 0
    while True:
        try:
            chunk = host.recv(REQUEST_BYTES - len(received))
        except ConnectionError:
            return answered
        if not chunk:
            return answered
        received += chunk
        if len(received) < REQUEST_BYTES:
            continue
        host.sendall(answer(received))
        received, answered = b"", answered + 1
        if answered == enough:
            Path(file).touch()


def main(enough, file):
    """One host."""
    with socket.create_server(("127.0.0.1", 0)) as listener:
        print(f"tcp:127.0.0.1,{listener.getsockname()[1]}", flush=True)
        host, _ = listener.accept()
        with host:
            answered = serve(host, int(enough), file)
    print(answered, flush=True)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(*sys.argv[1:])
