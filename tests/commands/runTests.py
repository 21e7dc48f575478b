#!/usr/bin/env python3
"""Runs tests of the programs as a user starts them.

usage: runTests.py PROGRAM_FOLDER [--folder FOLDER] [MODULE[.CLASS[.TEST]]]...
  PROGRAM_FOLDER   where kakb-host, kakb-sim and kakb-station are
  FOLDER           where the modules are (default: this folder)
  MODULE           a file of the folder, without .py (default: all)

Exit status: 0 all passed, 1 usage or a failure, 77 all were skipped.
"""

import os
import sys
import unittest
from pathlib import Path

HERE = Path(__file__).resolve().parent
SKIPPED = 77


def main(programs, *tests):
    """Runs the tests in this process; returns the exit status."""
    os.environ["KAKB_PROGRAMS"] = str(Path(programs).resolve())
    folder = HERE
    if tests[:1] == ("--folder",):
        folder, tests = Path(tests[1]).resolve(), tests[2:]
    sys.path[:0] = [str(folder), str(HERE.parent / "support")]
    tests = tests or sorted(path.stem for path in folder.glob("*.py") if path.stem != "runTests")
    result = unittest.main(module=None, argv=[sys.argv[0], *tests], verbosity=2, exit=False).result
    if not result.wasSuccessful():
        return 1
    return SKIPPED if len(result.skipped) == result.testsRun else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
