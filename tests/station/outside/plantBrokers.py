"""Brokers that refuse, fall silent, or show the wrong certificate, and lists of them."""

import json
import socket
import subprocess
import time

from plantTest import DEVICE, PlantTest
from processes import eventually
from sparkplugMessages import command

PASSWORD = "a word"
WITH_COMMANDS = "--allow-writes --mqtt-commands"
BUSY_S = 5  # what a busy machine takes besides
ANSWER_S = 10  # how long a broker may let the station wait
PAUSES_S = 1, 2  # behind a refusal, and behind the next one
TRIES = len(PAUSES_S) + 1
GARBAGE = (b"", b"\xff" * 40, b"\x12\xff\xff\xff\xff\x7f", b"\x0a" * 1000, b"online",
           bytes(range(256)))


class PlantPasswords(PlantTest):
    """A broker that knows its clients."""

    def setUp(self):
        super().setUp()
        subprocess.run(["mosquitto_passwd", "-b", "-c", self.folder / "passwords", "press",
                        PASSWORD], check=True, capture_output=True)
        self.known = self.broker("allow_anonymous false",
                                 f"password_file {self.folder / 'passwords'}")
        self.tags("still")
        self.simulator = self.plc("tcp")

    def with_password(self, password):
        """A station that shows a password."""
        self.file("password", password + "\n").chmod(0o600)
        return self.configured(self.simulator, [f'servers = ["{self.known.url}"]',
                                                'user = "press"', 'password_file = "password"'])

    def refusals(self):
        """How often the broker has refused a client."""
        return self.known.output.read_text("utf-8").count("not authorised")

    def test_a_known_user_is_let_in(self):
        self.await_connected(self.with_password(PASSWORD))

    def test_each_dialect_is_a_client_of_its_own_with_the_name_that_the_configuration_gives(self):
        self.file("password", PASSWORD + "\n").chmod(0o600)
        station = self.configured(self.simulator, [
            f'servers = ["{self.known.url}"]', 'user = "press"', 'password_file = "password"',
            'dialects = ["sparkplug", "json"]', 'client_id = "press 7"', 'keep_alive = "77s"'])
        self.await_connected(station)
        for name in ("press 7", "press 7-json"):
            line = f"as {name} (p2, c1, k77, u'press')"  # MQTT 3.1.1, clean session, keep-alive
            self.assertTrue(eventually(
                lambda text=line: text in self.known.output.read_text("utf-8")), line)

    def test_a_wrong_password_is_refused_in_words_and_tried_again_with_pauses(self):
        began = time.monotonic()
        station = self.with_password("another word")
        standing = self.await_standing(station, lambda standing: standing["trouble"])
        self.assertIn("the broker says no: ", standing["trouble"])
        self.assertIn("not authorised", standing["trouble"])
        self.assertEqual(0, standing["sessions"])
        self.assertTrue(eventually(lambda: self.refusals() >= TRIES), self.refusals())
        self.assertGreaterEqual(time.monotonic() - began, sum(PAUSES_S))
        station.await_good()

    def test_each_refused_connect_takes_a_number(self):
        station = self.with_password("another word")
        self.await_standing(station, lambda standing: standing["trouble"])
        station.end()
        number = int((self.folder / "state" / "mqtt-sequence").read_text("utf-8"))
        # The broker may come to the last CONNECT only now.
        self.assertTrue(eventually(lambda: self.refusals() > number), self.refusals())
        self.assertEqual(number + 1, self.refusals())


