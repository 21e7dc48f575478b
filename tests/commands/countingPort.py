#!/usr/bin/env python3
"""A TCP peer that gives each request of 8 bytes the same answer, and counts.

usage: countingPort.py EXCHANGES FILE

Prints the link to it, and when the host has hung up how many requests it has answered. After so many
exchanges it makes the file.
"""

import socket
import sys
from pathlib import Path

from pymodbus.utilities import computeCRC

REQUEST_BYTES = 8


def answer():
    """Station 1: one register, 7 (MODBUS Application Protocol V1.1b3, 6.3)."""
    frame = bytes.fromhex("0103020007")
    return frame + computeCRC(frame).to_bytes(2, "big")


def serve(host, enough, file):
    """Until the host hangs up."""
    host.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
    reply, received, answered = answer(), 0, 0
    while True:
        try:
            chunk = host.recv(REQUEST_BYTES - received)
        except ConnectionError:
            return answered
        if not chunk:
            return answered
        received += len(chunk)
        if received < REQUEST_BYTES:
            continue
        host.sendall(reply)
        received, answered = 0, answered + 1
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
