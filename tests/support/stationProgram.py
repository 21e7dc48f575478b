"""The test case that runs kakb-station as a service and talks to it as a browser does."""

import json
import shlex
import signal

from commandLine import CommandLineTest
from httpClient import Connection, EventStream, request_bytes
from processes import PATIENCE_S, Program, eventually
from tagTables import HEADER, TAGS, table


class Station(Program):
    """A started kakb-station; its first line has named its address."""

    def __init__(self, command, folder):
        super().__init__(command, folder)
        try:
            self.await_that(lambda: self.out.endswith("\n"))
        except AssertionError:
            self.close()
            raise
        self.url = self.lines[0]
        self.authority = self.url.removeprefix("http://").removesuffix("/")
        host, port = self.authority.rsplit(":", 1)
        self.host, self.port = host.strip("[]"), int(port)
        self.headers = {}  # that every request has, such as a token

    def connect(self):
        """A connection for any bytes."""
        return Connection(self.host, self.port)

    def request(self, method, path, headers=None, body=b"", connection=None):
        """Sends a request, with Host unless the headers say otherwise; returns the answer.

        A header of None is left out. Without a connection it is sent on one of its own."""
        used = connection or self.connect()
        try:
            used.send(request_bytes(method, path, {
                "Host": self.authority, **self.headers, **(headers or {})}, body))
            return used.answer(method != "HEAD")
        finally:
            if not connection:
                used.close()

    def get(self, path, headers=None, connection=None):
        """The answer to GET."""
        return self.request("GET", path, headers, connection=connection)

    def post(self, path, document, headers=None, connection=None):
        """The answer to POST of a document, or of bytes as they are."""
        body = document if isinstance(document, bytes) else json.dumps(document).encode()
        return self.request("POST", path, {
            "Content-Type": "application/json", "X-Kakb": "1", "Content-Length": len(body),
            **(headers or {})}, body, connection)

    def events(self, path="/api/v1/events", headers=None):
        """Opens the event stream."""
        connection = self.connect()
        connection.send(request_bytes("GET", path, {
            "Host": self.authority, **self.headers, **(headers or {})}))
        return EventStream(connection)

    def values(self, query=""):
        """All values, by tag."""
        return {value["tag"]: value for value in self.get("/api/v1/values" + query).json}

    def await_values(self, condition, seconds=PATIENCE_S):
        """Waits until the values, by tag, fulfil the condition; returns them."""
        found = {}

        def fulfilled():
            found.clear()
            found.update(self.values())
            return condition(found)
        assert eventually(fulfilled, seconds), f"never came true: {found}\n{self}"
        return found

    def await_good(self, seconds=PATIENCE_S):
        """Waits until every value is good; returns them, by tag."""
        return self.await_values(
            lambda values: values and all(value["quality"] == "good" for value in values.values()),
            seconds)

    def end(self, number=signal.SIGTERM, seconds=PATIENCE_S):
        """Ends the station; returns its exit status."""
        return self.signal(number, seconds)


class StationTest(CommandLineTest):
    """A folder of its own for each test; what a test starts ends with it."""

    def tags(self, *names, read_only=()):
        """Makes tags.csv of some of the tags that all tests share; inputs and those named as
        read-only may not be written."""
        fixed = {*read_only, *(name for name in names if TAGS[name][1][0] == "I")}
        rows = ((name, *TAGS[name], "ro" if name in fixed else "rw") for name in names)
        return self.file("tags.csv", table(rows, HEADER + ",access"))

    def station(self, options="", prefix=()):
        """Starts kakb-station on a port of its own; nothing of it stays behind the test.

        Without options it serves its own simulated PLC with the demo's tags. The prefix is a
        command that becomes the station."""
        words = shlex.split(options)
        if "--state" not in words:
            words += ["--state", self.folder / "state"]
        if "--listen" not in words and "--config" not in words:
            words += ["--listen", "127.0.0.1:0"]
        return self.keep(Station([*prefix, self.programs / "kakb-station", *words], self.folder))

    def refused(self, options, status, prefix=()):
        """Starts kakb-station, which must end with the status at once; returns its sentences."""
        run = self.keep(Program([*prefix, self.programs / "kakb-station", *shlex.split(options)],
                                self.folder))
        self.assertEqual((status, []), (run.wait(PATIENCE_S), run.lines), run)
        for sentence in run.errors:
            self.assertTrue(sentence.startswith("kakb-station: "), run)
        return [sentence.removeprefix("kakb-station: ") for sentence in run.errors]

    def station_with_plc(self, *names, options="", plc="", kind="tcp", read_only=()):
        """A simulated PLC and a station that serves some of its tags; returns both.

        The names are those of tagTables.TAGS; the link is named plc."""
        self.tags(*names, read_only=read_only)
        simulator = self.plc(kind, plc)
        return simulator, self.station(f"--link {simulator.link} --tags tags.csv {options}")
