#!/usr/bin/env python3
"""Compares the tables of docs/contract.md with the driver's headers, in both directions.

usage: contract.py SOURCE
"""

import re
import sys
from pathlib import Path

RECORDS = {
    "VARIABLE": "include/quorvane_ka_kb_plc.h",
    "FRAME_PRO": "include/quorvane_ka_kb_plc.h",
    "KEY_ADDRESS": "include/quorvane_ka_kb_plc.h",
    "_RCP_VAR_PRO": "include/quorvane_ka_kb_plc.h",
    "_DATA_": "include/driverState.h",
    "Protocol": "include/driverState.h",
}
FIELD = re.compile(r"^ {4}(?:unsigned )?[\w:]+(?:<\w+>)?[*&]? [*&]?(\w+)(?:\[\w+\])?(?: ?=[^;()]*| ?\{\})?;", re.M)
FUNCTION = re.compile(r"^(?:inline |const |unsigned )*[\w:]+(?:<\w+>)?[*&]? [*&]?(\w+)\(", re.M)
TABLE = re.compile(r"^static const QString (\w+)", re.M)
EXPORT = re.compile(r"\b(intf_\w+)\(")


def without_comments(text):
    """The code of a header."""
    return re.sub(r"//.*", "", text)


def fields_of(record, text):
    """A record's fields, in the order of their declarations."""
    body = re.search(rf"^(?:struct|class) {record}\n\{{(.*?)^\}};", without_comments(text), re.M | re.S)
    return FIELD.findall(body.group(1))


def rows_of(page, heading):
    """The names in the first column below a heading."""
    section = re.split(r"^#+ ", page.split(f"# {heading}\n", 1)[1], flags=re.M)[0]
    return re.findall(r"^\| `(\w+)` \|", section, re.M)


def differences(what, wanted, listed):
    """Names that only one side has, and names that stand in another order."""
    for name in wanted:
        if name not in listed:
            yield f"{what}: {name} is not described"
    for name in listed:
        if name not in wanted:
            yield f"{what}: there is no {name}"
    if sorted(wanted) == sorted(listed) and list(wanted) != list(listed):
        yield f"{what}: the order is not that of the header"


def troubles_of_functions(source, page):
    """Functions: the listed ones are declared, and no odd name is left out."""
    for folder in ("device", "service"):
        declared = set()
        for header in sorted((source / folder).rglob("*.h")):
            declared.update(FUNCTION.findall(without_comments(header.read_text(encoding="utf-8"))))
        listed = rows_of(page, f"Functions of `{folder}/`")
        odd = {name for name in declared if re.search(r"[_0-9]", name)}
        yield from differences(folder, sorted(odd | (set(listed) & declared)), sorted(listed))


def main(source):
    """All headers."""
    source = Path(source)
    page = (source / "docs/contract.md").read_text(encoding="utf-8")
    header = without_comments((source / "include/quorvane_ka_kb_plc.h").read_text(encoding="utf-8"))
    tables = without_comments((source / "include/registerTables.h").read_text(encoding="utf-8"))
    troubles = list(differences("exports", EXPORT.findall(header),
                                rows_of(page, "Exported functions")))
    troubles += differences("tables", TABLE.findall(tables), rows_of(page, "Tables and texts"))
    for record, file in RECORDS.items():
        fields = fields_of(record, (source / file).read_text(encoding="utf-8"))
        troubles += differences(record, fields, rows_of(page, f"`{record}`"))
    troubles += troubles_of_functions(source, page)
    for trouble in troubles:
        print(f"FAILED: {trouble}", file=sys.stderr)
    names = len(re.findall(r"^\| `\w+` \|", page, re.M))
    print(f"{names} names described")
    return 1 if troubles or names == 0 else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
