#!/usr/bin/env python3
"""Compares the places that name the project's version: sources, packages, manual pages, programs,
and what an installed tree tells CMake and pkg-config. The interface version that the driver tells its
hosts is none of them.

usage: versions.py SOURCE BUILD PROGRAM_FOLDER
"""

import re
import subprocess
import sys
from pathlib import Path

NUMBER = r"(\d+\.\d+\.\d+)"
# The first version in each file is the newest.
FILES = {
    "CMakeLists.txt": rf"^project\(quorvane_ka_kb_plc VERSION {NUMBER} ",
    "CHANGELOG.md": rf"^## \[{NUMBER}\] - \d{{4}}-\d\d-\d\d$",
    "debian/changelog": rf"^quorvane-ka-kb \({NUMBER}-\d+\)",
    "docs/man/kakb-host.1": rf'^\.TH KAKB-HOST 1 [-\d]+ "quorvane ka_kb driver {NUMBER}" ',
    "docs/man/kakb-sim.1": rf'^\.TH KAKB-SIM 1 [-\d]+ "quorvane ka_kb driver {NUMBER}" ',
    "docs/man/kakb-station.1":
        rf'^\.TH KAKB-STATION 1 [-\d]+ "quorvane ka_kb driver {NUMBER}" ',
}
MADE = {
    "quorvane_ka_kb_plc-config-version.cmake": rf'^set\(PACKAGE_VERSION "{NUMBER}"\)$',
    "quorvane_ka_kb_plc-qt5.pc": rf"^Version: {NUMBER}$",
    "quorvane_ka_kb_line-qt5.pc": rf"^Version: {NUMBER}$",
}
PROGRAMS = ("kakb-host", "kakb-sim", "kakb-station")


def version_in(text, pattern):
    """The first version; None: there is none."""
    match = re.search(pattern, text, re.M)
    return match and match.group(1)


def main(source, build, programs):
    """All places, each with what it says."""
    found = {name: version_in((Path(folder) / name).read_text(encoding="utf-8"), pattern)
             for folder, files in ((source, FILES), (build, MADE))
             for name, pattern in files.items()}
    for program in PROGRAMS:
        said = subprocess.run([Path(programs) / program, "--version"], check=True, text=True,
                              stdout=subprocess.PIPE).stdout
        found[f"{program} --version"] = version_in(said, rf"\A{program} {NUMBER}\n\Z")
    for place, version in found.items():
        print(f"{place}: {version}")
    return 0 if None not in found.values() and len(set(found.values())) == 1 else 1


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
