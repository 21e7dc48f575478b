"""Ten thousand requests of all kinds, sound and unsound: run it with the sanitizers, too."""

import random

from httpClient import request_bytes
from stationProgram import StationTest

REQUESTS = 10000
A_CONNECTION = 100
SEED = 20

PATHS = ("/api/v1/station", "/api/v1/values", "/api/v1/values?tag=fill%20level", "/healthz",
         "/metrics", "/", "/none", "/%zz", "/api/v1/frames?link=plc", "/api/v1/values?tag=")
HOSTS = ("localhost", "panel.local", "[::1]:1", "example.com", "", "a b")
BODIES = (b'{"token":"x"}', b"{", b"", b"[]", b"\xff" * 100, b" " * 5000)


class HttpManyRequests(StationTest):
    """The station serves on, whatever was asked before."""

    def test_ten_thousand_requests(self):
        served = self.station()
        chance = random.Random(SEED)
        statuses = set()
        for _ in range(REQUESTS // A_CONNECTION):
            with served.connect() as connection:
                for _ in range(A_CONNECTION - 1):
                    connection.send(self.some_request(chance))
                    statuses.add(connection.answer().status)
                # And one that is left alone in its middle, or before its answer.
                connection.send(self.some_request(chance)[:chance.randrange(200)])
        self.assertEqual(200, served.get("/api/v1/station").status)
        self.assertLessEqual({200, 400, 403, 404, 405, 415, 421}, statuses)
        self.assertEqual(0, served.end())

    def some_request(self, chance):
        """A request that keeps its connection open."""
        host = chance.choice(HOSTS) if chance.random() < 0.2 else "localhost"
        if chance.random() < 0.7:
            return request_bytes("GET", chance.choice(PATHS), {"Host": host})
        body = chance.choice(BODIES)
        path = chance.choice(("/api/v1/login", "/api/v1/write", "/api/v1/values"))
        return request_bytes("POST", path, {
            "Host": host, "Content-Length": len(body),
            "X-Kakb": "1" if chance.random() < 0.8 else None,
            "Content-Type": "application/json" if chance.random() < 0.8 else "text/plain"}, body)
