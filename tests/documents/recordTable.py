#!/usr/bin/env python3
"""Compares the table of the records with the build.

usage: recordTable.py DOCUMENT LAYOUT_PROGRAM QT_MAJOR
Exit status: 0 the same, 1 not, 77 skipped: not a 64-bit machine.
"""

import re
import struct
import subprocess
import sys
from pathlib import Path

ROW = re.compile(r"\| (?:`(\w+)`)? ?\| (?:`(\w+)`|(all)) \|[^|]*\|([ \d]+)\| (\d+) \|([ \d]+)\| (\d+) \|")


def table_of(document, qt_major):
    """(record, field): (offset, size) as the document has them; a row without a record goes on."""
    record, found = "", {}
    for line in Path(document).read_text(encoding="utf-8").splitlines():
        match = ROW.match(line)
        if not match:
            continue
        record = match.group(1) or record
        offset, size = match.group(4, 5) if qt_major == "5" else match.group(6, 7)
        found[record, match.group(2) or match.group(3)] = (int(offset.strip() or 0), int(size))
    return found


def layout_of(program):
    """The same as compiled."""
    lines = subprocess.run([program], check=True, text=True, stdout=subprocess.PIPE).stdout
    return {(record, field): (int(offset), int(size))
            for record, field, offset, size in map(str.split, lines.splitlines())}


def main(document, program, qt_major):
    """Both ways."""
    if struct.calcsize("P") != 8:
        return 77
    table, layout = table_of(document, qt_major), layout_of(program)
    for place in sorted(table.keys() | layout.keys()):
        if table.get(place) != layout.get(place):
            print(f"FAILED: {place}: document {table.get(place)}, build {layout.get(place)}",
                  file=sys.stderr)
    print(f"{len(layout)} places with Qt {qt_major}")
    return 0 if table == layout else 1


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
