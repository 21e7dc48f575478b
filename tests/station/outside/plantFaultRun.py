"""What a host ends with when broker, network and station are killed: a short run of the benchmark."""

import unittest

from plantFaults import KINDS, PlantFaults, summary
from plantTest import PlantTest
from processes import SLOWER

SEED = 1657  # two of its cuts lose what the network holds
KILLS = 3  # of each kind
# A busy machine notes a value long after its answer. What comes twice beyond that is still found.
NOTED_S = 5


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
