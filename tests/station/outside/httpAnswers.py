"""What every answer of the station has, and the answers to what no path is made for."""

from stationProgram import StationTest

POLICY = ("default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; "
          "img-src 'self' data:; frame-ancestors 'none'; base-uri 'none'; form-action 'none'")


class HttpAnswers(StationTest):
    """Statuses and headers of well-formed requests."""

    def setUp(self):
        super().setUp()
        self.served = self.station()

    def test_every_answer_says_what_a_browser_may_do_with_it(self):
        refused_host = {"Host": "elsewhere.example"}
        for path, headers, status in (("/api/v1/values", {}, 200), ("/none", {}, 404),
                                      ("/api/v1/values", refused_host, 421)):
            with self.subTest(path=path, status=status):
                answer = self.served.get(path, headers)
                self.assertEqual(
                    (status, POLICY, "nosniff", "no-referrer", "no-store"),
                    (answer.status, *(answer.headers[name] for name in (
                        "content-security-policy", "x-content-type-options", "referrer-policy",
                        "cache-control"))))

    def test_an_unknown_path_is_said_in_one_sentence(self):
        answer = self.served.get("/api/v1/nothing")
        self.assertEqual((404, ["error"], "application/json"), (
            answer.status, list(answer.json), answer.headers["content-type"]))

    def test_another_method_is_told_the_ones_that_the_path_takes(self):
        for method in ("DELETE", "PUT", "PATCH", "OPTIONS", "POST"):
            with self.subTest(method=method):
                answer = self.served.request(method, "/api/v1/values", {"Content-Length": "0"})
                self.assertEqual((405, "GET, HEAD"), (answer.status, answer.headers["allow"]))

    def test_head_has_the_headers_of_get_and_no_body(self):
        with self.served.connect() as connection:
            head = self.served.request("HEAD", "/api/v1/station", connection=connection)
            self.assertEqual((200, "application/json", b""), (
                head.status, head.headers["content-type"], head.body))
            # Bytes of a body would be taken for the next answer.
            self.assertEqual(200, self.served.get("/api/v1/station", connection=connection).status)

    def test_head_of_a_stream_is_its_head_alone(self):
        for path, kind in (("/api/v1/events", "text/event-stream"),
                           ("/api/v1/history.csv", "text/csv; charset=utf-8; header=present")):
            with self.subTest(path=path), self.served.connect() as connection:
                head = self.served.request("HEAD", path, connection=connection)
                self.assertEqual((200, kind, None), (
                    head.status, head.headers["content-type"], head.headers.get("content-length")))
                self.assertTrue(connection.is_closed(), "something came behind the head")

    def test_a_connection_serves_one_request_after_the_other(self):
        with self.served.connect() as connection:
            for _ in range(100):
                self.assertEqual(
                    200, self.served.get("/api/v1/values", connection=connection).status)

    def test_paths_and_queries_are_decoded_once(self):
        self.assertEqual(200, self.served.get("/api/v1/%76alues?tag=fill%20level").status)
        self.assertEqual(["fill level"], [
            value["tag"] for value in self.served.get("/api/v1/values?tag=fill+level").json])
        for path in ("/%2561pi", "/%zz", "/%c3", "/%00", "/?a=%ff", "/?%0a=1", "/%"):
            with self.subTest(path=path):
                self.assertEqual(404 if path == "/%2561pi" else 400, self.served.get(path).status)
