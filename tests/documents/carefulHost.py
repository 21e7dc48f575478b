#!/usr/bin/env python3
"""Runs the example of a careful host against a simulated PLC with every fault.

It must confirm all of its writes and verify its recipe, and show the PLC's memory at the end.

usage: carefulHost.py PROGRAM_FOLDER EXAMPLE_FOLDER
"""

import sys
import tempfile
import unittest
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from processes import Program
from simulatedPlc import SimulatedPlc

MOST_SECONDS = 100
FAULTS = (
    "",
    "--drop 0.1 --drop-request 0.1 --corrupt 0.1 --truncate 0.1 --duplicate 0.1 --delay 0.1 "
    "--delay-ms 40 --stray-before 0.1 --stray-after 0.1 --wrong-station 0.1 --exception 0.1",
    "--stall 0.3:1 --service-ms 1 --late 0.1:100 --duplicate 0.1:5 --drop 0.1",
    "--echo --drop 0.1 --corrupt 0.1 --late 0.1:60")


class CarefulHost(unittest.TestCase):
    """On a pseudo-terminal; MW400 is 99 by itself."""

    def survives(self, folder, faults):
        """Confirms, verifies, and shows what the PLC holds."""
        plc = SimulatedPlc(PROGRAMS / "kakb-sim", folder, "pty", "--signal",
                           "1:MW:3200:toggle:86400000:99", *faults.split())
        with plc:
            run = Program([EXAMPLE, folder / "plc"], folder)
            self.addCleanup(run.close)
            self.assertEqual(0, run.wait(MOST_SECONDS), f"not all is confirmed: {run}")
        self.assertIn("recipe verified", run.lines)
        values = [line.split() for line in run.lines if line.startswith("MW ")]
        self.assertEqual(9, len(values), run)
        # What is 0 is not in the memory's list.
        for _, number, _, value in values:
            self.assertIn(f"1 MW {number} {value}", plc.memory())

    def test_every_fault(self):
        """And none."""
        for faults in FAULTS:
            with self.subTest(faults=faults), tempfile.TemporaryDirectory() as folder:
                self.survives(Path(folder), faults)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    PROGRAMS = Path(sys.argv[1]).resolve()
    EXAMPLE = Path(sys.argv[2]).resolve() / "carefulHost"
    unittest.main(argv=sys.argv[:1])
