"""A port that nobody can connect to, and that does not refuse either.

usage: silentPort.py

Prints the link to it, then keeps it until standard input ends. The few connections that the system
takes by itself are this program's own.
"""

import socket
import sys

FILLERS = 3

listener = socket.socket()
listener.bind(("127.0.0.1", 0))
listener.listen(0)
fillers = []
for _ in range(FILLERS):
    filler = socket.socket()
    filler.settimeout(0.2)
    try:
        filler.connect(listener.getsockname())
    except TimeoutError:
        pass
    fillers.append(filler)
print(f"tcp:127.0.0.1,{listener.getsockname()[1]}", flush=True)
sys.stdin.read()
