"""The stream of values from the real program: full at first, then what changes, and the beats."""

import signal
import time
from statistics import median

from plcControl import PlcControl
from processes import SLOWER
from stationProgram import StationTest

BEATS = 6
VALUE_KEYS = ["link", "tag", "station", "address", "type", "value", "quality", "time", "changed",
              "trouble", "writable"]


class Values:
    """What a client of the stream knows: the messages applied one after the other."""

    def __init__(self):
        self.known = {}

    def apply(self, event):
        """Takes a message of the stream."""
        data = event["data"]
        if event["event"] == "values":
            if data["full"]:
                self.known = {}
            for value in data["values"]:
                self.known.setdefault((value["link"], value["tag"]), {}).update(value)
        elif event["event"] == "beat":
            for link, tag, seen in data["seen"]:
                self.known[link, tag]["time"] = seen


class StreamOfValues(StationTest):
    """One simulated PLC, one client."""

    def started(self, *names, plc="", options=""):
        """A PLC whose control socket is "control", the station, and a stream behind its first
        message with only good values."""
        self.simulator, self.running = self.station_with_plc(
            *names, plc=f"--control control {plc}", options=options)
        self.running.await_good()
        self.opened = time.monotonic()
        return self.running.events()

    def command(self, text):
        """Changes the simulated PLC while it runs."""
        control = PlcControl(self.folder / "control")
        try:
            control.command(text)
        finally:
            control.close()

    def test_is_a_stream_of_server_sent_events(self):
        with self.started("still") as stream:
            self.assertEqual(200, stream.head.status)
            self.assertEqual("text/event-stream", stream.head.headers["content-type"])
            self.assertEqual("no-store", stream.head.headers["cache-control"])

    def test_first_message_is_what_values_says(self):
        with self.started("still", "level", "lamp", "batch") as stream:
            first = stream.next()
            self.assertEqual("values", first["event"])
            self.assertIs(True, first["data"]["full"])
            told = self.running.get("/api/v1/values").json
            self.assertEqual([VALUE_KEYS] * 4, [list(value) for value in first["data"]["values"]])
            for value in first["data"]["values"] + told:
                value["time"] = None  # every answer moves it
            self.assertEqual(told, first["data"]["values"])

    def test_change_comes_with_the_changed_fields_alone(self):
        with self.started("still", "mode") as stream:
            stream.next("values")
            self.command("set MW100=77")
            change = stream.next("values")["data"]
            self.assertIs(False, change["full"])
            self.assertEqual(1, len(change["values"]))
            self.assertEqual({"link": "plc", "tag": "still", "value": 77},
                             {key: value for key, value in change["values"][0].items()
                              if key not in ("time", "changed")})

    def test_messages_applied_are_the_values(self):
        with self.started("still", "mode", "count", plc="--demo-signals") as stream:
            values, ids = Values(), []

            def take_until(condition):
                while not condition():
                    event = stream.next()
                    values.apply(event)
                    ids.append(int(event["id"]))

            end = time.monotonic() + 3
            take_until(lambda: time.monotonic() > end and len(ids) > 20)
            self.command("set MW100=3")
            self.command("set MW300=4")
            told = self.running.await_values(
                lambda told: told["still"]["value"] == 3 and told["mode"]["value"] == 4)
            take_until(lambda: (values.known["plc", "still"]["value"],
                                values.known["plc", "mode"]["value"]) == (3, 4))
            for tag in ("still", "mode"):
                self.assertEqual({**told[tag], "time": None},
                                 {**values.known["plc", tag], "time": None})
            self.assertEqual(sorted(set(ids)), ids)

    def test_comes_at_most_ten_times_a_second(self):
        with self.started("count", options="--pace 10ms",
                          plc="--signal 1:IW:0:counter:5:60000") as stream:
            end, count = time.monotonic() + 3, 0
            while time.monotonic() < end or count <= 20:
                stream.next("values")
                count += 1
            # A client that reads late finds more in a moment, and not more since it came.
            self.assertLessEqual(count, 10 * (time.monotonic() - self.opened) + 1)

    def test_beats_each_second_with_the_times_that_moved_alone(self):
        with self.started("still") as stream:
            stream.next("values")
            beats = [stream.next("beat")["data"] for _ in range(BEATS)]
            gaps, ages = [], []
            for before, after in zip(beats, beats[1:]):
                self.assertEqual([["plc", "still"]], [seen[:2] for seen in after["seen"]])
                self.assertGreater(after["seen"][0][2], before["seen"][0][2])
                gaps.append(after["time"] - before["time"])
                ages.append(after["time"] - after["seen"][0][2])
            # A busy machine makes single beats late.
            self.assertLess(abs(median(gaps) - 1000), 300 * SLOWER, gaps)
            self.assertLess(median(ages), 1000 * SLOWER, ages)

    def test_tells_that_the_link_is_lost(self):
        with self.started("still", "mode") as stream:
            stream.next("values")
            self.simulator.kill()
            lost = stream.next("values")["data"]
            self.assertEqual({"still": "bad", "mode": "bad"},
                             {value["tag"]: value["quality"] for value in lost["values"]})
            for value in lost["values"]:
                self.assertTrue(value["trouble"])
                self.assertNotIn("value", value)  # it stays as it was

    def test_tells_that_a_plc_has_stopped(self):
        with self.started("still") as stream:
            stream.next("values")
            self.simulator.run.process.send_signal(signal.SIGSTOP)
            try:
                old = stream.next("values")["data"]["values"][0]
                self.assertIn(old["quality"], ("stale", "bad"))
                self.assertTrue(old["trouble"])
            finally:
                self.simulator.run.process.send_signal(signal.SIGCONT)
            while old.get("quality") != "good":
                old = stream.next("values")["data"]["values"][0]
            self.assertIsNone(old["trouble"])


class StreamOverAReload(StationTest):
    """Two links with their own simulated PLCs; SIGHUP takes one out and brings it back."""

    def setUp(self):
        super().setUp()
        self.tags("still", "mode")
        self.links = {name: self.plc("tcp", "").link for name in ("stays", "goes")}
        self.configure("stays", "goes")
        self.running = self.station("--config station.toml")
        self.running.await_good()

    def configure(self, *names):
        """Writes the configuration with some of the links."""
        self.file("station.toml", 'listen = "127.0.0.1:0"\n' + "".join(
            f'[[link]]\nname = "{name}"\nlink = "{self.links[name]}"\ntags = "tags.csv"\n'
            for name in names))

    def reload(self, *names):
        """Lets the station read its configuration with these links."""
        self.configure(*names)
        self.running.process.send_signal(signal.SIGHUP)

    def test_links_come_and_go_with_full_messages(self):
        with self.running.events() as stream:
            first = stream.next("values")["data"]
            self.assertEqual({"stays", "goes"}, {value["link"] for value in first["values"]})
            for names in ({"stays"}, {"stays", "goes"}):
                self.reload(*sorted(names))
                message = stream.next("values")["data"]
                while not message["full"]:
                    message = stream.next("values")["data"]
                self.assertEqual(names, {value["link"] for value in message["values"]})
