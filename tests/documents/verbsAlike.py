#!/usr/bin/env python3
"""Reads the help of every verb: what has one name means one thing in all verbs.

usage: verbsAlike.py SOURCE PROGRAM_FOLDER

- An option has the same explanation in every verb that has it; its default may differ.
- --turnaround-us is offered only where reads are grouped by the time that a request takes.
- The man page's table of interrupts, time-outs and attempts has every verb. A verb that takes
  --timeout-ms takes --attempts, and the table says so.
- No help counts as shown on a full disk.
"""

import re
import subprocess
import sys
from pathlib import Path

from helpTexts import OPTION, help_of, verbs_of

GROUPING = {"plan", "watch", "read"}
EXPLAINED_BY_VERB = {"--tags", "-h,--help"}  # a polling verb has a default file
COLUMNS = {2: "--timeout-ms", 3: "--attempts"}

problems = []


def expect(same, sentence):
    """Notes what is wrong, and goes on."""
    if not same:
        problems.append(sentence)


def explanations_in(lines):
    """Each option and its explanation, without type, range and default."""
    found, option = {}, None
    for line in lines:
        match = OPTION.match(line) if line.lstrip().startswith("-") else None
        if match:
            option = match.group(1)
            found[option] = " ".join(re.split(r"  +", line.strip())[1:])
        elif not line.strip() or not line.startswith("    "):
            option = None
        elif option:
            found[option] = f"{found[option]} {line.strip()}".strip()
    return found


def table_rows(page):
    """The rows of the man page's table: cells without roff's escapes."""
    text = page.read_text(encoding="utf-8").replace("\\-", "-")
    heading, _, *rows = re.search(r"^\.TS\n.*?\.\n(.*?)\.TE$", text, re.M | re.S).group(1).split(
        "\n")
    expect(heading.split("\t")[2:] == list(COLUMNS.values()), f"the table's heading: {heading}")
    return [row.split("\t") for row in rows if row]


def check_explanations(helps):
    """One explanation for each name."""
    said = {}
    for verb, options in helps.items():
        for option, words in options.items():
            expect(words, f"{verb}: {option} is not explained")
            if option not in EXPLAINED_BY_VERB:
                first, before = said.setdefault(option, (verb, words))
                expect(words == before, f"{option}: {first}: {before!r}, {verb}: {words!r}")
    return said


def check_table(helps, page):
    """Every verb has a row, and the row tells which options the verb has."""
    rows = {row[0]: row for row in table_rows(page)}
    expect(sorted(rows) == sorted(helps), f"the table's verbs: {sorted(rows.keys() ^ helps.keys())}")
    for verb in rows.keys() & helps.keys():
        for column, option in COLUMNS.items():
            expect((rows[verb][column] != "-") == (option in helps[verb]),
                   f"the table: {verb}: {option}: {rows[verb][column]}")


def check_full_disk(program, verbs):
    """The user did not see the help."""
    for verb in ["", *verbs]:
        with open("/dev/full", "wb") as full:
            status = subprocess.run([program, *verb.split(), "--help"], stdout=full, check=False,
                                    stderr=subprocess.DEVNULL).returncode
        expect(status == 1, f"{verb} --help on a full disk ends with {status}")


def main(source, programs):
    """All verbs of kakb-host."""
    program = Path(programs) / "kakb-host"
    helps = {" ".join(verb): explanations_in(help_of(program, *verb)) for verb in verbs_of(program)}
    said = check_explanations(helps)
    grouping = {verb for verb in helps if "--turnaround-us" in helps[verb]}
    expect(grouping == GROUPING, f"--turnaround-us: {sorted(grouping)}")
    check_table(helps, Path(source) / "docs" / "man" / "kakb-host.1")
    check_full_disk(program, helps)
    for problem in problems:
        print("FAILED:", problem, file=sys.stderr)
    print(f"{len(said)} options in {len(helps)} verbs")
    return 1 if problems else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
