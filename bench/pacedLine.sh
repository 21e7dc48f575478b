#!/usr/bin/env bash
# How much of a 38400 baud line the host uses, and how much libmodbus' own client does: both read the
# same words from the same simulated PLC, one after the other, on a pseudo-terminal that takes as long
# as the wire would.
# usage: bench/pacedLine.sh [PROGRAM_FOLDER [SECONDS]]
#   PROGRAM_FOLDER   default build/qt5/bin
#   SECONDS          for each measurement, 1 or more (default 10)
# Exit status: 0 the host reached 97 % of what the wire allows, not more than that, and 99 % of what
#              libmodbus reaches with the silent intervals, 1 it did not. The rest is what tells one
#              answer from the next, which libmodbus does not do.
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$(cd "${1:-build/qt5/bin}" && pwd)
seconds=${2:-10}
# shellcheck source=bench/line.sh
. bench/line.sh

# The PLC begins its answer after a silent interval of its own.
silence=1750
bad=0
printf '%-6s %10s %10s %8s %10s %10s\n' words allowed host share libmodbus 'naked'
for words in 1 16 125; do
    start_plc --baud 38400 --turnaround-us $silence
    tags_of $words >"$work/tags.csv"
    host=$("$programs/kakb-host" watch --link "serial:$work/plc" --tags "$work/tags.csv" \
        --seconds "$seconds" --json | figure exchangesPerSecond)
    client=$("$programs/libmodbusClient" "$work/plc" 38400 "$seconds" 3000 $words --silent-intervals)
    naked=$("$programs/libmodbusClient" "$work/plc" 38400 "$seconds" 3000 $words)
    stop_plc
    allowed=$(awk -v w=$words -v s=$silence \
        'BEGIN { print 1e6 / ((8 + 5 + 2 * w) * 10 * 1e6 / 38400 + 2 * s) }')
    # The host counts whole exchanges, and one is under way at the end.
    awk -v w=$words -v a="$allowed" -v h="$host" -v c="$client" -v n="$naked" -v t="$seconds" 'BEGIN {
        printf "%-6d %8.2f/s %8.2f/s %6.1f %% %8.2f/s %8.2f/s\n", w, a, h, 100 * h / a, c, n
        exit !(h >= 0.97 * a && h <= a && h + 1 / t >= 0.99 * c) }' || bad=1
done
echo "naked: libmodbus as it is, which breaks the silent intervals"
exit $bad
