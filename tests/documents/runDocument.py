#!/usr/bin/env python3
"""Runs every command of a document and checks every listing in it.

usage: runDocument.py DOCUMENT SOURCE BUILD PROGRAM_FOLDER...
  DOCUMENT         a Markdown file, or a manual page (.1), of which what is from .nf to .fi is run
  SOURCE, BUILD    the project's folders
  PROGRAM_FOLDER   where kakb-host, kakb-sim and the examples are

Says what was run and what was marked (marks.py). Exit status: 0 all as the document says, 1 not.
"""

import subprocess
import sys
import tempfile
from pathlib import Path

from documentBlocks import blocks_of
from listings import (check_build_file, check_change, check_configuration, check_source,
                      check_table)
from marks import MARKS
from session import Failure, Session, commands_in, run_block, without_comment

PROGRAMS = ("kakb-host", "kakb-sim", "kakb-station", "curl", "tinyHost", "loadedDriver", "cmake", "tshark",
            "man", "echo", "python3", "openssl", "mosquitto_passwd", "for", "chmod")


def is_command(command):
    """Whether the line is one that a user types."""
    return command in MARKS or command.split()[0] in PROGRAMS or command.startswith("scripts/")


def check_block(block, session):
    """Does with a block what its kind asks for; there is no block of no kind."""
    if block.language == "cpp":
        check_source(block, session)
    elif block.language == "diff":
        check_change(block, session)
    elif block.language in ("text", "nginx"):
        return  # a drawing, or the settings of another program
    elif block.language == "toml":
        check_configuration(block, session)
    elif block.language == "cmake" or block.lines[0].startswith("find_package("):
        check_build_file(block, session)
    elif block.lines[0].startswith("name,"):
        check_table(block, session)
    elif all(is_command(without_comment(command)) for command, _ in commands_in(block)):
        run_block(block, session)
        return
    else:
        raise Failure("neither commands nor a listing that can be checked")
    print("checked", block)


def checked(block, session):
    """Says what is wrong, if something is."""
    try:
        check_block(block, session)
        return True
    except (Failure, OSError, subprocess.SubprocessError) as error:
        print(f"FAILED: {block}: {error}", file=sys.stderr)
        return False


def main(document, source, build, *programs):
    """Goes on after a failure, so that all of them are told."""
    path = Path(document)
    with tempfile.TemporaryDirectory() as folder:
        session = Session(Path(folder), Path(source).resolve(), Path(build).resolve(), programs)
        try:
            results = [checked(block, session) for block in blocks_of(path, path.name)]
        finally:
            session.end_all()
    return 0 if all(results) else 1


if __name__ == "__main__":
    if len(sys.argv) < 5:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
