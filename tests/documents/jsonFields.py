#!/usr/bin/env python3
"""Compares docs/json.md with the objects that kakb-host prints, both ways.

usage: jsonFields.py SOURCE PROGRAM_FOLDER

- Every verb with --json has a section. Its runs (below) print only fields that a table of the section
  has, with one of the types of the table.
- Every field of every table is printed in some run, and with each of its types.
"""

import os
import re
import shlex
import sys
from pathlib import Path

ROW = re.compile(r"^\| `([^`]+)` \| ([^|]+) \| [^|]+ \|(.*)\|$")
# What JSON types the words of the tables stand for. Python's json reads numbers without a fraction
# as int.
TYPES = {
    "text": lambda value: isinstance(value, str),
    "integer": lambda value: isinstance(value, int) and not isinstance(value, bool),
    "number": lambda value: isinstance(value, (int, float)) and not isinstance(value, bool),
    "boolean": lambda value: isinstance(value, bool),
    "null": lambda value: value is None,
    "list": lambda value: isinstance(value, list) and all(isinstance(one, dict) for one in value),
    "list of texts": lambda value: isinstance(value, list) and all(
        isinstance(one, str) for one in value),
}


class Kind:
    """One table: an object that a verb prints."""

    def __init__(self, verb, title):
        self.name = f"{verb}: {title}" if title else verb
        self.types = {}  # field: the types that it may have
        self.optional = set()
        self.seen = set()  # (field, type)

    def add(self, field, types, there):
        """A row of the table."""
        self.types[field] = re.split(", | or ", types)
        assert all(one in TYPES for one in self.types[field]), f"{self.name}: {field}: {types}"
        if there:
            self.optional.add(field)

    def fits(self, values):
        """Whether the table has every field of an object."""
        return all(field in self.types for field, _ in values)

    def take(self, values):
        """Notes the fields of an object that fits; yields what is wrong with them."""
        present = {field for field, _ in values}
        for field in self.types.keys() - self.optional - present:
            if "[]" not in field:
                yield f"{self.name}: {field} is missing"
        for field, value in values:
            found = [one for one in self.types[field] if TYPES[one](value)]
            if not found:
                yield f"{self.name}: {field}: {value!r} is not {' or '.join(self.types[field])}"
            self.seen.update((field, one) for one in found)

    def unseen(self):
        """What no run has printed."""
        return [f"{self.name}: {field}: {one}" for field, types in self.types.items()
                for one in types if (field, one) not in self.seen]


def kinds_in(document):
    """The kinds of objects of each verb."""
    kinds, verb, kind = {}, None, None
    for line in document.read_text(encoding="utf-8").splitlines():
        if line.startswith("## "):
            verb, kind = line[3:], None
            kinds[verb] = []
        elif line.startswith("### "):
            kind = Kind(verb, line[4:])
            kinds[verb].append(kind)
        match = ROW.match(line)
        if match:
            if kind is None:
                kind = Kind(verb, "")
                kinds[verb].append(kind)
            kind.add(match.group(1), match.group(2).strip(), match.group(3).strip())
    return kinds


def values_in(found, before=""):
    """Each field of an object, as the tables name it, with its value."""
    values = []
    for name, value in found.items():
        if isinstance(value, dict):
            values += values_in(value, f"{before}{name}.")
            continue
        values.append((f"{before}{name}", value))
        if isinstance(value, list):
            for one in value:
                if isinstance(one, dict):
                    values += values_in(one, f"{before}{name}[].")
    return values


def compare(objects, kinds):
    """What is wrong with the objects of a run."""
    for found in objects:
        values = values_in(found)
        fitting = [kind for kind in kinds if kind.fits(values)]
        if not fitting:
            yield f"no table has all fields of {found}"
        else:
            yield from fitting[0].take(values)


def main(source, programs):
    """Runs every verb until every field has been there."""
    os.environ["KAKB_PROGRAMS"] = str(Path(programs).resolve())
    sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
    from helpTexts import help_of, options_in, verbs_of
    from jsonRuns import runs_of

    kinds = kinds_in(Path(source) / "docs" / "json.md")
    program = Path(programs) / "kakb-host"
    verbs = {" ".join(verb) for verb in verbs_of(program)
             if "--json" in options_in(help_of(program, *verb))}
    problems = [f"{verb}: a verb without a section, or a section without a verb"
                for verb in sorted(verbs ^ kinds.keys())]
    count = 0
    for command, objects in runs_of():
        words = shlex.split(command)
        verb = " ".join(words[:2]) if " ".join(words[:2]) in kinds else words[0]
        found = list(compare(objects, kinds.get(verb, [])))
        problems += [f"{command}: {problem}" for problem in found]
        count += len(objects)
    problems += [f"never printed: {field}" for of_verb in kinds.values() for kind in of_verb
                 for field in kind.unseen()]
    for problem in problems:
        print("FAILED:", problem, file=sys.stderr)
    print(f"{sum(len(of_verb) for of_verb in kinds.values())} tables, {count} objects")
    return 1 if problems else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
