"""A relay between a client and a server, which a test can freeze or cut.

A frozen relay keeps its connections and passes nothing on, as a switch does that has lost its
way; a cut relay closes them and refuses new ones."""

import select
import socket
import threading
import time

CHUNK_BYTES = 65536
TURN_S = 0.02
LONGEST_WAIT_S = 5


class _Connection:
    """One client's connection, and the first line of what it asked last."""

    def __init__(self, client, target, answered):
        self.client = client
        self.server = socket.create_connection(target)
        self.answered = answered
        self.request = b""
        for end in (self.client, self.server):
            end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def pass_on(self, source):
        """Passes bytes on; returns whether the connection goes on."""
        other = self.server if source is self.client else self.client
        try:
            data = source.recv(CHUNK_BYTES)
            if not data:
                return False
            if source is self.client:
                self.request = data.split(b"\r\n", 1)[0]
            else:
                self.answered(data)
            other.settimeout(LONGEST_WAIT_S)
            other.sendall(data)
        except OSError:
            return False
        return True

    def close(self):
        """Closes both ends."""
        self.client.close()
        self.server.close()


class TcpRelay:
    """Listens on a port of its own and relays to a target."""

    def __init__(self, target, answered=lambda data: None):
        """What the server sends is told to `answered` before it is passed on."""
        self.target = target
        self.answered = answered
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.lock = threading.Lock()
        self.connections = []  # guarded by lock, as are the flags
        self.frozen = False
        self.is_cut = False
        self.ended = False
        self.thread = threading.Thread(target=self._run, daemon=True)
        self.thread.start()

    def freeze(self):
        """Passes nothing on until resume()."""
        with self.lock:
            self.frozen = True

    def cut(self):
        """Closes every connection, and each new one at once, until resume(). They are closed when
        this returns."""
        with self.lock:
            self.is_cut = True
        while self.connections:
            time.sleep(TURN_S / 4)

    def resume(self):
        """Relays again."""
        with self.lock:
            self.frozen = self.is_cut = False

    def open_requests(self, start):
        """The connections whose last request line begins so, such as "GET /api/v1/events"."""
        with self.lock:
            return sum(connection.request.decode("latin-1").startswith(start)
                       for connection in self.connections)

    def close(self):
        """Ends the relay."""
        with self.lock:
            self.ended = True
        self.thread.join()
        self.listener.close()

    def _run(self):
        while True:
            with self.lock:
                if self.ended or self.is_cut:
                    self._drop(self.connections)
                if self.ended:
                    return
                frozen, refusing = self.frozen, self.is_cut
                sources = {} if frozen else {end: connection for connection in self.connections
                                             for end in (connection.client, connection.server)}
            waited = [self.listener, *sources] if not frozen else []
            readable = select.select(waited, [], [], TURN_S)[0]
            for source in readable:
                if source is self.listener:
                    self._accept(refusing)
                elif sources[source] in self.connections and not sources[source].pass_on(source):
                    with self.lock:
                        self._drop([sources[source]])

    def _accept(self, refusing):
        client, _ = self.listener.accept()
        if refusing:
            client.close()
            return
        try:
            connection = _Connection(client, self.target, self.answered)
        except OSError:
            client.close()
            return
        with self.lock:
            self.connections.append(connection)

    def _drop(self, connections):
        """The caller holds the lock."""
        for connection in list(connections):
            connection.close()
            self.connections.remove(connection)
