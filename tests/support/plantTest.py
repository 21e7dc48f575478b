"""The test case of a station that publishes at a broker of the test's own."""

import shlex
import subprocess
import threading

import paho.mqtt.client as mqtt

from mosquittoBroker import MosquittoBroker
from plcControl import PlcControl
from processes import PATIENCE_S, eventually
from sparkplugHost import SparkplugHost
from stationProgram import StationTest

DEVICE = "plc-1"
CA_DAYS = "30"


class Subscriber:
    """Keeps every message of some topics, with its topic, payload, QoS and retain flag."""

    def __init__(self, port, *topics, prepare=lambda client: None):
        self.messages = []
        self.subscribed = threading.Event()
        self.client = mqtt.Client()
        self.client.on_connect = lambda client, *_: client.subscribe([(t, 1) for t in topics])
        self.client.on_subscribe = lambda *_: self.subscribed.set()
        self.client.on_message = lambda _, __, message: self.messages.append(message)
        prepare(self.client)
        self.client.connect_async("127.0.0.1", port, 60)
        self.client.loop_start()
        assert self.subscribed.wait(PATIENCE_S), "the broker grants no subscription"

    def close(self):
        """Leaves the broker."""
        self.client.disconnect()
        self.client.loop_stop()

    def on(self, part):
        """The messages whose topic has this part."""
        return [message for message in self.messages if part in message.topic]


class PlantTest(StationTest):
    """A folder, a broker and a host of its own for each test."""

    def broker(self, *lines):
        """Starts a broker; with lines of its configuration, else everybody may do everything."""
        return self.keep(MosquittoBroker(self.folder, lines or ("allow_anonymous true",)))

    def host_at(self, broker, **ids):
        """A Sparkplug host that sees all."""
        host = self.keep(SparkplugHost(broker.port, **ids))
        self.addCleanup(lambda: self.assertEqual([], host.broken))
        return host

    def subscriber(self, broker, *topics):
        """A subscriber of some topics, "#" unless they are named."""
        return self.keep(Subscriber(broker.port, *(topics or ("#",))))

    def publisher(self, url, options="", names=("still", "offset"), plc="", prefix=()):
        """A simulated PLC with a control socket, and a station that publishes some of its tags;
        returns both."""
        self.tags(*names)
        simulator = self.plc("tcp", f"--control control {plc}")
        self.control = PlcControl(self.folder / "control")
        self.addCleanup(self.control.close)
        return simulator, self.published(simulator, url, options, prefix)

    def published(self, simulator, url, options="", prefix=()):
        """One more station for the same PLC and tags."""
        mqtt_options = f"--mqtt {shlex.quote(url)}" if url else ""
        return self.station(f"--link {simulator.link} --tags tags.csv --pace 20ms {mqtt_options} "
                            f"{options}", prefix)

    def configured(self, simulator, mqtt_keys, options=""):
        """A station with a table [mqtt] of these lines."""
        self.file("station.toml", "\n".join(
            ['listen = "127.0.0.1:0"', "[mqtt]", *mqtt_keys, "[[link]]", 'name = "plc"',
             f'link = "{simulator.link}"', 'tags = "tags.csv"']) + "\n")
        return self.station(f"--config station.toml {options}")

    def standing(self, station):
        """How the station says that it stands with its broker."""
        return station.get("/api/v1/plant").json[0]

    def await_standing(self, station, condition, seconds=PATIENCE_S):
        """Waits until the standing fulfils the condition; returns it."""
        found = {}

        def fulfilled():
            found.update(self.standing(station))
            return condition(found)
        self.assertTrue(eventually(fulfilled, seconds), f"never came true: {found}\n{station}")
        return found

    def await_connected(self, station, url=None, seconds=PATIENCE_S):
        """Waits until the births are out, at this server if one is named."""
        return self.await_standing(
            station, lambda standing: standing["state"] == "connected"
            and url in (None, standing["server"]), seconds)

    def openssl(self, *arguments):
        """Runs openssl in the folder."""
        subprocess.run(["openssl", *arguments], cwd=self.folder, check=True, capture_output=True)

    def authority(self, name):
        """Makes an authority: NAME.pem and NAME.key."""
        self.openssl("req", "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
                     "-nodes", "-days", CA_DAYS, "-subj", f"/CN={name}", "-keyout", f"{name}.key",
                     "-out", f"{name}.pem")

    def certificate(self, name, authority, names="DNS:localhost,IP:127.0.0.1"):
        """Makes a certificate of an authority for these names: NAME.pem and NAME.key."""
        self.openssl("req", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1", "-nodes",
                     "-subj", f"/CN={name}", "-keyout", f"{name}.key", "-out", f"{name}.csr")
        self.file(f"{name}.ext", f"subjectAltName={names}\n")
        self.openssl("x509", "-req", "-in", f"{name}.csr", "-CA", f"{authority}.pem", "-CAkey",
                     f"{authority}.key", "-CAcreateserial", "-days", CA_DAYS, "-extfile",
                     f"{name}.ext", "-out", f"{name}.pem")
