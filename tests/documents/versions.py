#!/usr/bin/env python3
"""Compares the places that name the project's version, which is not the driver's own.

usage: versions.py SOURCE PROGRAM_FOLDER
"""

import re
import subprocess
import sys
from pathlib import Path

NUMBER = r"(\d+\.\d+\.\d+)"
# The first version in each file is the newest.
FILES = {
    "CMakeLists.txt": rf"^set\(KAKB_PROJECT_VERSION {NUMBER}\)$",
    "CHANGELOG.md": rf"^## \[{NUMBER}\] - \d{{4}}-\d\d-\d\d$",
    "packaging/changelog": rf"^quorvane-ka-kb \({NUMBER}-\d+\)",
}
PROGRAMS = ("kakb-host", "kakb-sim")


def version_in(text, pattern):
    """The first version; None: there is none."""
    match = re.search(pattern, text, re.M)
    return match and match.group(1)


def main(source, programs):
    """All places, each with what it says."""
    found = {name: version_in((Path(source) / name).read_text(encoding="utf-8"), pattern)
             for name, pattern in FILES.items()}
    for program in PROGRAMS:
        said = subprocess.run([Path(programs) / program, "--version"], check=True, text=True,
                              stdout=subprocess.PIPE).stdout
        found[f"{program} --version"] = version_in(said, rf"\A{program} {NUMBER}\n\Z")
    for place, version in found.items():
        print(f"{place}: {version}")
    return 0 if None not in found.values() and len(set(found.values())) == 1 else 1


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
