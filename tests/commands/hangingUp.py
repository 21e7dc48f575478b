"""Passes requests on to a PLC and its replies back, and hangs up when it has passed on enough.

usage: hangingUp.py PORT REPLIES

PORT is the PLC's on this machine. Prints the link to connect to. Of each connection it passes on so
many replies; with the request after the last one it hangs up. With -1 it hangs up at once.
"""

import socket
import sys

LONGEST_FRAME = 256


def serve(host, plc, replies):
    """Each request is answered with one reply."""
    for _ in range(replies):
        request = host.recv(LONGEST_FRAME)
        if not request:
            return
        plc.sendall(request)
        host.sendall(plc.recv(LONGEST_FRAME))
    if replies >= 0:
        host.recv(LONGEST_FRAME)


def main(port, replies):
    """Until it is killed."""
    listener = socket.create_server(("127.0.0.1", 0))
    print(f"tcp:127.0.0.1,{listener.getsockname()[1]}", flush=True)
    while True:
        host, _ = listener.accept()
        with host, socket.create_connection(("127.0.0.1", port)) as plc:
            serve(host, plc, replies)


main(int(sys.argv[1]), int(sys.argv[2]))
