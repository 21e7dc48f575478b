#!/usr/bin/env bash
# The demo itself: one simulated PLC, and the host's verbs on it, one after the other.
# usage: session.sh PROGRAM_FOLDER SECONDS
set -euo pipefail
programs=$(cd "$1" && pwd)
seconds=$2
cd "$(dirname "$0")"

work=$(mktemp -d)
# The PLC ends when this script does, however that comes.
coproc plc { exec "$programs/kakb-sim" --stations 1-2 --demo-signals --baud 38400 \
    --link-path "$work/plc" --until-stdin-ends; }
trap 'rm -rf "$work"' EXIT
read -r _ <&"${plc[0]}"

host() {
    echo "\$ kakb-host $*"
    "$programs/kakb-host" "$@" --link "serial:$work/plc"
    echo
}

host watch --tags tags.csv --seconds "$seconds"
host write --tags tags.csv "setpoint=21.5" "pump=1" "MW200=7"
host read --tags tags.csv setpoint pump MW200
host recipe download recipe.csv --verify
host recipe upload recipe.csv --output "$work/uploaded.csv" --verify
cmp recipe.csv "$work/uploaded.csv"
echo "the recipe came back as it was sent"