class PlantCertificates(PlantTest):
    """Brokers with TLS."""

    def setUp(self):
        super().setUp()
        self.authority("plant")
        self.authority("stranger")
        self.tags("still")
        self.simulator = self.plc("tcp")

    def tls_broker(self, certificate, *lines):
        """A broker with a port for hosts and one for TLS; returns it and the second port."""
        port = self.held_port()
        broker = self.broker("allow_anonymous true", f"listener {port} 127.0.0.1",
                             f"certfile {self.folder / certificate}.pem",
                             f"keyfile {self.folder / certificate}.key", *lines)
        return broker, port

    def connected_to(self, host, port, *keys):
        """A station that trusts the plant's authority."""
        return self.configured(self.simulator, [f'servers = ["mqtts://{host}:{port}"]',
                                                'ca = "plant.pem"', *keys])

    def test_a_broker_of_the_plant_is_trusted_by_its_name_and_by_its_address(self):
        self.certificate("broker", "plant")
        broker, port = self.tls_broker("broker")
        host = self.host_at(broker)
        for number, name in enumerate(("localhost", "127.0.0.1")):
            station = self.connected_to(name, port)
            host.await_that(lambda host, n=number: host.births == n + 1 and DEVICE in host.born)
            station.end()

    def test_a_broker_of_another_authority_is_refused(self):
        self.certificate("broker", "stranger")
        self.refuse("localhost", "unable to get local issuer certificate")

    def test_a_certificate_of_another_name_is_refused(self):
        self.certificate("broker", "plant", "DNS:other.example,IP:127.0.0.2")
        self.refuse("localhost", "hostname mismatch")

    def test_a_certificate_of_another_address_is_refused(self):
        self.certificate("broker", "plant", "DNS:localhost,IP:127.0.0.2")
        self.refuse("127.0.0.1", "IP address mismatch")

    def refuse(self, host, reason):
        """The station refuses the broker, for the reason; no CONNECT leaves."""
        broker, port = self.tls_broker("broker")
        station = self.connected_to(host, port)
        standing = self.await_standing(station, lambda standing: standing["trouble"])
        self.assertEqual(f"the broker's certificate is refused: {reason}", standing["trouble"])
        station.end()
        seen = self.host_at(broker)
        self.published(self.simulator, broker.url)
        seen.await_that(lambda host: DEVICE in host.born)
        self.assertEqual(0, seen.bd_seq)

    def test_a_broker_that_asks_for_a_certificate_gets_that_of_the_station(self):
        self.certificate("broker", "plant")
        self.certificate("press", "plant", "DNS:press")
        broker, port = self.tls_broker("broker", f"cafile {self.folder / 'plant.pem'}",
                                       "require_certificate true", "use_identity_as_username true")
        station = self.connected_to("localhost", port, 'certificate = "press.pem"',
                                    'key = "press.key"')
        self.await_connected(station)
        self.assertTrue(eventually(lambda: "u'press'" in broker.output.read_text("utf-8")))
        station.end()
        without = self.connected_to("localhost", port)
        self.await_standing(without, lambda standing: standing["trouble"])

    def test_the_broker_is_told_the_name_that_is_wanted(self):
        self.certificate("broker", "plant")
        with socket.create_server(("127.0.0.1", 0)) as server:
            self.connected_to("localhost", server.getsockname()[1])
            connection, _ = server.accept()
            with connection:
                hello = b""
                while b"localhost" not in hello and len(hello) < 100:
                    hello += connection.recv(4096)
        self.assertIn(b"\x00\x09localhost", hello)


class PlantServers(PlantTest):
    """Lists of brokers."""

    def test_the_next_broker_is_taken_when_one_dies_and_the_first_when_that_dies(self):
        first, second = self.broker(), self.broker()
        self.tags("still")
        station = self.configured(
            self.plc("tcp"), [f'servers = ["{first.url}", "{second.url}"]'])
        self.await_connected(station, first.url)
        first.kill()
        self.await_connected(station, second.url)
        first.start()
        host = self.host_at(first)
        second.kill()
        self.await_connected(station, first.url)
        host.await_that(lambda host: DEVICE in host.born)
        self.assertEqual(2, host.bd_seq, "one number each")

    def test_a_broker_that_takes_the_connection_and_says_nothing_is_passed_over(self):
        broker = self.broker()
        self.tags("still")
        with socket.create_server(("127.0.0.1", 0)) as silent:
            station = self.configured(
                self.plc("tcp"),
                [f'servers = ["mqtt://127.0.0.1:{silent.getsockname()[1]}", "{broker.url}"]'])
            station.await_good()
            self.await_connected(station, broker.url, ANSWER_S + BUSY_S)

    def test_values_are_read_while_no_broker_is_there(self):
        _, station = self.publisher(f"mqtt://127.0.0.1:{self.held_port()}")
        station.await_good()
        self.control.command("set MW100=9")
        station.await_values(lambda values: values["still"]["value"] == 9)
        self.await_standing(station, lambda standing: standing["trouble"] == "Connection refused")


