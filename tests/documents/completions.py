#!/usr/bin/env python3
"""Compares what bash completes with what the programs print with --help, both ways.

usage: completions.py SOURCE PROGRAM_FOLDER
"""

import os
import pty
import select
import subprocess
import sys
import time
from pathlib import Path

from helpTexts import help_of, options_in, verbs_in, verbs_of

# What `complete` registered for the command is called as bash calls it.
OFFER = r"""
source "$1"; shift
registered=$(complete -p "$1") || exit 9
function=${registered#*-F }; function=${function%% *}
COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}
"$function" "$1" "${@: -1}" "${@: -2:1}" 2>/dev/null
printf '%s\n' "${COMPREPLY[@]}"
"""
SECONDS_TO_ANSWER = 20
problems = []


def expect(same, sentence):
    """Notes what is wrong, and goes on."""
    if not same:
        problems.append(sentence)


def offered(script, *words):
    """What bash offers at the end of these words."""
    done = subprocess.run(["bash", "--norc", "-c", OFFER, "bash", script, *words], check=True,
                          text=True, stdout=subprocess.PIPE)
    return set(done.stdout.split())


def check_host(script, program):
    """Every verb, and behind it every option, and nothing else."""
    verbs = set(verbs_in(help_of(program)))
    options = options_in(help_of(program))
    expect(offered(script, "kakb-host", "") == verbs | options, "kakb-host: verbs")
    expect(offered(script, "kakb-host", "--driver", "x.so", "wa") == {"watch"},
           "kakb-host: a verb behind --driver")
    inner = set(verbs_in(help_of(program, "recipe")))
    expect(offered(script, "kakb-host", "recipe", "") - {"-h", "--help"} == inner,
           "kakb-host: recipe")
    for verb in verbs_of(program):
        shown = options_in(help_of(program, *verb))
        found = offered(script, "kakb-host", *verb, "-")
        expect(found == shown, f"kakb-host {' '.join(verb)}: {sorted(found ^ shown)}")
    areas = offered(script, "kakb-host", "check", "")
    expect({"MW", "IW", "QW", "MX", "IX", "QX"} <= areas, "kakb-host check: areas")
    expect("MW" not in offered(script, "kakb-host", "check", "MW", ""), "areas come once")
    expect(offered(script, "kakb-host", "watch", "--timeout-ms", "") == set(),
           "kakb-host: a number is nothing to complete")


def check_options(script, program):
    """Every option of a program without verbs, and nothing else."""
    shown = options_in(help_of(program))
    found = offered(script, program.name, "-")
    expect(found == shown, f"{program.name}: {sorted(found ^ shown)}")


def typed(script, keys, awaited):
    """Whether an interactive bash shows the text after these keys."""
    child, terminal = pty.fork()
    if child == 0:
        os.environ.update(PS1="ready> ", TERM="dumb")
        os.execvp("bash", ["bash", "--norc", "--noprofile", "-i"])
    os.write(terminal, f"source {script}\n{keys}".encode())
    screen = b""
    deadline = time.monotonic() + SECONDS_TO_ANSWER
    while awaited not in screen and time.monotonic() < deadline:
        if select.select([terminal], [], [], 0.1)[0]:
            screen += os.read(terminal, 4096)
    os.close(terminal)
    os.waitpid(child, 0)
    return awaited in screen


def main(source, programs):
    """All programs."""
    scripts = Path(source).resolve() / "completions"
    check_host(scripts / "kakb-host", Path(programs) / "kakb-host")
    for name in ("kakb-sim", "kakb-station"):
        check_options(scripts / name, Path(programs) / name)
    expect(typed(scripts / "kakb-host", "kakb-host recipe upl\t", b"recipe upload "),
           "an interactive bash does not complete kakb-host recipe upl")
    expect(typed(scripts / "kakb-sim", "kakb-sim --fault-e\t", b"--fault-exchanges "),
           "an interactive bash does not complete kakb-sim --fault-e")
    expect(typed(scripts / "kakb-station", "kakb-station --host-\t", b"--host-name "),
           "an interactive bash does not complete kakb-station --host-")
    for problem in problems:
        print("FAILED:", problem, file=sys.stderr)
    return 1 if problems else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
