"""Many commands through a broker over a line that loses, spoils and refuses, in both dialects, each of
them judged by the memory of the simulated PLC at its end; and old ones, which must not be executed."""

import json
import threading
import time
from collections import Counter

import paho.mqtt.client as mqtt

from lossyWrites import LossyWrites
from mosquittoBroker import MosquittoBroker
from processes import PATIENCE_S
from sparkplugHost import SparkplugHost
from sparkplugMessages import command

NODE = "lossy"
DEVICE = "plc-1"
OUTCOME = "Commands/Outcome"
RETAINED = "it was retained"  # in the record
END_S = 60  # for a command on a line with faults
DATATYPES = {"uint16": (6, "int_value"), "bool": (11, "boolean_value"),
             "float32:low": (9, "float_value")}
STALE_SHARE, ALIAS_SHARE = 0.05, 0.5


class ResultsOfSets:
    """A client of the JSON dialect: it sets tags, and keeps each result by its id."""

    def __init__(self, port):
        self.lock = threading.Condition()
        self.results = {}  # guarded by lock, as is the rest
        self.online = set()  # topics
        self.client = mqtt.Client()
        self.client.max_inflight_messages_set(0)
        self.client.on_connect = lambda client, *_: client.subscribe(
            [(f"kakb/{NODE}/status", 1), (f"kakb/{NODE}/+/+/availability", 1),
             (f"kakb/{NODE}/+/+/result", 1)])
        self.client.on_message = self._came
        self.client.connect_async("127.0.0.1", port, 60)
        self.client.loop_start()

    def close(self):
        """Leaves the broker."""
        self.client.disconnect()
        self.client.loop_stop()

    def send(self, tag, document, retain=False):
        """Publishes a set."""
        self.client.publish(f"kakb/{NODE}/plc/{tag}/set", json.dumps(document), qos=1, retain=retain)

    def await_online(self):
        """Waits until the node and its station are online."""
        with self.lock:
            assert self.lock.wait_for(lambda: len(self.online) == 2, PATIENCE_S), self.online

    def result(self, name):
        """Waits for the result with this id."""
        with self.lock:
            assert self.lock.wait_for(lambda: name in self.results, END_S), f"no result of {name}"
            return self.results[name][0]

    def _came(self, _, __, message):
        with self.lock:
            if message.topic.endswith("/result"):
                result = json.loads(message.payload)
                self.results.setdefault(result["id"], []).append(result)
            elif message.payload == b"online":
                self.online.add(message.topic)
            else:
                self.online.discard(message.topic)
            self.lock.notify_all()


class OutcomesOfCommands(SparkplugHost):
    """A host that keeps the outcomes which came as data: a birth repeats the last one."""

    def __init__(self, port):
        self.outcomes = []  # guarded by lock
        super().__init__(port, node=NODE, keep=False)

    def _take_metrics(self, kind, device, payload, came):
        first = len(self.samples)
        super()._take_metrics(kind, device, payload, came)
        if kind == "DDATA":
            self.outcomes += [json.loads(sample.value) for sample in self.samples[first:]
                              if sample.name == OUTCOME and not sample.is_historical]


