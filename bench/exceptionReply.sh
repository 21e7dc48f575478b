#!/usr/bin/env bash
# How soon an exception reply ends an exchange: every request is refused, on a serial line and over
# TCP. The serial one takes as long as a 38400 baud wire would; the TCP one takes no time.
# usage: bench/exceptionReply.sh [PROGRAM_FOLDER [SECONDS]]
#   PROGRAM_FOLDER   default build/qt5/bin
#   SECONDS          for each link, 1 or more (default 5)
# Exit status: 0 each was final at its first attempt, and 99 % within the exception's frame time and a
#              silent interval, 1 not.
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$(cd "${1:-build/qt5/bin}" && pwd)
seconds=${2:-5}
# shellcheck source=bench/line.sh
. bench/line.sh

tags_of 1 >"$work/tags.csv"
allowed=$(awk 'BEGIN { print 5 * 10 * 1e6 / 38400 + 1750 }')
bad=0

# refused LINK NAME
refused() {
    "$programs/kakb-host" watch --link "$1" --tags "$work/tags.csv" --seconds "$seconds" --json \
        --timeout-ms 5000 | tail -1 >"$work/figures"
    local refusals retries reply
    refusals=$(figure refusals <"$work/figures")
    retries=$(figure retries <"$work/figures")
    reply=$(figure reply99Us <"$work/figures")
    # The time is that of the last attempt alone.
    awk -v n="$2" -v c="$refusals" -v t="$retries" -v r="$reply" -v a="$allowed" 'BEGIN {
        printf "%-7s %6d refusals, %d retries, 99 %% final within %5.0f us, allowed %5.0f us\n", \
            n, c, t, r, a
        exit !(c > 0 && t == 0 && r <= a) }' || bad=1
}

start_plc --baud 38400 --exception 1 --exception-code 2
refused "serial:$work/plc" serial
stop_plc

coproc plc { exec "$programs/kakb-sim" --tcp 0 --until-stdin-ends --exception 1 --exception-code 2; }
plc_input=${plc[1]}
read -r address <&"${plc[0]}"
refused "$address" tcp
stop_plc
exit $bad
