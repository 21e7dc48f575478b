"""What the station refuses of a request that is not meant for it: a name that is not its own, a
POST that another site's page could send, a body or a head without a sure end."""

from httpClient import request_bytes
from stationProgram import StationTest

LOGIN = "/api/v1/login"  # a POST that needs nothing but a well-formed request


class HttpHosts(StationTest):
    """Which Host a request may have: the defence against DNS rebinding."""

    def setUp(self):
        super().setUp()
        self.served = self.station("--host-name panel.example --host-name Press7")

    def status(self, host):
        """The status that a Host brings."""
        return self.served.get("/api/v1/station", {"Host": host}).status

    def test_addresses_local_names_and_given_names_are_its_own(self):
        for host in ("127.0.0.1", "127.0.0.1:1", "192.168.7.9:80", "[::1]", "[fe80::1]:8480",
                     "localhost", "LocalHost:99", "panel.local", "a.b.local:8480", "panel.local.",
                     "panel.example", "PANEL.example:443", "press7"):
            with self.subTest(host=host):
                self.assertEqual(200, self.status(host))

    def test_other_names_are_misdirected(self):
        for host in ("example.com", "127.0.0.1.example.com", "localhost.example.com", "local",
                     "xlocal", "panel.example.com", "2130706433", "127.1", "0x7f.0.0.1",
                     "panel.local.example.com:8480"):
            with self.subTest(host=host):
                answer = self.served.get("/api/v1/station", {"Host": host})
                self.assertEqual((421, ["error"]), (answer.status, list(answer.json)))

    def test_a_missing_empty_or_malformed_host_is_a_mistake(self):
        for host in (None, "", ":80", "a b", "user@panel.local", "127.0.0.1:x", "127.0.0.1:99999",
                     "[::1", "::1", "panel.local:80:80", "..local", "panel.local/"):
            with self.subTest(host=host):
                self.assertEqual(400, self.status(host))

    def test_a_second_host_is_a_mistake(self):
        for lines in (b"Host: localhost\r\nHost: localhost\r\n",
                      b"Host: localhost\r\nhOST: example.com\r\n"):
            with self.subTest(lines=lines), self.served.connect() as connection:
                connection.send(b"GET /api/v1/station HTTP/1.1\r\n" + lines + b"\r\n")
                self.assertEqual(400, connection.answer().status)

    def test_a_target_with_a_host_of_its_own_is_refused(self):
        with self.served.connect() as connection:
            connection.send(b"GET http://example.com/api/v1/station HTTP/1.1\r\n"
                            b"Host: localhost\r\n\r\n")
            self.assertEqual(400, connection.answer().status)


class HttpPosts(StationTest):
    """What a POST needs: the defence against other sites' pages."""

    def setUp(self):
        super().setUp()
        self.served = self.station()

    def status(self, **headers):
        """The status of a POST with some headers changed; underscores stand for hyphens."""
        changed = {name.replace("_", "-"): value for name, value in headers.items()}
        return self.served.post(LOGIN, {"token": "any"}, changed).status

    def test_json_is_the_only_content(self):
        for kind, status in (
                ("application/json", 200), ("application/json; charset=utf-8", 200),
                ("Application/JSON;a=b", 200), ("text/plain", 415), (None, 415), ("", 415),
                ("application/x-www-form-urlencoded", 415), ("multipart/form-data", 415),
                ("text/plain; application/json", 415), ("application/jsonp", 415)):
            with self.subTest(kind=kind):
                self.assertEqual(status, self.status(Content_Type=kind))

    def test_the_header_of_the_page_is_needed(self):
        for value, status in (("1", 200), (None, 403), ("", 403), ("0", 403), ("true", 403)):
            with self.subTest(value=value):
                self.assertEqual(status, self.status(X_Kakb=value))

    def test_an_origin_has_the_host_and_port_of_the_request(self):
        own = self.served.authority
        port = self.served.port
        for origin, host, status in (
                (f"http://{own}", own, 200), ("http://panel.local", "panel.local", 200),
                ("http://panel.local:80", "panel.local", 200),
                ("https://panel.local", "panel.local:443", 200),
                ("https://Panel.local:8443", "panel.local:8443", 200),
                ("http://[::1]:8480", "[::1]:8480", 200),
                (f"http://localhost:{port}", own, 403), ("http://127.0.0.1:1", own, 403),
                ("http://127.0.0.1", own, 403), ("null", own, 403), ("", own, 403),
                ("http://example.com", own, 403), (f"ftp://{own}", own, 403), (own, own, 403),
                (f"http://{own}/", own, 403), (f"http://{own}.example.com", own, 403),
                (f"http://{own}@example.com", own, 403)):
            with self.subTest(origin=origin, host=host):
                self.assertEqual(status, self.status(Origin=origin, Host=host))

    def test_a_second_origin_is_refused(self):
        own = f"http://{self.served.authority}"
        self.assertEqual(403, self.status(**{"Origin": own, "origin": own}))

    def test_no_get_changes_anything(self):
        for path in (LOGIN, "/api/v1/logout", "/api/v1/write"):
            with self.subTest(path=path):
                answer = self.served.get(path)
                self.assertEqual((405, "POST"), (answer.status, answer.headers["allow"]))


