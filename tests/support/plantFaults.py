"""A station that publishes 500 changes a second, while broker, network and station are killed at random
moments, and a host that compares what it got with the station's history."""

import csv
import io
import json
import random
import time
from collections import Counter

from countingWords import counting_plc
from mosquittoBroker import MosquittoBroker
from processes import eventually
from sampleOrder import disorder
from sparkplugHost import SparkplugHost
from stationProgram import Station
from tcpRelay import TcpRelay

TAGS = 50
VALUES = 60000  # of a word, before it begins anew
CHANGE_MS = 100
DEVICE = "plc-1"
KINDS = ("broker", "network", "station")
# A row is noted a little later than its time; the mark tells when it was noted.
NOTED_S = 0.3
SETTLE_S = 120
RETURN_S = 120  # the longest pause of a station that has tried for long, on a busy machine
QUIET_S = 3  # without a historical value all of them are out
LIVE_S = 4  # changes that are sent live, and have no acknowledged mark behind them yet


class PlantFaults:
    """Runs the faults; `found` has what was wrong, in sentences."""

    def __init__(self, programs, folder, seed, noted_s=NOTED_S):
        self.random = random.Random(seed)
        self.noted_s = noted_s
        self.programs, self.folder = programs, folder
        self.found = []
        self.counts = Counter()
        self.plc = counting_plc(programs / "kakb-sim", folder, TAGS, CHANGE_MS, VALUES)
        self.servers = self._open_broker()
        self.cuts = []  # when a session may have ended, on time.time()
        self.station = self._started()

    def run(self, kills, kinds=KINDS):
        """Makes so many faults of each kind, in a random order, and judges."""
        self.host.await_that(lambda host: DEVICE in host.born)
        faults = [kind for kind in kinds for _ in range(kills)]
        self.random.shuffle(faults)
        for kind in faults:
            time.sleep(self.random.uniform(0, 1.5))
            self.cuts.append(time.time())
            {"broker": self._kill_broker, "network": self._cut_network,
             "station": self._kill_station}[kind]()
            self.counts[kind] += 1
            births = self.host.births
            if self.random.random() < 0.8:  # else the next fault falls into the return of this one
                self.host.await_that(lambda host, births=births: DEVICE in host.born and (
                    host.births > births or time.time() - self.cuts[-1] > 3), RETURN_S)
        self._settle()
        self._judge()

    def close(self):
        """Ends all programs."""
        self.host.close()
        self.station.close()
        self._close_broker()
        self.plc.close()

    def _open_broker(self):
        """Starts the broker and its host; returns the servers of the station."""
        self.broker = MosquittoBroker(self.folder)
        self.relay = TcpRelay(("127.0.0.1", self.broker.port))
        self.host = SparkplugHost(self.broker.port, keep=False)
        return [f"mqtt://127.0.0.1:{self.relay.port}"]

    def _close_broker(self):
        self.relay.close()
        self.broker.close()

    def _started(self):
        servers = [argument for server in self.servers for argument in ("--mqtt", server)]
        return Station([self.programs / "kakb-station", "--listen", "127.0.0.1:0", "--tags",
                        "tags.csv", "--link", self.plc.link, "--pace", f"{CHANGE_MS}ms", "--state",
                        "state", *servers], self.folder)

    def _pause(self):
        time.sleep(self.random.choice([0.01, 0.1, 1, 3]) * self.random.uniform(0.5, 1))

    def _kill_broker(self):
        """The host is there again before the station: it is to see all that the broker gets."""
        self.relay.cut()
        self.broker.kill()
        self.host.subscribed.clear()
        self._pause()
        self.broker.start()
        assert self.host.subscribed.wait(20), "the host did not come back"
        self.relay.resume()

    def _cut_network(self):
        freeze = self.random.random() < 0.3
        if freeze:
            self.relay.freeze()
            self._pause()
        self.relay.cut()
        self._pause()
        self.relay.resume()

    def _kill_station(self):
        self.station.process.kill()
        self.station.process.wait()
        self.station.close()
        self._pause()
        self.station = self._started()

    def _settle(self):
        """What is owed is delivered; then the PLC ends, so that nothing changes any more.

        Rows of a PLC that is silent would wait until it answers again."""
        def standing():
            return self.station.get("/api/v1/plant").json[0]

        def is_caught_up():
            before = standing()["historical"]
            time.sleep(QUIET_S)
            now = standing()
            return now["state"] == "connected" and now["historical"] == before \
                and now["behind"] < LIVE_S * TAGS * 1000 / CHANGE_MS

        def is_delivered():
            return standing()["state"] == "connected" and standing()["behind"] == 0
        if not eventually(is_caught_up, SETTLE_S):
            self.found.append(f"never caught up: {standing()}")
        self.plc.kill()
        time.sleep(3)
        if not eventually(is_delivered, SETTLE_S):
            self.found.append(f"never delivered: {self.station.get('/api/v1/plant').json}")
        time.sleep(1)

    def _history(self, tag):
        """The rows of a tag that differ from the row before, as (time, value, quality)."""
        text = self.station.get(f"/api/v1/history.csv?link=plc&tag={tag}&from=0").body.decode()
        rows, before = [], None
        for row in csv.DictReader(io.StringIO(text)):
            if not row["value"]:
                continue
            now = (float(row["value"]), row["quality"])
            if now != before:
                rows.append((int(row["time"]), *now))
            before = now
        return rows

    def _judge(self):
        self.found += self.host.broken
        came = {}
        for sample in self.host.samples:
            if sample.device == DEVICE and sample.value is not None:
                came.setdefault(sample.name, []).append(sample)
        for word in range(TAGS):
            tag = f"w{word}"
            self._judge_tag(tag, came.get(tag, []))

    def _judge_tag(self, tag, came):
        rows = self._history(tag)
        known = {(sample.time, float(sample.value), sample.quality) for sample in came}
        lost = [row for row in rows if row not in known]
        self.counts["rows"] += len(rows)
        self.counts["samples"] += len(came)
        self.counts["historical"] += sum(sample.is_historical for sample in came)
        if lost:
            self.found.append(f"{tag}: {len(lost)} of {len(rows)} rows lost, such as {lost[:3]}")
        self.found += disorder(tag, came)
        self._judge_doubles(tag, came)

    def _judge_doubles(self, tag, came):
        """A sample comes twice only when no mark behind it was acknowledged before the cut."""
        first = {}
        for sample in came:
            if not sample.is_historical:
                first.setdefault(sample.key(), sample)
                continue
            before = first.setdefault(sample.key(), sample)
            if before is sample:
                continue
            self.counts["doubled"] += 1
            if sample.time / 1000 < self._proven(before, sample) - self.noted_s:
                self.found.append(f"{tag}: {sample.time} came again though a mark had proven it")

    def _proven(self, first, again):
        """The time up to which marks had proven everything at the cut between the two samples.

        The station sends a mark when the one before is acknowledged and stored; so the last mark of each
        session may prove nothing."""
        cut = max((cut for cut in self.cuts if cut < again.came), default=0)
        seen = [(births, document["time"]) for came, document, births in self.host.marks if came < cut]
        assert first.came <= again.came
        return max((time_ms / 1000 for (births, time_ms), (later, _) in zip(seen, seen[1:])
                    if births == later), default=0)


def summary(run):
    """One line."""
    return json.dumps(dict(run.counts))
