"""What a program sees that subscribes to a station's JSON dialect, and what its sets do."""

import signal
import time

from mosquittoBroker import MosquittoBroker
from plcControl import PlcControl
from processes import matching
from retainedTopics import RetainedTopics
from stationProgram import StationTest
from tcpRelay import TcpRelay

STILL = "MW100"  # of the tag "still"
HERE = "plc/1/availability"
ALL_TOPICS = ("status", HERE, "plc/still", "plc/offset", "plc/count")
CHANGES = range(41, 46)
WAIT_MS = 100  # a value is as old as its answer can be: as the wait for it, and the pace


class PlantJson(StationTest):
    """One broker, one PLC with the tags "still" and "offset"; "count" may not be written."""

    def setUp(self):
        super().setUp()
        self.broker = self.started_broker()
        self.tags("still", "offset", "count")
        self.plc_on_tcp = self.plc("tcp", "--control control")
        self.control = PlcControl(self.folder / "control")
        self.addCleanup(self.control.close)

    def started_broker(self):
        return self.keep(MosquittoBroker(self.folder))

    def publisher(self, options="", url=None):
        return self.station(f"--link {self.plc_on_tcp.link} --tags tags.csv --pace 20ms "
                            f"--mqtt {url or self.broker.url} --mqtt-dialect json {options}")

    def subscriber(self):
        return self.keep(RetainedTopics(self.broker.port))

    def online(self, options=""):
        """A station that is online, and who sees it."""
        topics = self.subscriber()
        station = self.publisher(options)
        topics.await_word(HERE, "online")
        topics.await_word("status", "online")
        return station, topics

    def result(self, topics, tag, document):
        """Sets the tag; returns the result."""
        before = len(topics.on(f"plc/{tag}/result"))
        topics.publish(f"plc/{tag}/set", document)
        topics.await_that(lambda topics: len(topics.on(f"plc/{tag}/result")) > before)
        return topics.on(f"plc/{tag}/result")[-1]

    def test_who_comes_late_gets_everything_from_the_broker(self):
        self.control.command(f"set {STILL}=41")
        _, topics = self.online()
        for topic, value in {"plc/still": 41, "plc/offset": 0, "plc/count": 0}.items():
            topics.await_state(topic, value)
        late = self.subscriber()
        # The broker sends what it has kept in any order.
        late.await_that(lambda late: {*ALL_TOPICS} <= set(late.kept))
        late.await_state("plc/still", 41)
        late.await_word("status", "online")
        self.assertEqual({*ALL_TOPICS}, set(late.kept))
        self.assertTrue(all(was_kept for _, _, was_kept in late.came), late.came)

    def test_a_value_that_changes_is_told_once_with_the_time_of_its_answer(self):
        _, topics = self.online()
        topics.await_state("plc/still", 0)
        ages, times = [], []
        for value in CHANGES:
            before = time.time() * 1000
            self.control.command(f"set {STILL}={value}")
            topics.await_state("plc/still", value)
            told = topics.kept["plc/still"]["t"]
            self.assertLessEqual(told, time.time() * 1000)
            ages.append(before - told)
            times.append(told)
        # An answer may be as old as the one before it, or as a request that a busy machine left without
        # an answer.
        self.assertLessEqual(min(ages), WAIT_MS, ages)
        self.assertLess(times[0], times[-1])
        self.assertEqual([*CHANGES], [state["v"] for state in topics.on("plc/still")][-len(CHANGES):])

    def test_a_silent_plc_is_offline_until_its_values_are_good_again(self):
        _, topics = self.online()
        before = len(topics.came)
        self.control.command("silent 1 on")
        topics.await_word(HERE, "offline")
        topics.await_state("plc/still", 0, "bad")
        self.control.command(f"set {STILL}=43")
        self.control.command("silent 1 off")
        topics.await_word(HERE, "online")
        came = [payload if topic == HERE else payload["q"]
                for topic, payload, _ in topics.came[before:]]
        behind = came[came.index("offline"):]
        self.assertIn("good", behind[:behind.index("online")], topics.came)
        topics.await_state("plc/still", 43)

    def test_the_broker_says_offline_for_a_killed_station(self):
        station, topics = self.online()
        station.process.send_signal(signal.SIGKILL)
        topics.await_word("status", "offline")
        self.assertEqual("online", topics.kept[HERE])

    def test_a_station_that_ends_says_so_itself(self):
        station, topics = self.online()
        self.assertEqual(0, station.end())
        topics.await_word("status", "offline")
        words = [(topic, word) for topic, word, _ in topics.came if topic in (HERE, "status")]
        self.assertEqual([(HERE, "offline"), ("status", "offline")], words[-2:])

    def test_everything_comes_again_when_the_broker_has_forgotten_it(self):
        relay = self.keep(TcpRelay(("127.0.0.1", self.broker.port)))
        before = self.subscriber()
        self.publisher(url=f"mqtt://127.0.0.1:{relay.port}")
        before.await_word("status", "online")
        before.close()
        relay.cut()
        self.broker.kill()
        self.broker.start()
        again = self.subscriber()  # there before the station, so that it sees the order
        relay.resume()
        again.await_word("status", "online")
        order = [topic for topic, _, _ in again.came]
        states = [order.index(topic) for topic in ("plc/still", "plc/offset", "plc/count")]
        self.assertLess(max(states), order.index(HERE))
        self.assertLess(order.index(HERE), order.index("status"))

    def test_a_tag_that_a_reload_takes_out_is_cleared(self):
        self.file("station.toml", "\n".join(
            ['listen = "127.0.0.1:0"', "[mqtt]", f'servers = ["{self.broker.url}"]',
             'dialects = ["json"]', "[[link]]", 'name = "plc"',
             f'link = "{self.plc_on_tcp.link}"', 'tags = "tags.csv"']) + "\n")
        topics = self.subscriber()
        station = self.station("--config station.toml")
        topics.await_word("status", "online")
        self.tags("still", "count")
        station.process.send_signal(signal.SIGHUP)
        topics.await_that(lambda topics: "plc/offset" not in topics.kept)
        topics.await_word(HERE, "online")
        late = self.subscriber()
        late.await_word("status", "online")
        late.await_that(lambda late: "plc/still" in late.kept and "plc/count" in late.kept)
        self.assertNotIn("plc/offset", late.kept)

    def test_what_was_taken_out_while_the_station_was_down_is_cleared(self):
        station, topics = self.online()
        topics.await_state("plc/offset", 0)
        station.process.send_signal(signal.SIGKILL)
        station.process.wait()
        self.tags("still", "count")
        self.publisher()
        topics.await_that(lambda topics: "plc/offset" not in topics.kept)
        topics.await_word("status", "online")
        late = self.subscriber()
        late.await_that(lambda late: {"status", HERE, "plc/still", "plc/count"} <= set(late.kept))
        self.assertNotIn("plc/offset", late.kept)

    def test_a_set_is_confirmed_by_the_plc_and_has_its_line_in_the_record(self):
        station, topics = self.online("--allow-writes --mqtt-commands")
        self.assertEqual({"id": "a7", "outcome": "confirmed", "reason": None, "v": 4711},
                         self.result(topics, "still", {"v": 4711, "id": "a7"}))
        self.assertEqual("4711", self.control.command(f"get {STILL}"))
        topics.await_state("plc/still", 4711)
        self.assertTrue(matching(station.errors, r'from "mqtt://127\.0\.0\.1:\d+ kakb/kakb-station/'
                                 r'plc/still/set": write \d+ of "plc" "still" = 4711: confirmed'),
                        station)

    def test_a_set_that_must_not_be_written_is_refused(self):
        _, topics = self.online("--allow-writes --mqtt-commands")
        refusals = {"count": "tag \"count\" is read-only", "nothing": "no tag has this topic"}
        for tag, reason in refusals.items():
            result = self.result(topics, tag, {"v": 1, "id": 1})
            self.assertEqual((1, "refused", reason),
                             (result["id"], result["outcome"], result["reason"]))
        result = self.result(topics, "still", {"v": 1, "expires": int(time.time() * 1000) - 1000})
        self.assertRegex(result["reason"], r"^expired: .* clock says \d+$")
        self.assertEqual("0", self.control.command(f"get {STILL}"))

    def test_a_set_that_the_broker_kept_is_not_executed(self):
        topics = self.subscriber()
        topics.publish("plc/still/set", {"v": 4711, "id": 1}, retain=True)
        station = self.publisher("--allow-writes --mqtt-commands")
        topics.await_word(HERE, "online")
        self.assertEqual("confirmed", self.result(topics, "offset", {"v": 5, "id": 2})["outcome"])
        self.assertEqual([], topics.on("plc/still/result"))
        self.assertEqual("0", self.control.command(f"get {STILL}"))
        station.await_that(lambda: matching(station.errors, "it was retained by the broker"))

    def test_without_its_consent_a_station_takes_no_set(self):
        station, topics = self.online("--allow-writes")
        topics.publish("plc/still/set", {"v": 4711, "id": 1})
        station.post("/api/v1/write", {"link": "plc", "tag": "offset", "value": 5})
        topics.await_state("plc/offset", 5)
        self.assertEqual([], topics.on("plc/still/result"))
        self.assertEqual("0", self.control.command(f"get {STILL}"))
