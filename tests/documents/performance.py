#!/usr/bin/env python3
"""Compares the times in the README's performance section with the measured ones.

usage: performance.py README RESULTS
Each time must be one of RESULTS, rounded to as many digits as the README shows.
"""

import re
import sys
from pathlib import Path

TIME = re.compile(r"(\d+(?:\.\d+)?) (ns|µs|ms)")
NANOSECONDS = {"ns": 1, "µs": 1000, "ms": 1000000}
ROWS = ("one word, 100 units cached", "125 words, 125 units cached, unchanged")


def section(text):
    """What stands under the heading."""
    return text.split("## Performance\n")[1].split("\n## ")[0]


def measured_times(results):
    """Those of the rows that the section speaks of: the driver's and libmodbus' own."""
    times = []
    for row in ROWS:
        line = next(line for line in results.splitlines() if line.startswith(f"| {row} |"))
        times += [float(n) * NANOSECONDS[unit] for n, unit in TIME.findall(line.split("|")[2])]
    return times


def is_rounded(number, unit, time):
    """Whether the shown number is the time to its own last digit."""
    digits = len(number.partition(".")[2])
    return f"{time / NANOSECONDS[unit]:.{digits}f}" == number


def main(readme, results):
    """All times of the section, in the order of the rows."""
    shown = TIME.findall(section(Path(readme).read_text(encoding="utf-8")))
    times = measured_times(Path(results).read_text(encoding="utf-8"))
    print("shown", shown, "measured", times)
    same = len(shown) == len(times) and all(
        is_rounded(number, unit, time) for (number, unit), time in zip(shown, times))
    return 0 if same else 1


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
