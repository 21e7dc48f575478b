"""What kakb-host, kakb-sim and kakb-station say of themselves."""

import re
import subprocess

OPTION = re.compile(r"^ +((?:-\w,)?--?[\w-]+)")
VERB = re.compile(r"^  (\w+)  ")
STATUS = re.compile(r"^  (\d)  (.+)$")


def help_of(program, *verb):
    """The lines that --help prints."""
    return subprocess.run([program, *verb, "--help"], check=True, text=True,
                          stdout=subprocess.PIPE).stdout.splitlines()


def options_in(lines):
    """All options of a help text, short ones too."""
    found = set()
    for line in lines:
        match = OPTION.match(line)
        if match and line.lstrip().startswith("-"):
            found.update(match.group(1).split(","))
    return found


def verbs_in(lines):
    """The verbs that a help text lists."""
    if "Subcommands:" not in lines:
        return []
    found = []
    for line in lines[lines.index("Subcommands:") + 1:]:
        match = VERB.match(line)
        if not match:
            break
        found.append(match.group(1))
    return found


def verbs_of(program):
    """All verbs, those of two words too: ("recipe", "upload")."""
    verbs = []
    for verb in verbs_in(help_of(program)):
        inner = verbs_in(help_of(program, verb))
        verbs += [(verb, word) for word in inner] if inner else [(verb,)]
    return verbs


def statuses_in(lines):
    """Exit status and meaning."""
    return {int(m.group(1)): m.group(2) for m in map(STATUS.match, lines) if m}
