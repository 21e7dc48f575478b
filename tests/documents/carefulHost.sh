#!/usr/bin/env bash
# usage: carefulHost.sh PROGRAM_FOLDER EXAMPLE_FOLDER
# The example of a careful host against a simulated PLC with every fault: it must confirm all of its
# writes and verify its recipe, and what it shows at the end must be the PLC's memory.
source "$(dirname "$0")/../commands/common.sh" "$1"
example=$2/carefulHost

# survives FAULT...: on a pseudo-terminal; MW400 is 99 by itself
survives() {
    startPlc pty --signal 1:MW:3200:toggle:86400000:99 "$@"
    timeout 100 "$example" "$work/plc" >"$work/out" ||
        { cat "$work/out"; fail "not all was confirmed, with $*"; }
    stopPlc
    grep -qx 'recipe verified' "$work/out" || fail "no verified recipe, with $*"
    [ "$(grep -c '^MW ' "$work/out")" = 9 ] || fail "not nine values"
    while read -r _ number _ value; do
        # What is 0 is not in the dump.
        grep -qx "1 MW $number $value" "$work/dump" ||
            { cat "$work/dump"; fail "MW $number is not $value, with $*"; }
    done < <(grep '^MW ' "$work/out")
}

survives
survives --drop 0.1 --drop-request 0.1 --corrupt 0.1 --truncate 0.1 --duplicate 0.1 --delay 0.1 \
    --delay-ms 40 --stray-before 0.1 --stray-after 0.1 --wrong-station 0.1 --exception 0.1
survives --stall 0.3:1 --service-ms 1 --late 0.1:100 --duplicate 0.1:5 --drop 0.1
survives --echo --drop 0.1 --corrupt 0.1 --late 0.1:60
