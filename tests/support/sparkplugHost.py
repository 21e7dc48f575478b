"""A Sparkplug host application for the tests: it keeps what an edge node said, and notices each break
of the rules that a host can see."""

import json
import threading
import time

import paho.mqtt.client as mqtt

from sparkplugMessages import payload_of, quality_of, value_of

NODE_KINDS = ("NBIRTH", "NDATA", "NDEATH")
PATIENCE_S = 20
TEXT = 12  # the datatype of outcomes


class Sample:
    """A value of a metric as it came."""

    def __init__(self, kind, device, name, metric, value, came, births):
        self.is_birth = kind.endswith("BIRTH")
        self.device, self.name = device, name
        self.time = metric.timestamp
        self.value = value
        self.quality = quality_of(metric)
        self.is_historical = metric.is_historical
        self.came = came  # on time.time()
        self.births = births  # of the node, up to then: the same in one session, but for rebirths

    def key(self):
        """The same for the same sample."""
        return (self.device, self.name, self.time, repr(self.value), self.quality)


class SparkplugHost:
    """Subscribes to all that an edge node says. Any thread reads it under `lock`."""

    def __init__(self, port, group="kakb", node="kakb-station", keep=True,
                 prepare=lambda client: None):
        self.lock = threading.Condition()
        self.group, self.node, self.keep = group, node, keep
        self.broken = []  # sentences
        self.messages = []  # (kind, device, payload, time.time())
        self.samples = []  # Sample, in order of coming
        self.marks = []  # (time.time(), document, births before it)
        self.births = 0
        self._start_session(None)
        self.client = mqtt.Client()
        self.client.on_connect = self._connected
        self.client.on_message = self._came
        self.client.max_inflight_messages_set(0)
        self.client.reconnect_delay_set(1, 1)
        self.subscribed = threading.Event()
        self.client.on_subscribe = lambda *_: self.subscribed.set()
        self.client.on_disconnect = lambda *_: self.subscribed.clear()
        prepare(self.client)
        self.client.connect_async("127.0.0.1", port, 60)
        self.client.loop_start()
        self.await_subscription()

    def await_subscription(self):
        """Waits until the broker passes on what it gets from now on."""
        assert self.subscribed.wait(PATIENCE_S), "the broker grants no subscription"

    def close(self):
        """Leaves the broker."""
        self.client.disconnect()
        self.client.loop_stop()

    def send(self, kind, payload, device=None, retain=False):
        """Publishes a command. When this returns, the broker has what it is to keep."""
        topic = f"spBv1.0/{self.group}/{kind}/{self.node}" + (f"/{device}" if device else "")
        self.client.publish(topic, payload, 1 if retain else 0, retain).wait_for_publish()

    def await_that(self, condition, seconds=PATIENCE_S):
        """Waits until a condition on this host is true; fails when it never is."""
        end = time.monotonic() + seconds
        with self.lock:
            while not condition(self):
                left = end - time.monotonic()
                assert left > 0, f"never came true; broken: {self.broken[:5]}"
                self.lock.wait(left)

    def value(self, device, name):
        """The last live value and quality of a metric."""
        return self.values.get((device, name), (None, None))

    def kinds(self):
        """NBIRTH, "DBIRTH plc-1" and so on, in order of coming."""
        return [kind + (f" {device}" if device else "") for kind, device, _, _ in self.messages]

    def _start_session(self, bd_seq):
        self.bd_seq = bd_seq
        self.seq = None
        self.aliases = {}  # alias: (device, name, datatype)
        self.values = {}
        self.born = set()

    def _connected(self, client, *_):
        client.subscribe([(f"spBv1.0/{self.group}/+/{self.node}/#", 1),
                          (f"kakb-mark/{self.group}/{self.node}", 1)])

    def _came(self, _, __, message):
        came = time.time()
        levels = message.topic.split("/")
        with self.lock:
            if levels[0] == "kakb-mark":
                self.marks.append((came, json.loads(message.payload), self.births))
            elif levels[2] not in ("NCMD", "DCMD"):
                self._take(levels[2], "/".join(levels[4:]), message, came)
            self.lock.notify_all()

    def _take(self, kind, device, message, came):
        payload = payload_of(message.payload)
        if self.keep:
            self.messages.append((kind, device, payload, came))
        if message.retain:
            self._tell(f"{message.topic} is retained")
        if kind == "NDEATH":
            self._take_death(payload)
            return
        if kind == "NBIRTH":
            self._begin(payload)
        elif self.seq is None:
            return  # a host that came late asks for a rebirth; these tests wait for one
        elif payload.seq != (self.seq + 1) % 256:
            self._tell(f"{message.topic}: seq {payload.seq} behind {self.seq}")
        self.seq = payload.seq
        if kind == "DBIRTH":
            self.born.add(device)
        elif kind == "DDEATH":
            self.born.discard(device)
        elif kind == "DDATA" and device not in self.born:
            self._tell(f"{message.topic}: data of a device that is not born")
        self._take_metrics(kind, device, payload, came)

    def _begin(self, payload):
        numbers = [metric.long_value for metric in payload.metrics if metric.name == "bdSeq"]
        if payload.seq != 0 or len(numbers) != 1:
            self._tell(f"NBIRTH with seq {payload.seq} and bdSeq {numbers}")
        self._start_session(numbers[0] if numbers else None)
        self.births += 1

    def _take_death(self, payload):
        if payload.HasField("seq") or [m.name for m in payload.metrics] != ["bdSeq"]:
            self._tell(f"NDEATH {payload}")
        elif payload.metrics[0].long_value == self.bd_seq:
            self.seq = None
            self.born.clear()

    def _take_metrics(self, kind, device, payload, came):
        is_birth = kind.endswith("BIRTH")
        for metric in payload.metrics:
            if is_birth and metric.HasField("alias"):
                if metric.alias in self.aliases and self.aliases[metric.alias][0] != device:
                    self._tell(f"alias {metric.alias} twice")
                self.aliases[metric.alias] = (device, metric.name, metric.datatype)
            if is_birth:
                name, datatype = metric.name, metric.datatype
            elif metric.alias in self.aliases and self.aliases[metric.alias][0] == device:
                _, name, datatype = self.aliases[metric.alias]
            else:
                self._tell(f"{kind} {device}: alias {metric.alias} of no birth")
                continue
            sample = Sample(kind, device, name, metric, value_of(metric, datatype), came,
                            self.births)
            self.samples.append(sample)
            if not sample.is_historical:
                self._take_live(kind, sample, datatype)

    def _take_live(self, kind, sample, datatype):
        """A value that its birth or the data before it has told is no news; two commands may end
        alike."""
        place, now = (sample.device, sample.name), (sample.value, sample.quality)
        if not sample.is_birth and datatype != TEXT and self.values.get(place) == now:
            self._tell(f"{kind} {sample.device}: {sample.name} is still {now}")
        self.values[place] = now

    def _tell(self, sentence):
        self.broken.append(sentence)
