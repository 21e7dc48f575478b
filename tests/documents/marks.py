"""What in the documents is not run as it stands, and what is checked instead.

A mark that no document uses any more is an error.
"""

# Commands that need long, packages or the whole build.
#   command: (why, what is checked)
# script: it is there and bash can read it; preset: cmake knows it; shortened: run with less to do;
# hook: the folder has the hook and nothing else that git would call.
MARKS = {
    "./demo.sh": ("installs packages and builds", "script"),
    "./demo.sh --page": ("installs packages and builds", "script"),
    "./demo.sh --plant": ("installs packages and builds", "script"),
    "./test.sh": ("installs packages and builds", "script"),
    "./test.sh --quick": ("builds", "script"),
    "./test.sh --static": ("takes minutes", "script"),
    "scripts/install-dependencies.sh packages": ("installs packages", "script"),
    "scripts/packages.sh": ("builds packages", "script"),
    "scripts/packages.sh --check": ("makes a Debian folder", "script"),
    "scripts/packages.sh --arch armhf": ("makes a Debian folder", "script"),
    "scripts/install-dependencies.sh portability": ("installs packages", "script"),
    "scripts/portability.sh all": ("takes half an hour", "script"),
    "scripts/portability.sh --station armhf": ("takes minutes", "script"),
    "scripts/mutate.sh": ("takes half an hour", "script"),
    "cmake --preset qt5": ("configures the whole tree", "preset"),
    "cmake --build --preset qt5": ("builds the whole tree", "preset"),
    "ctest --preset qt5": ("runs these tests", "preset"),
    "build/qt5/tests/soak/soak --exchanges 10000000": ("takes seconds", "shortened"),
    "git config core.hooksPath scripts": ("changes the user's own settings", "hook"),
}

# The same command, with less to do.
SHORTENED = {
    "build/qt5/tests/soak/soak --exchanges 10000000": "{build}/tests/soak/soak --exchanges 100000",
}

# Devices and addresses that are not on this machine, replaced by those of a simulated PLC.
#   text in a command: (why, link of kakb-sim that takes its place)
DEVICES = {
    "serial:/dev/ttyUSB0": ("a real serial port", "pty"),
    "tcp:192.168.1.100,8000": ("a real controller", "tcp"),
}

# Parts of what a command prints that differ from run to run.
VARYING = [
    r"\b1[7-9]\d{11}\b",  # milliseconds since 1970
    r"/dev/pts/\d+",
    r"\b\d+\.\d{6}\b",  # seconds since the start
    # A fence's length is drawn. Its checksum is looked at by frames.py.
    r"[0-9A-F]{2} [0-9A-F]{2} [0-9A-F]{2}(?=  station \d+: read \d+ holding registers? from 3000, a fence)",
    r"\d+ holding registers?(?= from 3000, a fence)",
    r"(?<=MW 3051 = )\d+",  # counts by itself
    r"(?<=IW0 = )\d+",
    r"(?<=bytes, )\d+(?= us)",
    r"[\d.]+(?= exchanges/s)",
    r"(?<=p50 )[\d.]+|(?<=p99 )[\d.]+",
]
