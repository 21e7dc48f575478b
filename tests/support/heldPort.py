"""Ports of 127.0.0.1 that belong to a test although nobody listens on them now."""

import socket


class HeldPort:
    """A port that refuses all clients until a program of the test listens there.

    The system gives it to nobody else while it is held. A program that sets SO_REUSEADDR, as servers
    do, can listen on it by its number, end, and listen again."""

    def __init__(self):
        self.socket = socket.socket()
        self.socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.socket.bind(("127.0.0.1", 0))
        self.number = self.socket.getsockname()[1]

    def close(self):
        """From now on anybody may take it."""
        self.socket.close()
