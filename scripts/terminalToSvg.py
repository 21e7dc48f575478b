#!/usr/bin/env python3
"""Draws a terminal's screen as SVG: standard input, as tmux captures it with attributes, to standard
output.

usage: terminalToSvg.py TITLE
"""

import re
import sys
from xml.sax.saxutils import escape

CELL_WIDTH, CELL_HEIGHT, FONT_SIZE, MARGIN = 8, 17, 13, 12
INK, PAPER, FRAME = "#d8dee4", "#1c2128", "#39424d"
ATTRIBUTE = re.compile(r"\x1b\[([0-9;]*)m")


def runs_of(line):
    """(column, text, bold, underlined, inverse) for each stretch of a line with the same attributes."""
    column, bold, underlined, inverse = 0, False, False, False
    parts = ATTRIBUTE.split(line)
    for number, part in enumerate(parts):
        if number % 2:
            for code in part.split(";"):
                bold = code == "1" or (bold and code not in ("", "0", "22"))
                underlined = code == "4" or (underlined and code not in ("", "0", "24"))
                inverse = code == "7" or (inverse and code not in ("", "0", "27"))
        elif part:
            yield column, part, bold, underlined, inverse
            column += len(part)


def drawn(run, top):
    """The SVG of one stretch."""
    column, text, bold, underlined, inverse = run
    left = MARGIN + column * CELL_WIDTH
    width = len(text) * CELL_WIDTH
    if inverse:
        yield (f'<rect x="{left}" y="{top}" width="{width}" height="{CELL_HEIGHT}" '
               f'fill="{INK}"/>')
    if text.strip():
        look = ' font-weight="bold"' if bold else ""
        look += ' text-decoration="underline"' if underlined else ""
        yield (f'<text x="{left}" y="{top + FONT_SIZE}" textLength="{width}"{look} '
               f'fill="{PAPER if inverse else INK}">{escape(text)}</text>')


def picture(title, lines):
    """The whole screen, with the command above it."""
    columns = max(len(ATTRIBUTE.sub("", line)) for line in lines)
    width = 2 * MARGIN + columns * CELL_WIDTH
    height = 2 * MARGIN + (len(lines) + 2) * CELL_HEIGHT
    yield (f'<svg xmlns="http://www.w3.org/2000/svg" width="{width}" height="{height}" '
           f'viewBox="0 0 {width} {height}" font-family="monospace" font-size="{FONT_SIZE}" '
           f'xml:space="preserve">')
    yield f"<title>{escape(title)}</title>"
    yield f'<rect width="{width}" height="{height}" rx="6" fill="{PAPER}" stroke="{FRAME}"/>'
    yield from drawn((0, "$ " + title, False, False, False), MARGIN)
    for row, line in enumerate(lines):
        for run in runs_of(line):
            yield from drawn(run, MARGIN + (row + 2) * CELL_HEIGHT)
    yield "</svg>"


def main():
    """Reads the screen; empty lines at its end are not drawn."""
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    lines = sys.stdin.read().rstrip("\n").split("\n")
    while lines and not ATTRIBUTE.sub("", lines[-1]).strip():
        lines.pop()
    print("\n".join(picture(sys.argv[1], lines)))


if __name__ == "__main__":
    main()
