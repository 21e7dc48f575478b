"""Commands through a broker while the line to the PLC fails in every way: a short run."""

import os
import unittest

from lossyCommands import LossyCommands
from processes import SLOWER
from stationProgram import StationTest

SEED = int.from_bytes(os.urandom(4), "big")
COMMANDS = 300


@unittest.skipIf(SLOWER > 1, "the time-outs of the run are too short for a sanitizer")
class PlantCommands(StationTest):
    """The seed is printed, so that a failure can be made again."""

    def test_each_command_has_one_outcome_that_is_true_and_old_ones_are_not_executed(self):
        run = self.keep(LossyCommands(self.programs, self.folder, SEED))
        run.run(COMMANDS)
        print(f"seed {SEED}: {dict(run.outcomes)}")
        self.assertEqual([], run.found[:10], f"seed {SEED}")
        self.assertGreater(min(run.outcomes[outcome] for outcome in ("confirmed", "refused")), 10)
        self.assertEqual(COMMANDS, sum(run.outcomes.values()))
        self.assertGreater(min(run.commands, run.next_id), COMMANDS // 4)