class PlantForeignCommands(PlantTest):
    """What anybody may send to the topics of commands."""

    def setUp(self):
        super().setUp()
        self.at = self.broker()
        self.watching = self.host_at(self.at)
        self.simulator, self.served = self.publisher(self.at.url, WITH_COMMANDS)
        self.watching.await_that(lambda host: host.value(DEVICE, "still")[1] == "good")

    def test_garbage_is_counted_and_ends_nothing(self):
        for number, payload in enumerate(GARBAGE):
            self.watching.send("NCMD", payload)
            self.watching.send("DCMD", payload, DEVICE)
            self.watching.send("DCMD", payload, f"nobody-{number}")
            self.watching.send("DCMD", payload, f"{DEVICE}/{number}")
        self.control.command("set MW100=12")
        self.watching.await_that(lambda host: host.value(DEVICE, "still") == (12, "good"))
        self.await_standing(self.served, lambda standing: standing["refusedCommands"] > 0)
        standing = self.standing(self.served)
        self.assertEqual(1, standing["sessions"])
        self.assertEqual(1, self.watching.births)

    def test_what_names_nothing_that_can_be_written_writes_nothing(self):
        for payload in (command("nothing", datatype=6, int_value=4), command(alias=987654),
                        command("still", datatype=6), command("still", datatype=6, is_null=True),
                        command("still", datatype=12, string_value="4"),
                        command("still", datatype=6, int_value=65536),
                        command("offset", datatype=2, int_value=32768 + 65536)):
            self.watching.send("DCMD", payload, DEVICE)
        self.await_standing(self.served, lambda standing: standing["refusedCommands"] >= 7)
        self.control.command("set MW100=3")
        self.watching.await_that(lambda host: host.value(DEVICE, "still") == (3, "good"))
        self.assertEqual(0, self.served.values()["offset"]["value"])

    def test_a_command_writes_and_its_value_comes_back_as_data(self):
        self.watching.send("DCMD", command("still", datatype=6, int_value=321), DEVICE)
        self.watching.await_that(lambda host: host.value(DEVICE, "still") == (321, "good"))
        self.watching.await_that(lambda host: host.value(DEVICE, "Commands/Outcome")[0])
        end = json.loads(self.watching.value(DEVICE, "Commands/Outcome")[0])
        self.assertEqual(("still", "confirmed"), (end["metric"], end["outcome"]))
        self.assertIn(f'from "{self.at.url} spBv1.0/kakb/DCMD/', self.served.err)

    def test_a_retained_command_is_never_executed(self):
        self.served.end()
        self.watching.send("DCMD", command("still", datatype=6, int_value=99), DEVICE, retain=True)
        self.watching.send("NCMD", command("Node Control/Rebirth", datatype=11, boolean_value=True),
                           retain=True)
        births = self.watching.births
        self.served = self.published(self.simulator, self.at.url, WITH_COMMANDS)
        self.watching.await_that(lambda host: host.births == births + 1 and DEVICE in host.born)
        self.await_standing(self.served, lambda standing: standing["refusedCommands"] >= 2)
        self.served.await_good()
        self.assertNotEqual(99, self.served.values()["still"]["value"])
        self.assertEqual(births + 1, self.watching.births)


class PlantPrimaryHost(PlantTest):
    """A station that publishes only while one host application is there."""

    HOST = "scada"

    def tell(self, broker, online, moment):
        """The host's STATE, retained as hosts keep it."""
        document = json.dumps({"online": online, "timestamp": moment})
        self.subscriber(broker).client.publish(f"spBv1.0/STATE/{self.HOST}", document, 1,
                                               True).wait_for_publish()

    def test_births_wait_for_the_host_and_end_with_it(self):
        broker = self.broker()
        host = self.host_at(broker)
        _, station = self.publisher(broker.url, f"--mqtt-primary-host {self.HOST}")
        station.await_good()
        self.tell(broker, False, 1000)
        self.await_standing(station, lambda standing: "offline" in (standing["trouble"] or ""))
        self.assertEqual([], host.messages)
        self.tell(broker, True, 2000)
        host.await_that(lambda host: DEVICE in host.born)
        self.tell(broker, False, 1500)
        self.control.command("set MW100=8")
        host.await_that(lambda host: host.value(DEVICE, "still") == (8, "good"))
        self.assertNotIn("NDEATH", host.kinds(), "what is older than online is old news")
        self.tell(broker, False, 3000)
        host.await_that(lambda host: host.kinds()[-1] == "NDEATH")

    def test_the_next_broker_is_taken_when_the_host_is_offline_at_one(self):
        first, second = self.broker(), self.broker()
        self.tell(first, False, 1000)
        self.tell(second, True, 500)
        self.tags("still")
        station = self.configured(self.plc("tcp"), [
            f'servers = ["{first.url}", "{second.url}"]', f'primary_host = "{self.HOST}"'])
        self.await_connected(station, second.url)
