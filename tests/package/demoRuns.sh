#!/usr/bin/env bash
# usage: demoRuns.sh HOST_PROGRAM
# The demo must end by itself with status 0 and show each of its steps, and leave no PLC behind.
set -euo pipefail

output=$(timeout 120 "$1" demo 2>&1) || { echo "$output"; echo "status $?"; exit 1; }
echo "$output"
for line in 'IW 0 = [0-9]+' 'MW 3001 = 1234' 'confirmed, MW 3001 = 1234' 'confirmed, QX 5 = 1' \
    'recipe word 6 filled' 'recipe came back as it was sent' \
    '^exchanges [1-9][0-9]*, retries 0, given up 0, changes [1-9][0-9]*$'; do
    grep -qE "$line" <<<"$output" || { echo "missing: $line"; exit 1; }
done
