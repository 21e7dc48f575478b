"""A broker of MQTT 3.1.1 that serves one client after the other in the test's own thread, packet by
packet, and can cut a connection at any point."""

import select
import socket
import struct

CONNECT, CONNACK, PUBLISH, PUBACK, SUBSCRIBE, SUBACK, PINGREQ, PINGRESP = 1, 2, 3, 4, 8, 9, 12, 13
RESET = struct.pack("ii", 1, 0)  # SO_LINGER: close() resets the connection


class Packet:
    """A packet as it came."""

    def __init__(self, head, body):
        self.kind, self.flags, self.body = head >> 4, head & 15, body

    def __str__(self):
        return f"packet of type {self.kind}: {self.body.hex()}"

    @property
    def qos(self):
        """Of a PUBLISH."""
        return self.flags >> 1 & 3

    @property
    def topic(self):
        """Of a PUBLISH."""
        return _text(self.body, 0)[0].decode()

    @property
    def number(self):
        """Of a PUBLISH with QoS 1: two bytes."""
        at = _text(self.body, 0)[1]
        return self.body[at:at + 2]

    @property
    def payload(self):
        """Of a PUBLISH."""
        return self.body[_text(self.body, 0)[1] + (2 if self.qos else 0):]

    def will(self):
        """The topic and the payload of a CONNECT's will."""
        _, at = _text(self.body, 10)  # behind the client's id
        topic, at = _text(self.body, at)
        return topic.decode(), _text(self.body, at)[0]

    def subscriptions(self):
        """The topics of a SUBSCRIBE with the QoS that is asked for, in their order."""
        at, topics = 2, []
        while at < len(self.body):
            topic, end = _text(self.body, at)
            topics.append((topic.decode(), self.body[end]))
            at = end + 1
        return topics

    def grants(self):
        """The SUBACK's body for a SUBSCRIBE: QoS 1 for each topic."""
        return self.body[:2] + b"\1" * len(self.subscriptions())


class BareBroker:
    """Listens on several ports, so that a client has a list of servers."""

    def __init__(self, ports):
        self.listeners = [socket.create_server(("127.0.0.1", 0)) for _ in range(ports)]

    @property
    def ports(self):
        """All ports."""
        return [listener.getsockname()[1] for listener in self.listeners]

    def accept(self, seconds):
        """The next client; None: nobody came."""
        ready = select.select(self.listeners, [], [], seconds)[0]
        return BareClient(ready[0].accept()[0], seconds) if ready else None

    def close(self):
        """Listens no more."""
        for listener in self.listeners:
            listener.close()


class BareClient:
    """A connection that a client has made."""

    def __init__(self, end, patience_s):
        self.end = end
        self.end.settimeout(patience_s)
        self.end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)

    def read(self):
        """The next packet; None: the client has closed the connection."""
        head = self._take(1)
        size = shift = 0
        more = head is not None
        while more:
            byte = self._take(1)
            if byte is None:
                return None
            size |= (byte[0] & 127) << shift
            shift += 7
            more = byte[0] > 127
        body = self._take(size) if head else None
        return None if body is None else Packet(head[0], body)

    def is_silent(self, seconds):
        """Whether nothing comes for so long."""
        return not select.select([self.end], [], [], seconds)[0]

    def send(self, kind, body=b"", flags=0):
        """Sends a packet; a client that is gone gets none."""
        try:
            self.end.sendall(bytes([kind << 4 | flags, len(body)]) + body)
        except OSError:
            pass

    def answer(self, packet):
        """As any broker would; it grants everything."""
        if packet.kind == CONNECT:
            self.send(CONNACK, b"\0\0")
        elif packet.kind == SUBSCRIBE:
            self.send(SUBACK, packet.grants())
        elif packet.kind == PUBLISH and packet.qos == 1:
            self.send(PUBACK, packet.number)
        elif packet.kind == PINGREQ:
            self.send(PINGRESP)

    def publish(self, topic, payload):
        """Passes a short message on with QoS 0."""
        text = topic.encode()
        self.send(PUBLISH, len(text).to_bytes(2, "big") + text + payload)

    def cut(self, is_reset=False):
        """Closes the connection."""
        if is_reset:
            self.end.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, RESET)
        self.end.close()

    def _take(self, size):
        taken = b""
        while len(taken) < size:
            try:
                more = self.end.recv(size - len(taken))
            except ConnectionError:
                return None
            if not more:
                return None
            taken += more
        return taken


def _text(body, at):
    """A text or bytes with their length in front, and where they end."""
    end = at + 2 + int.from_bytes(body[at:at + 2], "big")
    return body[at + 2:end], end
