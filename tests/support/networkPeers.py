"""TCP peers of the host that are no simulated PLC: each misbehaves in a way of its own."""

import contextlib
import multiprocessing
import socket
import threading
import time

from rtuFrames import words_reply

REQUEST_BYTES = 8
LONGEST_FRAME = 256
FILLERS = 3
READS = (3, 4)
AT_ONCE = -1


def link_to(listener):
    """What --link takes."""
    return f"tcp:127.0.0.1,{listener.getsockname()[1]}"


class Peer:
    """A listening port, served in a process of its own: serve(listener, ARGUMENT...)."""

    def __init__(self, serve, *arguments):
        with socket.create_server(("127.0.0.1", 0)) as listener:
            self.link = link_to(listener)
            self.process = multiprocessing.get_context("fork").Process(
                target=serve, args=(listener, *arguments), daemon=True)
            self.process.start()

    def close(self):
        """Ends the peer."""
        self.process.kill()
        self.process.join()


class SilentPort:
    """A port to which nobody can connect, and which does not refuse either.

    The system accepts a few connections by itself; they are this object's own."""

    def __init__(self):
        self.sockets = contextlib.ExitStack()
        listener = self.sockets.enter_context(socket.socket())
        listener.bind(("127.0.0.1", 0))
        listener.listen(0)
        self.link = link_to(listener)
        for _ in range(FILLERS):
            filler = self.sockets.enter_context(socket.socket())
            filler.setblocking(False)
            filler.connect_ex(listener.getsockname())
        self.others = self._unanswered()

    def _unanswered(self):
        """The connections that wait for an answer of this port."""
        wanted = f"0100007F:{int(self.link.split(',')[1]):04X} 02 "
        with open("/proc/net/tcp", encoding="ascii") as connections:
            return sum(wanted in line for line in connections)

    def is_asked(self):
        """Whether somebody else tries to connect."""
        return self._unanswered() > self.others

    def close(self):
        """From now on the port refuses."""
        self.sockets.close()


def requests_of(host):
    """The read requests of a host until it hangs up."""
    received = b""
    while True:
        try:
            chunk = host.recv(REQUEST_BYTES - len(received))
        except ConnectionError:
            return
        if not chunk:
            return
        received += chunk
        if len(received) == REQUEST_BYTES:
            yield received
            received = b""


class CountingPeer(Peer):
    """Answers each read with words that are all 7, to one host, and counts."""

    def __init__(self):
        self.counter = multiprocessing.Value("i", 0)
        super().__init__(self._serve)

    def _serve(self, listener):
        host, _ = listener.accept()
        host.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        for request in requests_of(host):
            host.sendall(words_reply(request, [7] * request[5]))
            self.counter.value += 1

    def answered(self):
        """The requests answered so far."""
        return self.counter.value


def hang_up(listener, plc_port, replies):
    """Is in front of a PLC. Of each connection it passes on so many replies; with the request after
    the last reply it hangs up. AT_ONCE: with the connection."""
    while True:
        host, _ = listener.accept()
        with host, socket.create_connection(("127.0.0.1", plc_port)) as plc:
            for _ in range(replies):
                request = host.recv(LONGEST_FRAME)
                if not request:
                    break
                plc.sendall(request)
                host.sendall(plc.recv(LONGEST_FRAME))
            else:
                if replies != AT_ONCE:
                    host.recv(LONGEST_FRAME)


def keep_confirmations(listener, plc_port, passed):
    """Is in front of a PLC. It passes on every request, and every reply to a read. Of the replies to
    writes it passes on the first, so many; the PLC executes the other writes unheard."""
    while True:
        host, _ = listener.accept()
        with host, socket.create_connection(("127.0.0.1", plc_port)) as plc:
            while request := host.recv(LONGEST_FRAME):
                plc.sendall(request)
                reply = plc.recv(LONGEST_FRAME)
                is_write = request[1] not in READS
                if not is_write or passed > 0:
                    host.sendall(reply)
                passed -= is_write


class DeviceServer(Peer):
    """A serial device server with a slow PLC behind it; it serves one host after the other.

    Nothing tells it which host an answer is for: an answer of the PLC goes to the host that is
    connected then or, 20 ms after it has connected, next. Each answer comes so many seconds later
    than its request. With each of the first requests, so many, the server hangs up and passes the
    request on all the same. All words are 0 but those given, by their registers."""

    NETWORK_S = 0.02

    def __init__(self, delay_s, hang_ups, words):
        self.delay_s, self.hang_ups, self.words = delay_s, hang_ups, words
        self.host, self.kept = None, []
        self.lock = threading.Lock()
        super().__init__(self._serve)

    def _serve(self, listener):
        while True:
            host, _ = listener.accept()
            host.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            time.sleep(self.NETWORK_S)
            with host:
                self._take_host(host)
                for request in requests_of(host):
                    threading.Timer(self.delay_s, self._pass_on, [self._answer(request)]).start()
                    if self.hang_ups:
                        self.hang_ups -= 1
                        break
                self._take_host(None)

    def _take_host(self, host):
        """Who gets the answers from now on."""
        with self.lock:
            self.host = host
        while host and self.kept:
            self._pass_on(self.kept.pop(0))

    def _pass_on(self, answer):
        with self.lock:
            if self.host:
                self.host.sendall(answer)
            else:
                self.kept.append(answer)

    def _answer(self, request):
        first, count = (int.from_bytes(request[at:at + 2], "big") for at in (2, 4))
        return words_reply(request, [self.words.get(number, 0)
                                     for number in range(first, first + count)])
