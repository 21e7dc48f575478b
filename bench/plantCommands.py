#!/usr/bin/python3
"""Commands through a broker over a line with losses, spoilt answers and exceptions: is every outcome
true, and is no old command executed?

usage: bench/plantCommands.py [COMMANDS [SEED]]
  COMMANDS  how many, half of them in Sparkplug and half of them in JSON (default: 10000)
  SEED      of values and faults (default: a new one, which is printed)

Needs mosquitto and python3-paho-mqtt. Each outcome is compared with the memory of the simulated PLC.
Exit status: 0 every command had one outcome, which was true, 1 else.
"""

import sys
from collections import Counter
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "tests" / "support"))

# pylint: disable=wrong-import-position
from lossyCommands import LossyCommands
from seededRun import seeded_run


def summary(run):
    """The commands in each dialect, their outcomes, and each reason, the most frequent first."""
    counts = Counter()
    for reason, number in run.reasons.items():
        counts["expired" if reason.startswith("expired") else reason] += number
    reasons = [f"{number} {reason}" for reason, number in counts.most_common() if reason]
    return "\n".join([f"{run.commands} in Sparkplug, {run.next_id} in JSON: {dict(run.outcomes)}",
                      *reasons])


def main(commands="10000", seed=None):
    """Commands; returns the exit status."""
    return seeded_run(LossyCommands, lambda run: run.run(int(commands)), seed, summary,
                      "outcomes that were not true, missing or too many, and old commands executed")


if __name__ == "__main__":
    if len(sys.argv) > 3 or not all(word.isdigit() for word in sys.argv[1:]):
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
