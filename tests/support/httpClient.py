"""Clients of the station's HTTP server: one that behaves, one that sends any bytes, and one that
listens to the event stream."""

import json
import socket
import time

from processes import PATIENCE_S

CHUNK_BYTES = 65536


class Answer:
    """One HTTP answer: status, headers by their names in lower case, body."""

    def __init__(self, status, headers, body):
        self.status, self.headers, self.body = status, headers, body

    def __str__(self):
        return f"{self.status} {self.headers} {self.body[:500]!r}"

    @property
    def json(self):
        """The body as a JSON document."""
        return json.loads(self.body)

    @property
    def error(self):
        """The sentence of an answer that is an error."""
        return self.json["error"]


def request_bytes(method, path, headers, body=b""):
    """A request; a header of None is left out."""
    lines = [f"{method} {path} HTTP/1.1",
             *(f"{name}: {value}" for name, value in headers.items() if value is not None)]
    return "".join(f"{line}\r\n" for line in [*lines, ""]).encode() + body


def own_address():
    """An address of this machine by which others reach it; None: it has none. Nothing is sent."""
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as used:
        try:
            used.connect(("203.0.113.1", 9))
        except OSError:
            return None
        return used.getsockname()[0]


class Connection:
    """A TCP connection to the station, on which a test sends what it likes."""

    def __init__(self, host, port, timeout=PATIENCE_S):
        self.socket = socket.create_connection((host, port), timeout)
        self.socket.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.coming = b""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Hangs up."""
        self.socket.close()

    def send(self, data):
        """Sends bytes as they are."""
        self.socket.sendall(data)

    def _more(self):
        chunk = self.socket.recv(CHUNK_BYTES)
        if not chunk:
            raise EOFError(f"the station hung up behind {self.coming[:500]!r}")
        self.coming += chunk

    def _until(self, end):
        while end not in self.coming:
            self._more()
        found, self.coming = self.coming.split(end, 1)
        return found

    def _bytes(self, count):
        while len(self.coming) < count:
            self._more()
        found, self.coming = self.coming[:count], self.coming[count:]
        return found

    def head(self):
        """The next answer without its body."""
        status, *lines = self._until(b"\r\n\r\n").decode("latin-1").split("\r\n")
        pairs = (line.split(":", 1) for line in lines)
        headers = {name.lower(): value.strip() for name, value in pairs}
        return Answer(int(status.split()[1]), headers, b"")

    def answer(self, has_body=True):
        """The next answer, whole; an answer to HEAD has no body."""
        answer = self.head()
        if not has_body or answer.status in (204, 304):
            return answer
        if answer.headers.get("transfer-encoding") == "chunked":
            answer.body = b"".join(iter(self.chunk, b""))
        elif "content-length" in answer.headers:
            answer.body = self._bytes(int(answer.headers["content-length"]))
        else:
            answer.body = self.rest()
        return answer

    def chunk(self):
        """The next piece of a body that is made while it is sent; empty: its end."""
        size = int(self._until(b"\r\n"), 16)
        data = self._bytes(size)
        self._until(b"\r\n")
        return data

    def rest(self):
        """All until the station hangs up."""
        try:
            while True:
                self._more()
        except (EOFError, ConnectionResetError):
            rest, self.coming = self.coming, b""
            return rest

    def is_closed(self, seconds=PATIENCE_S):
        """Whether the station hangs up within so many seconds without another byte."""
        self.socket.settimeout(seconds)
        try:
            return not self.coming and self.socket.recv(1) == b""
        except TimeoutError:
            return False
        except ConnectionError:
            return True
        finally:
            self.socket.settimeout(PATIENCE_S)


class EventStream:
    """A client of the event stream: takes one event after the other."""

    def __init__(self, connection):
        self.connection = connection
        self.head = connection.head()
        self.text = ""

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        """Hangs up."""
        self.connection.close()

    def next(self, kind=None):
        """The next event, of a kind if one is given: {"event", "id", "data"}; data is a document,
        id is None when the event has none."""
        deadline = time.monotonic() + PATIENCE_S
        while time.monotonic() < deadline:
            event = self._event()
            if event["data"] is not None and kind in (None, event["event"]):
                return event
        raise TimeoutError(f"no event {kind} within {PATIENCE_S} s")

    def _event(self):
        while "\n\n" not in self.text:
            chunk = self.connection.chunk()
            assert chunk, "the stream has ended"
            self.text += chunk.decode("utf-8", "surrogateescape")
        block, self.text = self.text.split("\n\n", 1)
        event = {"event": "message", "id": None, "data": None}
        data = []
        for line in block.split("\n"):
            field, _, value = line.partition(":")
            value = value.removeprefix(" ")
            if field == "data":
                data.append(value)
            elif field in event:
                event[field] = value
        if data and event["event"] != "gap":  # the end of a message that was cut short
            event["data"] = json.loads("\n".join(data))
        return event
