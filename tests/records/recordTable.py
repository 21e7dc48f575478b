#!/usr/bin/env python3
"""Compares what a document says of the records with the build.

usage: recordTable.py DOCUMENT QT_MAJOR LAYOUT_COMMAND...
The document has a table for 64-bit machines, and for 32-bit ones with Qt 5 the size of each record.
Exit status: 0 the same, 1 not.
"""

import re
import subprocess
import sys
from pathlib import Path

ROW = re.compile(r"\| (?:`(\w+)`)? ?\| (?:`(\w+)`|(all)) \| ?(?:`(\w+)`|bytes)? ?"
                 r"\|([ \d]+)\| (\d+) \|([ \d]+)\| (\d+) \|")
NARROW = re.compile(r"On 32-bit machines with Qt 5 a `QString` takes (\d+) bytes.*?\n\n", re.DOTALL)
NARROW_SIZE = re.compile(r"`(\w+)`(?: has)?\s(\d+)")


def rows_of(text, qt_major):
    """(record, field, type, offset, size) of the table; a row without a record goes on with it."""
    record = ""
    for line in text.splitlines():
        match = ROW.match(line)
        if not match:
            continue
        record = match.group(1) or record
        offset, size = match.group(5, 6) if qt_major == "5" else match.group(7, 8)
        yield (record, match.group(2) or match.group(3), match.group(4), int(offset.strip() or 0),
               int(size))


def narrow_rows(text):
    """The same for 32 bits, where the fields follow each other without gaps."""
    paragraph = NARROW.search(text)
    sizes = {name: int(size) for name, size in NARROW_SIZE.findall(paragraph.group(0))}
    sizes["QString"] = int(paragraph.group(1))
    at = 0
    for record, field, kind, _, size in rows_of(text, "5"):
        if field == "all":
            yield record, field, kind, 0, sizes[record]
            at = 0
            continue
        size = sizes.get(kind, size)
        yield record, field, kind, at, size
        at += size


def layout_of(command):
    """(record, field): (offset, size) as compiled."""
    lines = subprocess.run(command, check=True, text=True, stdout=subprocess.PIPE).stdout
    return {(record, field): (int(offset), int(size))
            for record, field, offset, size in map(str.split, lines.splitlines())}


def main(document, qt_major, *command):
    """Both ways."""
    text = Path(document).read_text(encoding="utf-8")
    layout = layout_of(command)
    is_narrow = layout.pop(("QString", "all"))[1] == 4
    rows = narrow_rows(text) if is_narrow else rows_of(text, qt_major)
    table = {(record, field): (offset, size) for record, field, _, offset, size in rows}
    for place in sorted(table.keys() | layout.keys()):
        if table.get(place) != layout.get(place):
            print(f"FAILED: {place}: document {table.get(place)}, build {layout.get(place)}",
                  file=sys.stderr)
    print(f"{len(layout)} places of the records with Qt {qt_major}, {32 if is_narrow else 64} bits")
    return 0 if table == layout and layout else 1


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
