#!/usr/bin/env python3
"""Runs tests of kakb-host and kakb-sim as a user starts them.

usage: runTests.py PROGRAM_FOLDER [MODULE[.CLASS[.TEST]]]...
  PROGRAM_FOLDER   where kakb-host and kakb-sim are
  MODULE           a file of this folder, without .py (default: all)

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
    sys.path[:0] = [str(HERE), str(HERE.parent / "support")]
    tests = tests or sorted(path.stem for path in HERE.glob("*.py") if path.stem != "runTests")
    result = unittest.main(module=None, argv=[sys.argv[0], *tests], verbosity=2, exit=False).result
    if not result.wasSuccessful():
        return 1
    return SKIPPED if len(result.skipped) == result.testsRun else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
