#!/usr/bin/env bash
# The demo itself: simulated PLCs, and the host's verbs on them, one after the other.
# usage: session.sh PROGRAM_FOLDER SECONDS
set -euo pipefail
programs=$(cd "$1" && pwd)
seconds=$2
cd "$(dirname "$0")"

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# start_plc NAME OPTION...: a PLC on the link $work/NAME. It ends when this script does, however that
# comes.
start_plc() {
    exec {plc_input}> >(exec "$programs/kakb-sim" --baud 38400 --until-stdin-ends \
        --link-path "$work/$1" "${@:2}" >"$work/$1.address")
    until [ -s "$work/$1.address" ]; do sleep 0.05; done
}

# host PLC VERB...
host() {
    echo "\$ kakb-host ${*:2}"
    "$programs/kakb-host" "${@:2}" --link "serial:$work/$1"
    echo
}

start_plc plc --stations 1-2 --demo signals
host plc watch --tags tags.csv --seconds "$seconds"
host plc write --tags tags.csv "setpoint=21.5" "pump=1" "MW200=7"
host plc read --tags tags.csv setpoint pump MW200
host plc recipe download recipe.csv --verify
host plc recipe upload recipe.csv --output "$work/uploaded.csv" --verify
cmp recipe.csv "$work/uploaded.csv"
echo "the recipe came back as it was sent"
echo

# The pump fills 6 % a second; in automatic mode the PLC switches it.
start_plc tank --demo tank
host tank read --tags tank.csv
host tank write --tags tank.csv setpoint=55 automatic=1 valve=1
host tank watch --tags tank.csv --seconds "$seconds"
