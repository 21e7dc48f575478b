#!/usr/bin/env python3
"""Compares the man pages with what the programs print with --help, both ways.

usage: manPages.py SOURCE PROGRAM_FOLDER
"""

import re
import signal
import socket
import subprocess
import sys
import tempfile
from pathlib import Path

from helpTexts import help_of, options_in, statuses_in, verbs_of

problems = []


def expect(same, sentence):
    """Notes what is wrong, and goes on."""
    if not same:
        problems.append(sentence)


def plain(text):
    """Text without roff's escapes."""
    return text.replace("\\-", "-").replace('"', "")


def sections(page):
    """Heading and lines of each section and subsection."""
    heading, lines = "", []
    for line in page.read_text(encoding="utf-8").splitlines():
        match = re.match(r"\.S[HS] (.*)", line)
        if match:
            yield heading, lines
            heading, lines = plain(match.group(1)), []
        else:
            lines.append(line)
    yield heading, lines


def options_on(lines):
    """The options that a section describes: the first line of each paragraph with a tag."""
    found = set()
    for before, line in zip(lines, lines[1:]):
        if before == ".TP" and line.startswith(".B"):
            found.update(re.findall(r"(?<![\w-])--?[a-z][a-z-]*", plain(line)))
    return found


def statuses_on(page):
    """Exit status and meaning as the page has them."""
    lines = dict(sections(page))["EXIT STATUS"]
    return {int(tag.split()[1]): plain(meaning)
            for tp, tag, meaning in zip(lines, lines[1:], lines[2:]) if tp == ".TP"}


def check_host(program, page):
    """Each verb has exactly the options that the sections with its name describe."""
    described = dict(sections(page))
    of_program = options_on(described["Of the program"])
    expect(of_program == options_in(help_of(program)), f"{page.name}: options of the program")
    verbs = [" ".join(verb) for verb in verbs_of(program)]
    for verb in verbs:
        options = options_on(described["Of all verbs"])
        for heading, lines in described.items():
            if heading.startswith("Of ") and verb in re.split(", ", heading[3:]):
                options |= options_on(lines)
        shown = options_in(help_of(program, *verb.split()))
        expect(options == shown, f"{page.name}: {verb}: {sorted(options ^ shown)}")
    named = [plain(line).split() for tp, line in zip(described["VERBS"], described["VERBS"][1:])
             if tp == ".TP"]
    listed = [" ".join(words[1:3] if words[1] == "recipe" else words[1:2]) for words in named]
    expect(listed == verbs, f"{page.name}: verbs {listed}, not {verbs}")
    expect(statuses_on(page) == statuses_in(help_of(program)), f"{page.name}: exit statuses")


def check_simulator(program, page):
    """The options, and each exit status seen once."""
    options = set().union(*(options_on(lines) for _, lines in sections(page)))
    shown = options_in(help_of(program))
    expect(options == shown, f"{page.name}: {sorted(options ^ shown)}")
    expect(sorted(statuses_on(page)) == [0, 1, 2], f"{page.name}: exit statuses")
    quiet = {"stdout": subprocess.PIPE, "stderr": subprocess.DEVNULL, "check": False}
    expect(subprocess.run([program, "--nothing"], **quiet).returncode == 1, "usage is not 1")
    unopened = subprocess.run([program, "--serial", "/nowhere/tty"], **quiet).returncode
    expect(unopened == 2, "a link that fails is not 2")
    with subprocess.Popen([program], stdout=subprocess.PIPE, stdin=subprocess.DEVNULL) as running:
        running.stdout.readline()
        running.send_signal(signal.SIGTERM)
        expect(running.wait() == 0, "an end on request is not 0")


def check_station(program, page):
    """The options, the exit statuses, and each key of the configuration in the program's words."""
    options = set().union(*(options_on(lines) for _, lines in sections(page)))
    shown = options_in(help_of(program))
    expect(options == shown, f"{page.name}: {sorted(options ^ shown)}")
    expect(statuses_on(page) == statuses_in(help_of(program)), f"{page.name}: exit statuses")
    lines = dict(sections(page))["CONFIGURATION"]
    described = [key for tp, tag in zip(lines, lines[1:]) if tp == ".TP"
                 for key in re.findall(r"(?<!\[)\b[a-z_]+\b(?!\])", re.sub(r"^\.\w+", "", tag))]
    with tempfile.TemporaryDirectory() as folder:
        wrong = Path(folder) / "station.toml"
        wrong.write_text("x = 1\n[history]\nx = 1\n[mqtt]\nx = 1\n[[link]]\nx = 1\n", encoding="utf-8")
        said = subprocess.run([program, "--config", wrong, "--check"], text=True, check=False,
                              stderr=subprocess.PIPE).stderr
    known = [key for keys in re.findall("the keys are (.*)", said) for key in keys.split(", ")]
    tables = {"history", "mqtt", "link"}
    expect(sorted(described) == sorted([key for key in known if key not in tables] + ["link"]),
           f"{page.name}: keys {described}, not {known}")


def check_report(program, page):
    """Each key of the report is described, in the report's order, with its unit in its name."""
    lines = dict(sections(page))["REPORT"]
    described = [key for tp, tag in zip(lines, lines[1:]) if tp == ".TP"
                 for key in plain(tag).replace(",", "").split()[1:]]
    printed = subprocess.run([program, "--report", "/dev/stdout", "--until-stdin-ends"], check=True,
                             text=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE).stdout
    written = [line.split()[0] for line in printed.splitlines()[1:]]
    expect(described == written, f"{page.name}: report keys {described}, not {written}")


def check_control(program, page):
    """Each command of a control client is described, and the program takes each."""
    lines = dict(sections(page))["CONTROL"]
    described = [plain(tag).split()[1] for tp, tag in zip(lines, lines[1:]) if tp == ".TP"]
    with tempfile.TemporaryDirectory() as folder:
        path = Path(folder) / "control"
        with subprocess.Popen([program, "--control", path], text=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE) as running:
            running.stdout.readline()
            with socket.socket(socket.AF_UNIX) as client:
                client.connect(str(path))
                client.sendall(b"?\nquit\n")
                answers = client.makefile(encoding="utf-8").read().splitlines()
            expect(running.wait() == 0, "quit does not end with 0")
    listed = re.findall(r"'(\w+)", answers[0])
    expect(described == listed, f"{page.name}: control commands {described}, not {listed}")


def check_roff(page):
    """Formats without a warning."""
    done = subprocess.run(
        ["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(page)], text=True,
        stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, check=False,
        env={"LC_ALL": "C.UTF-8", "MANWIDTH": "80", "PATH": "/usr/bin:/bin"})
    expect(done.returncode == 0 and not done.stderr, f"{page.name}: {done.stderr}")


def main(source, programs):
    """All programs."""
    pages = Path(source) / "docs" / "man"
    check_station(Path(programs) / "kakb-station", pages / "kakb-station.1")
    check_host(Path(programs) / "kakb-host", pages / "kakb-host.1")
    for check in (check_simulator, check_report, check_control):
        check(Path(programs) / "kakb-sim", pages / "kakb-sim.1")
    for page in sorted(pages.glob("*.1")):
        check_roff(page)
    for problem in problems:
        print("FAILED:", problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
