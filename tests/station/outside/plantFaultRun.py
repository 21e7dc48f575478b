"""What a host ends with when broker, network and station are killed: a short run of the benchmark."""

import os
import unittest

from plantFaults import KINDS, PlantFaults, summary
from plantTest import DEVICE, PlantTest
from processes import PATIENCE_S, SLOWER, eventually

SEED = 1657  # two of its cuts lose what the network holds
KILLS = 3  # of each kind
# A busy machine notes a value long after its answer. What comes twice beyond that is still found.
NOTED_S = 5
STILL = "MW100"  # of the tag "still"
COMMITS = 4  # of the history, each of which would have a mark


@unittest.skipIf(SLOWER > 1, "the time-outs of the run are too short for a sanitizer")
class FaultsOfAPlant(PlantTest):
    """The seed fixes the order of the kills and the pauses between them."""

    def test_no_row_is_lost_doubled_beyond_the_mark_or_out_of_order(self):
        run = self.keep(PlantFaults(self.programs, self.folder, SEED, NOTED_S))
        run.run(KILLS)
        print(f"seed {SEED}: {summary(run)}")
        self.assertEqual([], run.found[:10], f"seed {SEED}")
        self.assertEqual({kind: KILLS for kind in KINDS},
                         {kind: run.counts[kind] for kind in KINDS})
        self.assertGreater(run.counts["rows"], 1000)
        self.assertGreater(run.counts["historical"], 100)


class PlantDisk(PlantTest):
    """A disk that hangs under the file that says which rows the broker has."""

    def test_values_flow_while_the_cursor_cannot_be_stored(self):
        broker = self.broker()
        host = self.host_at(broker)
        _, station = self.publisher(broker.url, "--state state")
        host.await_that(lambda host: host.value(DEVICE, "still")[1] == "good" and host.marks)
        before = self._hang(hanging := self.folder / "state" / "mqtt-cursor.new", host)
        for value in range(1, COMMITS + 1):
            self.control.command(f"set {STILL}={value}")
            host.await_that(lambda host, v=value: host.value(DEVICE, "still") == (v, "good"))
            self.assertTrue(eventually(lambda v=value: self._is_kept(station, v), PATIENCE_S))
        during = len(host.marks)
        self.assertLessEqual(during, before + 2, "a mark did not wait for the disk")
        self.assertTrue(hanging.read_bytes().startswith(b"kakb-cursor"))
        host.await_that(lambda host: len(host.marks) > during)

    def _hang(self, name, host):
        """Whoever opens this to write waits for a reader from now on; returns the marks so far."""
        def is_made():
            try:
                os.mkfifo(name)
            except FileExistsError:  # the station writes it now
                return False
            return True
        self.assertTrue(eventually(is_made, PATIENCE_S))
        return len(host.marks)

    @staticmethod
    def _is_kept(station, value):
        text = station.get("/api/v1/history.csv?link=plc&tag=still&from=0").body.decode()
        return f",{value}," in text.splitlines()[-1]
