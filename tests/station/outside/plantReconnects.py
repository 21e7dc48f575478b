"""Sessions that a broker cuts at random packets, between stops and kills of the station: a short run."""

import os

from sessionCuts import SessionCuts, summary
from stationProgram import StationTest

SEED = int.from_bytes(os.urandom(4), "big")
RECONNECTS, RESTARTS = 90, 20


class PlantReconnects(StationTest):
    """The seed is printed, so that a failure can be made again."""

    def test_each_connect_takes_the_next_number_and_its_births_carry_it(self):
        run = self.keep(SessionCuts(self.programs, self.folder, SEED))
        run.run(RECONNECTS, RESTARTS)
        print(f"seed {SEED}: {summary(run)}")
        self.assertEqual([], run.found[:10], f"seed {SEED}")
        self.assertGreaterEqual(run.counts["sessions"], RECONNECTS + RESTARTS)
        self.assertGreater(run.counts["NBIRTH"], RECONNECTS // 4)
        self.assertGreater(min(run.counts["killed"], run.counts["stopped"]), 0)
