"""Takes the code blocks out of a document."""

import re
from dataclasses import dataclass, field

INDENT = "    "
MARKER = re.compile(r"<!-- (.*) -->$")


@dataclass
class Block:
    """A fenced or indented block, or one of a manual page, which is whole once its .fi was found.

    `marker` is a comment right above it that only the source shows.
    """

    document: str
    line: int
    language: str = ""
    marker: str = ""
    lines: list = field(default_factory=list)
    is_whole: bool = False

    def __str__(self):
        return f"{self.document}:{self.line}"

    @property
    def text(self):
        return "\n".join(self.lines) + "\n"


def _marker_above(lines, start):
    above = MARKER.match(lines[start - 1].strip()) if start else None
    return above.group(1) if above else ""


def _fenced(name, lines, start):
    block = Block(name, start + 1, lines[start].strip()[3:].strip(), _marker_above(lines, start))
    end = start + 1
    while not lines[end].startswith("```"):
        block.lines.append(lines[end])
        end += 1
    return block, end + 1


def _indented(name, lines, start):
    block = Block(name, start + 1, marker=_marker_above(lines, start))
    end = start
    while end < len(lines) and (lines[end].startswith(INDENT) or not lines[end].strip()):
        block.lines.append(lines[end][len(INDENT):].rstrip())
        end += 1
    while not block.lines[-1]:
        block.lines.pop()
    return block, end


def _may_start(lines, at):
    """An indented line goes on with the paragraph above it, if there is one."""
    return at > 0 and (not lines[at - 1].strip() or bool(_marker_above(lines, at)))


def _manual_blocks(name, lines):
    """What a manual page shows as it stands, from .nf to .fi."""
    found = []
    for number, line in enumerate(lines, 1):
        if line == ".nf":
            found.append(Block(name, number))
        elif found and not found[-1].is_whole:
            found[-1].is_whole = line == ".fi"
            found[-1].lines += [] if line == ".fi" else [line.replace("\\-", "-")]
    return found


def blocks_of(path, name):
    """All blocks of a document, in order."""
    lines = path.read_text(encoding="utf-8").splitlines()
    if path.suffix == ".1":
        return _manual_blocks(name, lines)
    found = []
    at = 0
    while at < len(lines):
        if lines[at].startswith("```"):
            block, at = _fenced(name, lines, at)
        elif lines[at].startswith(INDENT) and _may_start(lines, at):
            block, at = _indented(name, lines, at)
        else:
            at += 1
            continue
        found.append(block)
    return found
