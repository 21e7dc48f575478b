#!/usr/bin/python3
"""How fast a station tells what it kept while no broker was there, and how late live values are meanwhile.

usage: bench/plantOutage.py [MINUTES]
  MINUTES   how long the broker was away, at 500 changes a second (default: 60)

That time is compressed: build/qt5/bin/plantOutage writes its rows into the history by the station's own
writer, with the times that they would have had. Then the station starts, reads 500 changes a second from
a simulated PLC, and finds no broker for some more seconds; nothing is compressed from here on. When the
broker is there, all rows must be at a Sparkplug host within a twentieth of MINUTES.
Each row of the history is compared with what the host got: none lost, none twice, none out of order. A
live value must be there within a second of its answer. Of a few MINUTES most of that twentieth is the
pause ahead of the station's next try.
Exit status: 0 the goals are reached, 1 else.
"""

import csv
import io
import os
import subprocess
import sys
import tempfile
import time
from collections import Counter
from pathlib import Path

PROJECT = Path(__file__).resolve().parents[1]
PROGRAMS = PROJECT / "build" / "qt5" / "bin"
os.environ["KAKB_PROGRAMS"] = str(PROGRAMS)
sys.path.insert(0, str(PROJECT / "tests" / "support"))

# pylint: disable=wrong-import-position
import paho.mqtt.client as mqtt

from countingWords import counting_plc
from mosquittoBroker import MosquittoBroker
from processes import PATIENCE_S, eventually
from sparkplugMessages import payload_of, quality_of, value_of
from stationProgram import Station

TAGS = 50
CHANGE_MS = 100
VALUES = 60000
COMPRESSION = 20
MOST_LATE_S = 1
ALONE_S = 10  # the station without a broker
LIVE_S = 5  # changes that are behind only because their commit is to come
DEVICE = "plc-1"


class RawHost:
    """Keeps each message as it came: it must not be slower than the station."""

    def __init__(self, port):
        self.messages = []  # (time.time(), topic, payload)
        self.client = mqtt.Client()
        self.client.on_connect = lambda client, *_: client.subscribe("spBv1.0/#", 1)
        self.client.on_message = lambda _, __, message: self.messages.append(
            (time.time(), message.topic, message.payload))
        self.client.connect("127.0.0.1", port)
        self.client.loop_start()

    def close(self):
        """Leaves the broker."""
        self.client.disconnect()
        self.client.loop_stop()


class Came:
    """What a host got of each tag, in order of coming, as (time, value, quality)."""

    def __init__(self, messages):
        self.births, self.live, self.historical = {}, {}, {}
        self.last_historical = 0  # on time.time()
        self.late = []  # seconds between answer and host, of live values
        self.aliases = {}
        for came, topic, data in messages:
            kind, device = topic.split("/")[2], topic.split("/")[-1]
            if device == DEVICE and kind in ("DBIRTH", "DDATA"):
                for metric in payload_of(data).metrics:
                    self._take(kind, metric, came)

    def _take(self, kind, metric, came):
        if kind == "DBIRTH":
            self.aliases[metric.alias] = (metric.name, metric.datatype)
        name, datatype = self.aliases[metric.alias]
        row = (metric.timestamp, value_of(metric, datatype), quality_of(metric))
        if kind == "DBIRTH":
            self.births.setdefault(name, []).append(row)
        elif metric.is_historical:
            self.historical.setdefault(name, []).append(row)
            self.last_historical = came
        else:
            self.live.setdefault(name, []).append(row)
            self.late.append(came - metric.timestamp / 1000)


def rows_of(station, tag):
    """The rows of a tag in the history."""
    text = station.get(f"/api/v1/history.csv?link=plc&tag={tag}&from=0").body.decode()
    return [(int(row["time"]), float(row["value"]), row["quality"])
            for row in csv.DictReader(io.StringIO(text)) if row["value"]]


