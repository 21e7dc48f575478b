#!/usr/bin/env bash
# usage: lineFaults.sh PROGRAM_FOLDER
# What the faults of the simulated PLC look like on the line, to a client that knows no driver.
source "$(dirname "$0")/common.sh" "$1"

"$python" -B "$here/lineFaults.py" "$programs"
