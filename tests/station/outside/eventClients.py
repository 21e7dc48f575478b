"""Clients of the stream that come back, stop reading, or are many, against the real program."""

import time

from httpClient import EventStream, request_bytes
from stationProgram import StationTest

PATH = "/api/v1/events"


class ClientsOfTheStream(StationTest):
    """A station with its own simulated PLC, whose signals change all the time."""

    def setUp(self):
        super().setUp()
        self.running = self.station("--allow-writes")
        self.running.await_good()

    def back(self, last_id):
        """A client that knows the messages until an id."""
        return self.running.events(headers={"Last-Event-ID": str(last_id)})

    def write(self, value):
        """Writes a tag of the demo."""
        answer = self.running.post("/api/v1/write", {
            "link": "plc", "tag": "setpoint", "value": value})
        self.assertEqual(200, answer.status, answer)
        return answer.json

    def test_ids_count_up_also_from_run_to_run(self):
        with self.running.events() as stream:
            first = [int(stream.next()["id"]) for _ in range(10)]
        self.assertEqual(sorted(set(first)), first)
        self.assertLess(first[-1], 2 ** 53)
        self.running.end()
        self.running = self.station("--allow-writes")
        with self.running.events() as stream:
            self.assertGreater(int(stream.next()["id"]), first[-1])

    def test_client_that_comes_back_gets_the_events_since_and_a_snapshot(self):
        with self.running.events() as stream:
            last_id = stream.next()["id"]
        outcomes = [self.write(value) for value in (11, 12)]
        with self.back(last_id) as stream:
            events = [stream.next() for _ in range(3)]
        self.assertEqual(["write", "write", "values"], [event["event"] for event in events])
        self.assertEqual([outcome["id"] for outcome in outcomes],
                         [event["data"]["id"] for event in events[:2]])
        self.assertIs(True, events[2]["data"]["full"])

    def test_new_client_gets_no_old_events(self):
        self.write(11)
        with self.running.events() as stream:
            self.assertEqual("values", stream.next()["event"])
            outcome = self.write(12)
            self.assertEqual(outcome["id"], stream.next("write")["data"]["id"])

    def test_id_of_another_run_brings_all_events_and_a_snapshot(self):
        self.write(11)
        for last_id in ("1", "17", "9000000000000000", "not a number"):
            with self.subTest(last_id), self.back(last_id) as stream:
                names = [stream.next()["event"]]
                while names[-1] != "values":
                    names.append(stream.next()["event"])
                self.assertIn("write", names)

    def test_frames_come_only_to_whom_asks_for_them(self):
        with self.running.events() as plain, self.running.events(PATH + "?frames=plc") as watcher:
            frames = watcher.next("frame")["data"]
            self.assertEqual(["link", "first", "frames"], list(frames))
            self.assertEqual("plc", frames["link"])
            for frame in frames["frames"]:
                self.assertEqual(["time", "direction", "hex", "meaning"], list(frame))
            following = watcher.next("frame")["data"]
            self.assertEqual(frames["first"] + len(frames["frames"]), following["first"])
            end = time.monotonic() + 1.5
            while time.monotonic() < end:
                self.assertNotEqual("frame", plain.next()["event"])

    def test_frames_of_an_unknown_link_are_not_found(self):
        answer = self.running.get(PATH + "?frames=nobody")
        self.assertEqual(404, answer.status)
        self.assertTrue(answer.error)

    def test_many_clients_get_the_same_messages(self):
        streams = [self.running.events() for _ in range(20)]
        try:
            for stream in streams:
                while not stream.next("values")["data"]["full"]:
                    pass
            wanted = [streams[0].next() for _ in range(15)][5:]
            for stream in streams[1:]:
                event = stream.next()
                while int(event["id"]) < int(wanted[0]["id"]):
                    event = stream.next()
                self.assertEqual(wanted, [event] + [stream.next() for _ in wanted[1:]])
        finally:
            for stream in streams:
                stream.close()


class AllConnectionsAreStreams(StationTest):
    """As many streams as the station has connections."""

    MOST = 64

    def test_the_64_go_on_while_another_connection_gets_503_and_is_closed(self):
        running = self.station()
        running.await_good()
        streams = [self.keep(running.events()) for _ in range(self.MOST)]
        for stream in streams:
            self.assertEqual(200, stream.head.status)
            self.assertIs(True, stream.next("values")["data"]["full"])
        for path in (PATH, "/api/v1/values", "/healthz"):
            with self.subTest(path=path), running.connect() as one_more:
                one_more.send(request_bytes("GET", path, {"Host": running.authority}))
                answer = one_more.answer()
                self.assertEqual((503, ["error"]), (answer.status, list(answer.json)))
                self.assertTrue(one_more.is_closed())
        for stream in streams:  # two beats came behind the refusals
            beats = [stream.next("beat")["data"]["time"] for _ in range(3)]
            self.assertGreater(beats[-1], beats[0])
            stream.next("values")
        streams.pop().close()
        with self.opened(running) as stream:
            self.assertIs(True, stream.next("values")["data"]["full"])

    @staticmethod
    def opened(running):
        """A stream, once there is room for it."""
        while True:
            stream = running.events()
            if stream.head.status == 200:
                return stream
            stream.close()


class ClientThatStopsReading(StationTest):
    """1,000 words that change all the time: a socket's buffers are soon full."""

    WORDS = 1000
    FIRST_MARKER = 3000

    def setUp(self):
        super().setUp()
        rows = [f"w{word},1,MW,{2 * word},uint16" for word in range(self.WORDS)]
        self.file("tags.csv", "\n".join(["name,station,area,address,type", *rows, ""]))
        signals = " ".join(f"--signal 1:MW:{self.FIRST_MARKER + word}:counter:50:60000"
                           for word in range(self.WORDS))
        simulator = self.plc("tcp", signals)
        self.running = self.station(f"--link {simulator.link} --tags tags.csv")
        self.running.await_good()

    def stopped(self):
        """A client that has asked and takes nothing."""
        connection = self.keep(self.running.connect())
        connection.send(request_bytes("GET", PATH, {"Host": self.running.authority}))
        return connection

    def test_others_get_every_message_and_it_gets_a_snapshot_when_it_goes_on(self):
        stopped = self.stopped()
        with self.running.events() as reading:
            reading.next("values")
            end = time.monotonic() + 12
            count = 0
            while time.monotonic() < end or count <= 80:
                event = reading.next("values")
                self.assertIs(False, event["data"]["full"])
                count += 1
        goes_on = time.time() * 1000
        stream = self.keep(EventStream(stopped))
        first = stream.next("values")
        self.assertIs(True, first["data"]["full"])
        last = stream.next("values")
        while not last["data"]["full"]:  # what lay in the buffers, then the gap
            last = stream.next("values")
        self.assertEqual(self.WORDS, len(last["data"]["values"]))
        self.assertGreater(int(last["id"]), int(event["id"]))
        self.assertGreater(min(value["time"] for value in last["data"]["values"]), goes_on - 2000)