class HttpFraming(StationTest):
    """Requests without a sure end: each is refused, and its connection ends with it."""

    def setUp(self):
        super().setUp()
        self.served = self.station()

    def refused(self, status, headers, body=b"", method="POST"):
        """Sends a request that ends its connection; what follows it is never read as a request."""
        smuggled = request_bytes("GET", "/api/v1/station", {"Host": "localhost"})
        with self.served.connect() as connection:
            connection.send(f"{method} {LOGIN} HTTP/1.1\r\nHost: localhost\r\nX-Kakb: 1\r\n"
                            f"Content-Type: application/json\r\n{headers}\r\n".encode("latin-1")
                            + body + smuggled)
            answer = connection.answer()
            self.assertEqual(status, answer.status, answer)
            self.assertNotIn(b" 200 ", answer.body + connection.rest())

    def test_a_length_beside_a_transfer_encoding(self):
        chunked = b"2\r\n{}\r\n0\r\n\r\n"
        for headers in ("Content-Length: 2\r\nTransfer-Encoding: chunked\r\n",
                        "Transfer-Encoding: chunked\r\nContent-Length: 12\r\n"):
            with self.subTest(headers=headers):
                self.refused(400, headers, chunked)

    def test_several_lengths(self):
        for headers in ("Content-Length: 2\r\nContent-Length: 2\r\n",
                        "Content-Length: 2\r\ncontent-length: 40\r\n",
                        "Content-Length: 2, 2\r\n", "Content-Length: 2,40\r\n"):
            with self.subTest(headers=headers):
                self.refused(400, headers, b"{}")

    def test_lengths_that_are_no_numbers(self):
        for length in ("", "-1", "+2", "0x2", "2 2", "two", "2.0"):
            with self.subTest(length=length):
                self.refused(400, f"Content-Length: {length}\r\n", b"{}")

    def test_other_transfer_encodings(self):
        for headers in ("Transfer-Encoding: gzip\r\n", "Transfer-Encoding: identity\r\n",
                        "Transfer-Encoding: gzip, chunked\r\n", "Transfer-Encoding: xchunked\r\n",
                        "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n"):
            with self.subTest(headers=headers):
                self.refused(400, headers, b"0\r\n\r\n")

    def test_names_of_headers_that_are_no_names(self):
        for headers in ("Content-Length : 2\r\n", "Content-Length\t: 2\r\n", "a(b: c\r\n"):
            with self.subTest(headers=headers):
                self.refused(400, headers, b"{}")

    def test_a_chunked_body_is_read_to_its_end(self):
        with self.served.connect() as connection:
            for _ in range(2):
                connection.send(request_bytes("POST", LOGIN, {
                    "Host": "localhost", "X-Kakb": "1", "Content-Type": "application/json",
                    "Transfer-Encoding": "chunked"}, b'9\r\n{"token":\r\n5\r\n"any"\r\n'
                    b"1\r\n}\r\n0\r\n\r\n"))
                self.assertEqual(200, connection.answer().status)

    def test_malformed_chunks(self):
        for chunk in (b"zz\r\n{}\r\n0\r\n\r\n", b"-2\r\n{}\r\n0\r\n\r\n", b"2\r\n{}xx0\r\n\r\n",
                      b"fffffffffffffffff\r\n{}\r\n0\r\n\r\n"):
            with self.subTest(chunk=chunk), self.served.connect() as connection:
                connection.send(request_bytes("POST", LOGIN, {
                    "Host": "localhost", "X-Kakb": "1", "Content-Type": "application/json",
                    "Transfer-Encoding": "chunked"}, chunk))
                first = connection.rest()
                self.assertNotIn(b" 200 ", first)
                self.assertEqual(200, self.served.get("/api/v1/station").status)