def judge_tag(counts, kept, filled, came, tag):
    """Counts what is wrong with the values of a tag."""
    historical, live = came.historical.get(tag, []), came.live.get(tag, [])
    told = Counter(historical + live)
    known = {*told, *came.births.get(tag, [])}
    counts["rows"] += len(kept)
    counts["historical"] += len(historical)
    counts["lost"] += sum(row not in known for row in kept)
    counts["doubled"] += sum(told.values()) - len(told)
    for rows in (historical, live):
        counts["out of order"] += sum(later[0] < row[0] for row, later in zip(rows, rows[1:]))
    counts["not as filled"] += historical[:len(filled)] != filled
    in_history = set(kept)
    counts["strange"] += sum(row not in in_history for row in historical)


class Outage:
    """A station that has the history of a long time without a broker."""

    def __init__(self, folder, minutes):
        state = folder / "state"
        state.mkdir(mode=0o700)
        output = subprocess.run([PROGRAMS / "plantOutage", state, str(60 * minutes)], check=True,
                                capture_output=True, text=True).stdout
        self.filled = [(int(output) + CHANGE_MS * i, i % VALUES, "good")
                       for i in range(minutes * 60 * 1000 // CHANGE_MS)]
        self.bytes = (state / "history.sqlite").stat().st_size
        self.plc = counting_plc(PROGRAMS / "kakb-sim", folder, TAGS, CHANGE_MS, VALUES)
        self.broker = MosquittoBroker(folder)
        self.broker.kill()
        self.station = Station(
            [PROGRAMS / "kakb-station", "--listen", "127.0.0.1:0", "--tags", "tags.csv", "--link",
             self.plc.link, "--pace", f"{CHANGE_MS}ms", "--state", "state", "--mqtt",
             self.broker.url], folder)
        time.sleep(ALONE_S)
        self.broker.start()
        self.back = time.time()
        self.host = RawHost(self.broker.port)

    def standing(self):
        """How the station says that it stands with its broker."""
        return self.station.get("/api/v1/plant").json[0]

    def await_delivery(self, seconds):
        """Waits until only live values flow, then until the broker has all; returns the last standing."""
        def is_caught_up():
            now = self.standing()
            time.sleep(1)
            return now["state"] == "connected" and now["behind"] < LIVE_S * TAGS * 1000 / CHANGE_MS
        eventually(is_caught_up, seconds)
        time.sleep(LIVE_S)
        self.plc.kill()
        eventually(lambda: self.standing()["behind"] == 0, PATIENCE_S)
        return self.standing()

    def close(self):
        """Ends all programs."""
        self.host.close()
        self.station.close()
        self.broker.close()
        self.plc.close()


def main(minutes="60"):
    """Measures; returns the exit status."""
    most_s = int(minutes) * 60 / COMPRESSION
    with tempfile.TemporaryDirectory() as folder:
        run = Outage(Path(folder), int(minutes))
        try:
            standing = run.await_delivery(3 * most_s)
            came = Came(run.host.messages)
            counts = Counter()
            for word in range(TAGS):
                tag = f"w{word}"
                judge_tag(counts, rows_of(run.station, tag), run.filled, came, tag)
        finally:
            run.close()
    took = came.last_historical - run.back
    late = sorted(came.late)
    wrong = {name: counts[name] for name in
             ("lost", "doubled", "out of order", "not as filled", "strange")}
    print(f"{len(run.filled) * TAGS} rows of the time without a broker took {run.bytes / 1e6:.1f} MB; "
          f"the history has {counts['rows']} rows in the end")
    print(f"{counts['historical']} rows came as history within {took:.1f} s of the broker's return: "
          f"{counts['historical'] / took:.0f} rows/s (goal: within {most_s:.0f} s)")
    print(f"{len(late)} live values: p99 {1000 * late[len(late) * 99 // 100]:.0f} ms, longest "
          f"{1000 * late[-1]:.0f} ms (goal: {1000 * MOST_LATE_S} ms)")
    print(f"wrong: {wrong}; dropped {standing['dropped']}, behind {standing['behind']}")
    is_right = not any(wrong.values()) and standing["behind"] == 0 and standing["dropped"] == 0
    return 0 if is_right and took <= most_s and late[-1] <= MOST_LATE_S else 1


if __name__ == "__main__":
    if len(sys.argv) > 2 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
