"""What the station shows and tells while a line fails in every way: a short run of both."""

import os
import unittest

from lossyWrites import LossyWrites
from processes import SLOWER
from stationFaults import StationFaults
from stationProgram import StationTest

SEED = int.from_bytes(os.urandom(4), "big")
FAULT_SECONDS = 20
WRITES = 300
BUSY_S = 1  # a machine that runs other tests, too


@unittest.skipIf(SLOWER > 1, "the time-outs of the run are too short for a sanitizer")
class FaultsOfALine(StationTest):
    """The seed is printed, so that a failure can be made again."""

    def test_value_shown_as_good_was_true_at_its_time(self):
        run = self.keep(StationFaults(self.programs, self.folder, SEED, BUSY_S))
        run.run(FAULT_SECONDS)
        print(f"seed {SEED}: {run.counts}")
        self.assertEqual([], run.found[:10], f"seed {SEED}")
        self.assertGreater(run.counts["good"], 1000)
        self.assertGreater(run.counts["faults"], 2)

    def test_write_told_as_confirmed_is_in_the_plc(self):
        run = self.keep(LossyWrites(self.programs, self.folder, SEED))
        run.run(WRITES)
        print(f"seed {SEED}: {dict(run.outcomes)}")
        self.assertEqual([], run.found[:10], f"seed {SEED}")
        self.assertGreater(min(run.outcomes[outcome] for outcome in ("confirmed", "refused")), 10)
        self.assertEqual(WRITES, sum(run.outcomes.values()))
