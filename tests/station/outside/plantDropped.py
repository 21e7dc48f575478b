"""What a station tells of the rows that its history drops before the broker has them."""

import csv
import io
from collections import Counter

from cappedHistory import FIRST_ROWS, LAST_TAG, TABLE, TAGS, CappedHistory, configuration
from plantTest import DEVICE, PlantTest
from plcControl import PlcControl
from sparkplugMessages import command
from tcpRelay import TcpRelay

RETURN_S = 120  # the pause of a station that has tried for long, and the delivery


class PlantDropped(PlantTest):
    """A station with the smallest cap, whose tags change all at once while no broker is there."""

    def test_dropped_rows_are_counted_everywhere_and_all_others_come(self):
        self.connect()
        self.broker_ends()
        full = CappedHistory(self.control, self.served.url)
        full.overflow()
        kept = {tag: self.history(tag, full.began) for tag in ("b0.0", LAST_TAG)}
        self.broker_returns()
        came = self.delivered(full)
        # The broker may tell the host of the mark before it acknowledges it.
        standing = self.await_standing(self.served, lambda standing: standing["behind"] == 0)
        dropped = standing["dropped"]
        self.assertGreaterEqual(dropped, TAGS)
        self.assertEqual(dropped, full.figure('kakb_mqtt_dropped_rows_total{dialect="sparkplug"}'))
        self.watching.await_that(lambda host: host.value("", "Buffer/Dropped") == (dropped, "good"))
        self.assertEqual(full.changes * TAGS - dropped, len(came))
        self.assertEqual({1}, set(Counter(sample.key() for sample in came).values()))
        for tag, rows in kept.items():
            self.assertLess(len(rows), full.changes, "none of the tag's rows was dropped")
            self.assertEqual(rows, [(sample.time, sample.value) for sample in came
                                    if sample.name == tag])

    def connect(self):
        """A station that owes its broker nothing."""
        self.at = self.broker()
        self.watching = self.host_at(self.at)
        self.relay = self.keep(TcpRelay(("127.0.0.1", self.at.port)))
        self.file("tags.csv", TABLE)
        simulator = self.plc("tcp", "--control control")
        self.control = self.keep(PlcControl(self.folder / "control"))
        self.file("station.toml", configuration(simulator.link,
                                                f"mqtt://127.0.0.1:{self.relay.port}"))
        self.served = self.station("--config station.toml")
        self.served.await_good()
        self.await_mark(FIRST_ROWS)
        # The station reads this behind the acknowledgement of the mark.
        self.watching.send("NCMD", command("Node Control/Rebirth", datatype=11, boolean_value=True))
        self.watching.await_that(lambda host: host.births == 2 and DEVICE in host.born)

    def await_mark(self, sequence, *seconds):
        """What was sent ahead of the mark of this row is there."""
        self.watching.await_that(
            lambda host: host.marks and host.marks[-1][1]["sequence"] >= sequence, *seconds)

    def broker_ends(self):
        """Nobody takes the station's connections any more."""
        self.relay.cut()
        self.at.kill()
        self.watching.subscribed.clear()

    def broker_returns(self):
        """The host is there before the station: it is to see all that the broker gets."""
        self.at.start()
        self.assertTrue(self.watching.subscribed.wait(RETURN_S), "the host did not come back")
        self.relay.resume()

    def delivered(self, full):
        """The samples that came as history once all rows are sent."""
        self.await_mark(FIRST_ROWS + full.changes * TAGS, RETURN_S)
        with self.watching.lock:
            return [sample for sample in self.watching.samples
                    if sample.is_historical and sample.came > full.began]

    def history(self, tag, since):
        """The rows of a tag, as (time, value)."""
        text = self.served.get(
            f"/api/v1/history.csv?link=plc&tag={tag}&from={int(since * 1000)}").body.decode()
        return [(int(row["time"]), row["value"] == "1")
                for row in csv.DictReader(io.StringIO(text)) if row["value"]]
