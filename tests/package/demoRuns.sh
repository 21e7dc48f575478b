#!/usr/bin/env bash
# usage: demoRuns.sh DEMO_SESSION PROGRAM_FOLDER
# The demo must end by itself with status 0 and show each of its steps, and leave no PLC behind.
set -euo pipefail

output=$(timeout 120 "$1" "$2" 2 2>&1 </dev/null) || { status=$?; echo "$output"; echo "status $status"; exit 1; }
echo "$output"
for line in 'fill level  IW0 = [0-9]+' 'temperature  IW2 = -?[0-9]+' 'door open  IX8.0 = [01]' \
    'marker lamp  MX20.0 = [01]' 'speed of line 2  2:QW40 = 0' 'batch number  MW104 = 0' \
    '^[0-9.]+ exchanges/s  retries 0  give-ups 0 ' \
    '^setpoint \(MW100\) = 21.5 confirmed$' '^setpoint \(MW100\) = 21.5$' \
    '^downloaded 9 values, verified$' '^uploaded 9 values, verified$' \
    '^the recipe came back as it was sent$' \
    '^valve \(QX0.1\) = 1 confirmed$' 'level  MW104 = 4[0-9.]*$'; do
    grep -qE "$line" <<<"$output" || { echo "missing: $line"; exit 1; }
done
