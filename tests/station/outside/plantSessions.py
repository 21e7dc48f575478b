"""What a station publishes while a session begins, goes on and ends."""

import json
import signal
import time

from plantTest import DEVICE, PlantTest
from processes import PATIENCE_S, eventually
from sparkplugMessages import command
from tcpRelay import TcpRelay

STILL = "MW100"  # of the tag "still"
STOP_S = 2
TRIES = 5
WAIT_MS = 100  # a value is as old as its answer can be: as the wait for it, and the pace
KEEP_ALIVE_S = 5
# The broker waits one and a half keep-alives, the station two.
HALF_OPEN_S = 4 * KEEP_ALIVE_S
LONGEST_PAUSE_S = 30  # ahead of the station's next try
REBIRTH = command("Node Control/Rebirth", datatype=11, boolean_value=True)
IN_TOKYO = ("env", "TZ=JST-9")  # nine hours ahead of UTC, which all times are of


class PlantSessions(PlantTest):
    """One broker, one host, one PLC."""

    def test_births_hold_each_tag_and_data_what_changed_with_the_time_of_the_answer(self):
        broker = self.broker()
        host = self.host_at(broker)
        started = time.time() * 1000
        _, station = self.publisher(broker.url, prefix=IN_TOKYO)
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        self.assertEqual(["NBIRTH", f"DBIRTH {DEVICE}"], host.kinds()[:2])
        self.assertEqual({"still", "offset"},
                         {metric.name for metric in host.messages[1][2].metrics})
        born = time.time() * 1000
        for _, _, birth, _ in host.messages[:2]:
            self.assertLessEqual(int(started), birth.timestamp)
            self.assertLessEqual(birth.timestamp, born)
        ages, times = [], []
        for value in range(41, 41 + TRIES):
            before = time.time() * 1000
            self.control.command(f"set {STILL}={value}")
            host.await_that(lambda host, v=value: host.value(DEVICE, "still") == (v, "good"))
            [told] = {sample.time for sample in host.samples
                      if (sample.name, sample.value) == ("still", value)}
            self.assertLessEqual(told, time.time() * 1000)
            ages.append(before - told)
            times.append(told)
        # An answer may be as old as the one before it, or as a request that a busy machine left without
        # an answer.
        self.assertLessEqual(min(ages), WAIT_MS, ages)
        self.assertLess(times[0], times[-1])
        self.assertEqual(1, self.standing(station)["sessions"])

    def test_what_does_not_change_is_not_repeated(self):
        broker = self.broker()
        host = self.host_at(broker)
        self.publisher(broker.url)
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        host.await_that(lambda host: host.value(DEVICE, "offset")[1] == "good")
        for value in range(3):
            self.control.command(f"set {STILL}={value + 7}")
            host.await_that(lambda host, v=value: host.value(DEVICE, "still") == (v + 7, "good"))
        data = [sample.name for sample in host.samples if sample.came > host.messages[1][3]]
        self.assertLessEqual(data.count("offset"), 1, "only its first value may follow the birth")

    def test_what_births_have_told_is_not_repeated_behind_them(self):
        broker = self.broker()
        host = self.host_at(broker)
        relay = self.keep(TcpRelay(("127.0.0.1", broker.port)))
        self.publisher(f"mqtt://127.0.0.1:{relay.port}")
        for name in ("still", "offset"):
            host.await_that(lambda host, n=name: host.value(DEVICE, n) == (0, "good"))

        def cut():
            relay.cut()
            relay.resume()
        for births, again in enumerate((lambda: host.send("NCMD", REBIRTH), cut), 2):
            again()
            host.await_that(lambda host, n=births: host.births == n and DEVICE in host.born,
                            LONGEST_PAUSE_S)
            self.control.command(f"set {STILL}={births}")
            host.await_that(lambda host, n=births: host.value(DEVICE, "still") == (n, "good"))
        data = [(sample.births, sample.name, sample.value) for sample in host.samples
                if not sample.is_birth and not sample.is_historical
                and sample.device == DEVICE and sample.births > 1]
        self.assertEqual([(2, "still", 2), (3, "still", 3)], data)

    def test_a_silent_plc_dies_and_is_born_again_with_all_metrics(self):
        broker = self.broker()
        host = self.host_at(broker)
        self.publisher(broker.url)
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        self.control.command("silent 1 on")
        host.await_that(lambda host: f"DDEATH {DEVICE}" in host.kinds())
        self.control.command(f"set {STILL}=77")
        self.control.command("silent 1 off")
        host.await_that(lambda host: host.value(DEVICE, "still") == (77, "good"))
        births = [payload for kind, device, payload, _ in host.messages if kind == "DBIRTH"]
        self.assertEqual([2, 2], [len(birth.metrics) for birth in births])
        self.assertEqual(1, host.births)

    def test_a_link_that_is_lost_kills_its_device_until_it_is_back(self):
        broker = self.broker()
        host = self.host_at(broker)
        self.tags("still", "offset")
        simulator = self.plc("tcp")
        relay = self.keep(TcpRelay(("127.0.0.1", int(simulator.link.rsplit(",", 1)[1]))))
        self.station(f"--link tcp:127.0.0.1,{relay.port} --tags tags.csv --pace 20ms "
                     f"--pause-ms 50 --mqtt {broker.url}")
        host.await_that(lambda host: host.value(DEVICE, "still") == (0, "good"))
        relay.cut()
        # Data of the node may come right behind it.
        host.await_that(lambda host: f"DDEATH {DEVICE}" in host.kinds())
        relay.resume()
        host.await_that(lambda host: host.kinds().count(f"DBIRTH {DEVICE}") >= 2)
        host.await_that(lambda host: host.value(DEVICE, "still") == (0, "good"))
        self.assertEqual(1, host.births)

    def test_the_broker_publishes_the_death_of_a_killed_station(self):
        broker = self.broker()
        host = self.host_at(broker)
        _, station = self.publisher(broker.url)
        host.await_that(lambda host: DEVICE in host.born)
        born = host.bd_seq
        station.process.send_signal(signal.SIGKILL)
        host.await_that(lambda host: host.kinds()[-1] == "NDEATH")
        self.assertEqual(born, host.messages[-1][2].metrics[0].long_value)
        self.assertFalse(host.born)

    def test_a_station_that_ends_says_so_itself_within_two_seconds(self):
        broker = self.broker()
        host = self.host_at(broker)
        plc, first = self.publisher(broker.url)

        def end(station):
            host.await_that(lambda host: DEVICE in host.born)
            self.assertEqual(0, station.end())
            host.await_that(lambda host: host.kinds()[-1] == "NDEATH")
        ends = self.assert_soon_ended(STOP_S, first, end,
                                      lambda: self.published(plc, broker.url))
        self.assertEqual(ends, host.kinds().count("NDEATH"), "the will is forgotten")
        self.assertEqual(ends, host.kinds().count(f"DDEATH {DEVICE}"))
        self.assert_left(broker)

    def assert_soon_ended(self, seconds, station, end, start):
        """A station ends in time: end(STATION) ends it. A busy machine makes single ends late, so the
        quickest of some counts; returns how many stations have ended."""
        taken = []
        while len(taken) < TRIES and not (taken and taken[-1] <= seconds):
            station = start() if taken else station
            end(station)
            taken.append(station.milliseconds / 1000)
        self.assertLessEqual(min(taken), seconds, taken)
        return len(taken)

    def test_a_write_that_the_end_cuts_off_has_its_outcome_ahead_of_the_death(self):
        broker = self.broker()
        host = self.host_at(broker)
        _, station = self.publisher(broker.url, "--allow-writes --mqtt-commands --timeout-ms 5000")
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        self.control.command("silent 1 on")
        host.send("DCMD", command("still", datatype=6, int_value=5), DEVICE)
        self.await_standing(station, lambda standing: standing["commands"] == 1)
        self.assertEqual(0, station.end())
        host.await_that(lambda host: host.kinds()[-1] == "NDEATH")
        outcomes = [json.loads(sample.value) for sample in host.samples
                    if sample.name == "Commands/Outcome" and sample.value]
        self.assertEqual([("still", "failed")],
                         [(outcome["metric"], outcome["outcome"]) for outcome in outcomes])

    def assert_left(self, broker):
        """The station's last word to the broker was a DISCONNECT."""
        line = "Client kakb-kakb-kakb-station-4 disconnected."
        self.assertTrue(eventually(lambda: line in broker.output.read_text("utf-8")))

    def test_a_broker_that_answers_nothing_does_not_delay_the_end(self):
        broker = self.broker()
        relay = self.keep(TcpRelay(("127.0.0.1", broker.port)))
        plc, first = self.publisher(f"mqtt://127.0.0.1:{relay.port}")

        def end(station):
            self.await_connected(station)
            relay.freeze()
            self.assertEqual(0, station.end())
            relay.cut()
            relay.resume()
        self.assert_soon_ended(STOP_S + 0.5, first, end,
                               lambda: self.published(plc, f"mqtt://127.0.0.1:{relay.port}"))

    def test_a_connection_that_stands_still_is_given_up_and_told_dead(self):
        broker = self.broker()
        host = self.host_at(broker)
        relay = self.keep(TcpRelay(("127.0.0.1", broker.port)))
        self.tags("still")
        plc = self.plc("tcp")
        station = self.configured(plc, [f'servers = ["mqtt://127.0.0.1:{relay.port}"]',
                                        f'keep_alive = "{KEEP_ALIVE_S}s"'])
        host.await_that(lambda host: DEVICE in host.born)
        relay.freeze()
        host.await_that(lambda host: "NDEATH" in host.kinds(), HALF_OPEN_S)
        self.await_standing(station, lambda standing: standing["state"] != "connected", HALF_OPEN_S)
        relay.cut()
        relay.resume()
        host.await_that(lambda host: host.births >= 2 and DEVICE in host.born, HALF_OPEN_S)

    def test_the_number_of_the_session_goes_on_over_restarts_and_refused_connections(self):
        broker = self.broker()
        host = self.host_at(broker)
        plc, station = self.publisher(broker.url)
        seen = []

        def await_session():
            host.await_that(lambda host: host.bd_seq not in (None, *seen) and DEVICE in host.born)
            seen.append(host.bd_seq)
        await_session()
        station.end()
        station = self.published(plc, broker.url)
        await_session()
        broker.kill()
        self.await_standing(station, lambda standing: standing["trouble"] == "Connection refused")
        broker.start()
        self.await_standing(station, lambda standing: standing["state"] == "connected",
                            LONGEST_PAUSE_S + PATIENCE_S)
        # The station may have been back before this host, which then saw no birth.
        host.await_subscription()
        host.send("NCMD", REBIRTH)
        await_session()
        station.process.send_signal(signal.SIGKILL)
        station.wait(PATIENCE_S)
        self.published(plc, broker.url)
        await_session()
        self.assertEqual([0, 1, 2, 3], seen, "one for each CONNECT that left, and no other")

    def test_a_host_that_lost_track_gets_all_births_anew_in_the_same_session(self):
        broker = self.broker()
        host = self.host_at(broker)
        _, station = self.publisher(broker.url)
        host.await_that(lambda host: DEVICE in host.born)
        before = host.bd_seq
        host.send("NCMD", REBIRTH)
        host.await_that(lambda host: host.births == 2 and DEVICE in host.born)
        self.assertEqual(before, host.bd_seq)
        self.assertNotIn("NDEATH", host.kinds())
        self.assertEqual(1, self.standing(station)["sessions"])

    def test_a_tag_that_a_reload_adds_is_in_births_of_the_same_session(self):
        broker = self.broker()
        host = self.host_at(broker)
        self.tags("still")
        plc = self.plc("tcp")
        station = self.configured(plc, [f'servers = ["{broker.url}"]'])
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        number = host.bd_seq
        self.tags("still", "offset")
        station.process.send_signal(signal.SIGHUP)
        host.await_that(lambda host: host.value(DEVICE, "offset")[1] == "good")
        self.assertEqual(number, host.bd_seq)
        self.assertNotIn("NDEATH", host.kinds())

    def test_a_reload_whose_tags_are_no_metrics_is_refused_whatever_it_says_of_brokers(self):
        broker = self.broker()
        host = self.host_at(broker)
        self.tags("still")
        plc = self.plc("tcp")
        station = self.configured(plc, [f'servers = ["{broker.url}"]', "commands = true"],
                                  "--allow-writes")
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        table = (self.folder / "tags.csv").read_text("utf-8")
        self.file("tags.csv", table + table.splitlines()[-1].replace("still", "Commands/Outcome")
                  + "\n")
        config = (self.folder / "station.toml").read_text("utf-8")
        for mqtt in ("", f'[mqtt]\nservers = ["{broker.url}"]\ndialects = ["json"]\n'):
            with self.subTest(mqtt=mqtt):
                said = len(station.errors)
                self.file("station.toml", 'listen = "127.0.0.1:0"\n' + mqtt
                          + config[config.index("[[link]]"):])
                station.process.send_signal(signal.SIGHUP)
                station.await_that(lambda said=said: len(station.errors) > said + 1)
                self.assertIn("is the metric that tells the ends of commands",
                              station.errors[said])
        host.send("NCMD", REBIRTH)
        host.await_that(lambda host: host.births == 2 and DEVICE in host.born)
        self.assertEqual({"still", "Commands/Outcome"},
                         {metric.name for metric in host.messages[-1][2].metrics})

    def test_a_node_without_a_history_publishes_as_well(self):
        broker = self.broker()
        host = self.host_at(broker)
        _, station = self.publisher(broker.url, "--no-history")
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")
        self.control.command(f"set {STILL}=5")
        host.await_that(lambda host: host.value(DEVICE, "still") == (5, "good"))
        self.assertFalse((self.folder / "state" / "history.sqlite").exists())
        self.assertTrue(eventually(lambda: self.standing(station)["sent"] > 0))
