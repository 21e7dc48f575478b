"""How much of the station a client can take: sizes, connections, and its time."""

import contextlib
import time

from httpClient import Connection, own_address, request_bytes
from processes import PATIENCE_S
from stationProgram import StationTest

LOGIN = "/api/v1/login"
MOST_HEAD = 8192
MOST_BODY = 65536
MOST_CONNECTIONS = 64
PEERS_CONNECTIONS = 10
HEAD_S = 10
BODY_S = IDLE_S = 30
SLACK_S = 3


class HttpSizes(StationTest):
    """The largest head and the largest body."""

    def setUp(self):
        super().setUp()
        self.served = self.station()

    def head(self, size, path="/api/v1/station"):
        """A request of so many bytes."""
        short = request_bytes("GET", path, {"Host": "localhost", "Padding": ""})
        return request_bytes("GET", path, {
            "Host": "localhost", "Padding": "x" * (size - len(short))})

    def test_a_head_has_at_most_8_kb(self):
        for size, status in ((MOST_HEAD, 200), (MOST_HEAD + 1, 431), (3 * MOST_HEAD, 431)):
            with self.subTest(size=size), self.served.connect() as connection:
                connection.send(self.head(size))
                self.assertEqual(status, connection.answer().status)
                is_refused = status != 200
                self.assertEqual(is_refused, connection.is_closed(PATIENCE_S if is_refused else 0.2))

    def test_many_headers_are_refused_too(self):
        with self.served.connect() as connection:
            connection.send(b"GET /api/v1/station HTTP/1.1\r\n" + b"a:\r\n" * 2000 + b"\r\n")
            self.assertEqual(431, connection.head().status)

    def body(self, size):
        """A login of so many bytes."""
        return b'{"token":"any"}'.ljust(size)

    def test_a_body_has_at_most_64_kb(self):
        for size, status in ((MOST_BODY, 200), (MOST_BODY + 1, 413)):
            with self.subTest(size=size):
                self.assertEqual(status, self.served.post(LOGIN, self.body(size)).status)

    def test_a_body_that_is_too_large_is_not_waited_for(self):
        with self.served.connect() as connection:
            connection.send(request_bytes("POST", LOGIN, {
                "Host": "localhost", "X-Kakb": "1", "Content-Type": "application/json",
                "Content-Length": 10 ** 9}))
            self.assertEqual(413, connection.answer().status)
            self.assertTrue(connection.is_closed())

    def test_a_chunked_body_that_is_too_large_is_not_read_on(self):
        with self.served.connect() as connection:
            connection.send(request_bytes("POST", LOGIN, {
                "Host": "localhost", "X-Kakb": "1", "Content-Type": "application/json",
                "Transfer-Encoding": "chunked"}))
            for _ in range(MOST_BODY // 4096 + 1):
                connection.send(b"1000\r\n" + b" " * 4096 + b"\r\n")
            self.assertEqual(413, connection.answer().status)
            self.assertTrue(connection.is_closed())

    def test_a_refused_body_leaves_the_connection_in_order(self):
        with self.served.connect() as connection:
            refused = self.served.post(LOGIN, self.body(MOST_BODY), {"X-Kakb": None},
                                       connection)
            self.assertEqual(403, refused.status)
            self.assertEqual(
                200, self.served.get("/api/v1/station", connection=connection).status)


class HttpConnections(StationTest):
    """How many connections the station holds."""

    def test_the_65th_connection_gets_503_and_is_closed(self):
        served = self.station()
        with contextlib.ExitStack() as kept:
            held = [kept.enter_context(served.connect()) for _ in range(MOST_CONNECTIONS)]
            for connection in held:
                self.assertEqual(200, served.get("/api/v1/station", connection=connection).status)
            for _ in range(5):
                with served.connect() as one_more:
                    answer = one_more.answer()
                    self.assertEqual((503, ["error"]), (answer.status, list(answer.json)))
                    self.assertTrue(one_more.is_closed())
            held[7].close()
            self.assertEqual(200, self.answer_when_free(served).status)
            for connection in held[:7]:
                self.assertEqual(200, served.get("/api/v1/station", connection=connection).status)

    def answer_when_free(self, served):
        """The answer to a request once a place is free."""
        while True:
            answer = served.get("/api/v1/station")
            if answer.status != 503:
                return answer

    def test_a_503_reaches_a_client_that_has_sent_its_request_already(self):
        served = self.station()
        with contextlib.ExitStack() as kept:
            for _ in range(MOST_CONNECTIONS):
                kept.enter_context(served.connect())
            for _ in range(20):
                self.assertEqual(503, served.get("/api/v1/station").status)


class HttpPeers(StationTest):
    """How many connections one address of the network holds."""

    def test_a_peer_has_ten_connections_and_leaves_the_others_theirs(self):
        address = own_address()
        if address is None:
            self.skipTest("this machine has no network")
        self.file("token", "abc").chmod(0o600)
        served = self.station("--listen 0.0.0.0:0 --token-file token")
        with contextlib.ExitStack() as kept:
            for _ in range(PEERS_CONNECTIONS):
                held = kept.enter_context(Connection(address, served.port))
                held.send(request_bytes("GET", "/healthz", {"Host": "localhost"}))
                self.assertEqual(401, held.answer().status)
            with Connection(address, served.port) as one_more:
                self.assertEqual(503, one_more.answer().status)
            with Connection("127.0.0.1", served.port) as local:
                local.send(request_bytes("GET", "/healthz", {"Host": "localhost"}))
                self.assertEqual(401, local.answer().status)


class HttpSlowClients(StationTest):
    """Clients that take their time: their connection is cut, and nobody else waits for them."""

    def test_a_head_has_10_s_a_body_and_idleness_30_s_and_a_stream_all_time(self):
        served = self.station()
        login = {"Host": "localhost", "X-Kakb": "1", "Content-Type": "application/json",
                 "Content-Length": MOST_BODY}
        with contextlib.ExitStack() as kept:
            head, body, idle, silent, stream = (
                kept.enter_context(served.connect()) for _ in range(5))
            began = time.monotonic()
            stream.send(request_bytes("GET", "/api/v1/events", {"Host": "localhost"}))
            self.assertEqual(200, stream.head().status)
            body.send(request_bytes("POST", LOGIN, login))
            self.assertEqual(200, served.get("/api/v1/station", connection=idle).status)
            head.send(b"GET /api/v1/station HTTP/1.1\r\nPadding: ")
            due = {head: HEAD_S, body: BODY_S, idle: IDLE_S, silent: IDLE_S}
            while due:
                self.assertEqual(200, served.get("/api/v1/station").status)
                for connection in list(due):
                    if connection.is_closed(0.05):
                        self.assertAlmostEqual(due.pop(connection), time.monotonic() - began,
                                               delta=SLACK_S)
                for dribbling in {head, body} & due.keys():
                    with contextlib.suppress(ConnectionError):  # seen as closed in the next round
                        dribbling.send(b"x")
            while time.monotonic() - began < IDLE_S + SLACK_S:
                self.assertNotEqual(b"", stream.chunk())
