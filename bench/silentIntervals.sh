#!/usr/bin/env bash
# The silence that the host keeps before its requests, measured by the simulated PLC between its own
# last byte and the first byte of the next request.
# usage: bench/silentIntervals.sh [PROGRAM_FOLDER [FRAMES [BAUD...]]]
#   PROGRAM_FOLDER   default build/qt5/bin
#   FRAMES           at each speed, requests and replies, 100 or more (default 10000)
#   BAUD             default 9600 19200 38400 115200
# Exit status: 0 none was short and the median excess is under 1 ms, 1 otherwise.
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$(cd "${1:-build/qt5/bin}" && pwd)
frames=${2:-10000}
shift $(($# < 2 ? $# : 2))
[ $# -gt 0 ] || set -- 9600 19200 38400 115200
# shellcheck source=bench/line.sh
. bench/line.sh

bad=0
tags_of 1 >"$work/tags.csv"
printf '%-8s %8s %12s %12s %14s\n' baud frames required shortest 'median excess'
for baud in "$@"; do
    required=$(awk -v b="$baud" 'BEGIN { print (b > 19200 ? 1750 : 3.5 * 10 * 1e6 / b) }')
    # An exchange is 15 bytes and two silences.
    seconds=$(awk -v f="$frames" -v b="$baud" -v r="$required" \
        'BEGIN { print int(f / 2 * (150 / b + 2 * r / 1e6) * 1.4) + 1 }')
    start_plc --baud "$baud" --turnaround-us "${required%.*}"
    "$programs/kakb-host" watch --link "serial:$work/plc,$baud" --tags "$work/tags.csv" \
        --seconds "$seconds" >/dev/null
    stop_plc
    awk -v b="$baud" -v n="$(($(reported requests) + $(reported replies)))" -v want="$frames" \
        -v r="$required" -v s="$(reported silence_min_us)" -v m="$(reported silence_median_us)" \
        'BEGIN {
            printf "%-8d %8d %9.0f us %9.0f us %11.0f us\n", b, n, r, s, m - r
            exit !(n >= want && s >= r && m - r < 1000) }' || bad=1
done
exit $bad