class CommandWriter:
    """Writes in either dialect. Only one thread writes a tag, so that an outcome in Sparkplug, which
    names the metric, belongs to the thread's last command."""

    def __init__(self, run, source):
        self.run, self.source = run, source

    def write(self, target, value):
        """Commands, and returns 200 and the outcome."""
        if self.source.random() < 0.5:
            return 200, self._set(target, value)
        return 200, self._command(target, value)

    def close(self):
        """Nothing stays open."""

    def _set(self, target, value):
        name = self.run.new_id()
        document = {"v": value, "id": name}
        is_stale = self.source.random() < STALE_SHARE
        if is_stale:
            document["expires"] = int(time.time() * 1000) - 1
        self.run.sets.send(target.name, document)
        result = self.run.sets.result(name)
        if is_stale and (result["outcome"], result["reason"][:7]) != ("refused", "expired"):
            self.run.tell(f"a stale set has the result {result}")
        return {**result, "value": result["v"]}

    def _command(self, target, value):
        host = self.run.host
        with host.lock:
            first = len(host.outcomes)
            alias = next(alias for alias, (device, name, _) in host.aliases.items()
                         if (device, name) == (DEVICE, target.name))
        datatype, field = DATATYPES[target.kind]
        by = {"alias": alias} if self.source.random() < ALIAS_SHARE else {"name": target.name}
        host.send("DCMD", command(datatype=datatype, **by, **{field: value}), DEVICE)

        def own(host):
            return [outcome for outcome in host.outcomes[first:]
                    if outcome["metric"] in (target.name, f"alias {alias}")]
        host.await_that(own, END_S)
        self.run.count_command()
        with host.lock:
            return own(host)[0]


class LossyCommands(LossyWrites):
    """Starts a broker, too. Old commands lie there before the station comes."""

    def __init__(self, programs, folder, seed):
        self.broker = MosquittoBroker(folder)
        self.sets = ResultsOfSets(self.broker.port)
        self.host = OutcomesOfCommands(self.broker.port)
        self.next_id, self.commands = 0, 0  # guarded by lock of the base
        self.retained = self._retain_commands()
        super().__init__(programs, folder, seed, "--mqtt", self.broker.url, "--mqtt-node", NODE,
                         "--mqtt-dialect", "sparkplug,json", "--mqtt-commands", "--state",
                         folder / "state")
        self.host.await_that(lambda host: DEVICE in host.born)
        self.sets.await_online()

    def close(self):
        """Ends the programs."""
        super().close()
        self.sets.close()
        self.host.close()
        self.broker.close()

    def run(self, writes):
        """Commands so many values, several at once, and looks at what the old ones have done."""
        before = {target.name: self._memory(target) for target in self.targets}
        self.found += [f"an old command was executed: {name} is {memory}"
                       for name, memory in before.items() if any(memory)]
        super().run(writes)
        self._count_outcomes(writes)

    def tell(self, sentence):
        """Something was wrong."""
        with self.lock:
            self.found.append(sentence)

    def new_id(self):
        """An id that no other command has."""
        with self.lock:
            self.next_id += 1
            return f"set {self.next_id}"

    def count_command(self):
        """One more command in Sparkplug has had its outcome."""
        with self.lock:
            self.commands += 1

    def _writer(self, source):
        return CommandWriter(self, source)

    def _retain_commands(self):
        """A set and a DCMD for a tag each, with the retain flag."""
        self.sets.send("uint16 0", {"v": 4711, "id": "retained"}, retain=True)
        self.host.send("DCMD", command(name="uint16 0", datatype=6, int_value=4712), DEVICE,
                       retain=True)
        return 2

    def _count_outcomes(self, writes):
        """Each command has one outcome, and an old one none that says it was executed."""
        with self.sets.lock:
            counts = Counter({name: len(all) for name, all in self.sets.results.items()})
        self.found += [f"{name} has {number} results" for name, number in counts.items()
                       if number != 1]
        if "retained" in counts:
            self.tell("a retained set has a result")
        with self.host.lock:
            told = Counter(outcome["id"] for outcome in self.host.outcomes)
            unsent = told.pop(None, 0)  # refused before there was a write
            self.found += self.host.broken[:5]
        if max(told.values(), default=1) > 1 or len(told) + unsent != self.commands:
            self.tell(f"{self.commands} commands, {unsent} without an id, {told.most_common(5)}")
        refused = [line for line in self.station.errors if ": refused: " in line and RETAINED in line]
        if len(refused) != self.retained:
            self.tell(f"{len(refused)} of {self.retained} old commands are in the record")
        if sum(counts.values()) + self.commands != writes:
            self.tell(f"{sum(counts.values())} sets and {self.commands} commands of {writes}")
