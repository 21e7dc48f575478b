"""The plant of docs/plant.md, built as the document says: its commands, its configurations and its list
of rights, on ports of this machine."""

import json
import ssl
import subprocess
import sys
import time
import tomllib
from itertools import islice
from pathlib import Path

from mosquittoBroker import MosquittoBroker
from plantTest import PlantTest, Subscriber
from processes import PATIENCE_S, eventually
from sparkplugHost import SparkplugHost
from sparkplugMessages import command

PROJECT = Path(__file__).resolve().parents[3]
DEVICE = "mixer-1"
RECENT_MS = 60000
GROUP, FIRST, SECOND = "north", "mixing", "press"
TAGS = """name,station,area,address,type,access
setpoint,1,MW,100,uint16,rw
level,1,MW,110,uint16,ro
"""


def blocks():
    """The blocks of the document."""
    sys.path.insert(0, str(PROJECT / "tests" / "documents"))
    from documentBlocks import blocks_of  # pylint: disable=import-outside-toplevel
    return blocks_of(PROJECT / "docs" / "plant.md", "plant.md")


class DocumentedPlant(PlantTest):
    """Two stations, a broker with users and TLS, and the programs of the document."""

    def setUp(self):
        super().setUp()
        self.blocks = blocks()
        self.tls_port, self.dead_port = self.held_port(), self.held_port()
        self.make_secrets()
        self.file("acl", self.here(self.shown("acl")) + self.part_of_the_other_station())
        settings = self.shown("plant.conf").replace("8883", f"{self.tls_port} 127.0.0.1")
        self.at = self.keep(MosquittoBroker(
            self.folder, [self.here(line) for line in settings.splitlines()] +
            [f"persistence_location {self.folder}/"]))
        self.file("tags.csv", TAGS)

    def shown(self, name):
        """The file that the document shows under this name."""
        [block] = [block for block in self.blocks if block.marker == f"file: {name}"]
        return block.text

    def commands(self, *programs):
        """The lines of the document that begin with one of these words."""
        lines = (line.removeprefix("$ ") for block in self.blocks for line in block.lines)
        return [line for line in lines if line.split()[:1] and line.split()[0] in programs]

    def here(self, text):
        """The text with the names and the files of this machine."""
        return (text.replace("subjectAltName=DNS:broker-1.example",
                             "subjectAltName=DNS:localhost,IP:127.0.0.1")
                .replace("-h broker-1.example -p 8883", f"-h localhost -p {self.tls_port}")
                .replace("broker-1.example", f"localhost:{self.tls_port}")
                .replace("broker-2.example", f"localhost:{self.dead_port}")
                .replace("/etc/mosquitto/certs", str(self.folder))
                .replace("/etc/mosquitto", str(self.folder)))

    def shell(self, line):
        """A command of the document, which takes the place of its shell and ends in time."""
        return ["bash", "-ec", f"exec timeout {PATIENCE_S} {self.here(line)}"]

    def make_secrets(self):
        """Runs what the document shows for certificates and passwords."""
        lines = self.commands("openssl", "for", "mosquitto_passwd", "chmod")
        self.assertEqual(7, len(lines))
        for line in lines:
            subprocess.run(["bash", "-ec", self.here(line)], cwd=self.folder, check=True,
                           capture_output=True)

    def part_of_the_other_station(self):
        """The rights of the second station, which the document leaves to the reader."""
        part = self.shown("acl").split("\n\n")[0]
        return "\n\n" + part.replace(FIRST, SECOND) + "\n"

    def started(self, name):
        """The station of this name, with the document's configuration."""
        text = self.here(self.shown("mixing.toml")).replace(FIRST, name).replace(
            "serial:/dev/ttyUSB0,38400", self.plc("tcp").link)
        self.file(f"{name}.toml", f'listen = "127.0.0.1:0"\nstate = "{name}"\n{text}')
        return self.station(f"--config {name}.toml --state {self.folder / name}")

    def as_user(self, name):
        """What makes a client of the tests a user of the broker."""
        def prepare(client):
            client.tls_set_context(ssl.create_default_context(cafile=self.folder / "plant-ca.pem"))
            password = (self.folder / f"{name}.password").read_text("utf-8").strip()
            client.username_pw_set(name, password)
        return prepare

    def scada(self, node):
        """A host with the rights of the user scada."""
        return self.keep(SparkplugHost(self.tls_port, GROUP, node, prepare=self.as_user("scada")))

    def reader(self):
        """A subscriber with the rights of the user telegraf."""
        return self.keep(Subscriber(self.tls_port, "kakb/#", "spBv1.0/#",
                                    prepare=self.as_user("telegraf")))

    def awaits(self, condition):
        """Waits until the condition is true."""
        self.assertTrue(eventually(condition, PATIENCE_S), self.at.output.read_text("utf-8"))

    @staticmethod
    def last(reader, topic):
        """The last payload on the topic."""
        found = [message.payload for message in reader.messages if message.topic == topic]
        return found[-1] if found else None

    def test_both_stations_publish_in_both_dialects_and_their_deaths_are_told(self):
        hosts = [self.scada(node) for node in (FIRST, SECOND)]
        reader = self.reader()
        stations = [self.started(node) for node in (FIRST, SECOND)]
        for host, node in zip(hosts, (FIRST, SECOND)):
            host.await_that(lambda host: host.value(DEVICE, "setpoint") == (0, "good"))
            self.awaits(lambda n=node: self.last(reader, f"kakb/{n}/mixer/setpoint") is not None)
            self.awaits(lambda n=node: self.last(reader, f"kakb/{n}/status") == b"online")
        for station in stations:
            station.process.kill()
        for host, node in zip(hosts, (FIRST, SECOND)):
            host.await_that(lambda host: host.kinds()[-1] == "NDEATH")
            self.awaits(lambda n=node: self.last(reader, f"kakb/{n}/status") == b"offline")

    def test_the_marks_of_a_station_pass_the_list_of_rights(self):
        self.file("acl", self.here(self.shown("acl")).replace(
            "user telegraf", "user telegraf\ntopic read kakb-mark/#"))
        self.at.stop()
        self.at.start()
        host = self.keep(SparkplugHost(self.tls_port, GROUP, FIRST,
                                       prepare=self.as_user("telegraf")))
        self.started(FIRST)
        host.await_that(lambda host: host.marks)

    def test_the_commands_of_the_document_read_and_write_a_tag(self):
        station = self.started(FIRST)
        station.await_good()
        self.awaits(lambda: all(standing["state"] == "connected"
                                for standing in station.get("/api/v1/plant").json))
        [read] = self.commands("mosquitto_sub")
        [write] = [line for line in self.commands("mosquitto_pub") if "-h broker" in line]
        with subprocess.Popen(self.shell(read), cwd=self.folder, stdout=subprocess.PIPE,
                              text=True) as printing:
            try:
                printing.stdout.readline()  # what the broker holds: the subscription is granted
                subprocess.run(self.shell(write), cwd=self.folder, check=True)
                results = [line.partition(" ")[2] for line in
                           islice((line for line in printing.stdout if "/result " in line), 1)]
            finally:
                printing.kill()
        self.assertEqual(1, len(results), "no result came")
        result = json.loads(results[0])
        self.assertEqual(("a7", "confirmed", 22), (result["id"], result["outcome"], result["v"]))
        self.assertEqual(22, station.values()["setpoint"]["value"])

    def test_what_telegraf_asks_for_is_what_stations_say(self):
        settings = tomllib.loads(self.shown("telegraf.conf"))
        [consumer] = settings["inputs"]["mqtt_consumer"]
        [parsing] = consumer["topic_parsing"]
        reader = self.keep(Subscriber(self.tls_port, *consumer["topics"],
                                      prepare=self.as_user(consumer["username"])))
        self.started(FIRST)
        tags = {f"kakb/{FIRST}/mixer/setpoint", f"kakb/{FIRST}/mixer/level"}
        self.awaits(lambda: tags <= {message.topic for message in reader.messages})
        self.assertEqual(tags, {message.topic for message in reader.messages})
        self.assertEqual((consumer["topics"], "_/node/link/tag"),
                         ([parsing["topic"]], parsing["tags"]))
        self.assertEqual("unix_ms", consumer["json_time_format"])
        self.awaits(lambda: all(
            json.loads(self.last(reader, tag))["q"] == "good" for tag in tags))
        document = json.loads(self.last(reader, f"kakb/{FIRST}/mixer/level"))
        self.assertEqual(0, document.pop("v"))
        self.assertLess(abs(time.time() * 1000 - document.pop(consumer["json_time_key"])), RECENT_MS)
        self.assertEqual(consumer["json_string_fields"], list(document))

    def test_only_who_may_command_does(self):
        station = self.started(FIRST)
        host = self.scada(FIRST)
        self.await_connected(station)
        topic = f"spBv1.0/{GROUP}/DCMD/{FIRST}/{DEVICE}"
        strangers = [self.keep(Subscriber(self.tls_port, "none", prepare=self.as_user(name)))
                     for name in ("telegraf", SECOND)]
        for stranger in strangers:
            payload = command("setpoint", datatype=6, int_value=99)
            stranger.client.publish(topic, payload, 1).wait_for_publish()
            stranger.client.publish(f"kakb/{FIRST}/mixer/setpoint/set", '{"v":98}',
                                    1).wait_for_publish()
        host.send("DCMD", command("setpoint", datatype=6, int_value=7), DEVICE)
        station.await_values(lambda values: values["setpoint"]["value"] == 7)
        self.awaits(lambda: station.err.endswith("\n"))
        [line] = station.err.splitlines()
        self.assertIn(f"{topic}\": write 1 of", line)
