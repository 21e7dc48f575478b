#!/usr/bin/env bash
# usage: endedSimulator.sh PROGRAM_FOLDER
# The simulated PLC that the host has started dies: that is final and said in one sentence. The
# number of its terminal may be any program's by then, so nothing is opened again.
source "$(dirname "$0")/common.sh" "$1"

printf 'name,station,area,address,type,comment\ncount,1,IW,0,uint16,\n' >"$work/tags.csv"
ended='^kakb-host: the simulated PLC has ended$'

# bereft VERB...: started, and its simulated PLC killed as soon as $isReady
bereft() {
    : >"$work/out"
    : >"$work/err"
    "$programs/kakb-host" "$@" --pause-ms 50 >"$work/out" 2>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host $*"
    eventually 20 "$isReady" || { show; fail "it does not get that far"; }
    kill -KILL "$(pgrep -P "$watcher" -x kakb-sim)"
    # The next terminal gets the number that has become free.
    startPlc pty --report "$work/report"
    eventually 3 isGone "$watcher" || { show; fail "it goes on"; }
    status=0
    wait "$watcher" || status=$?
    watcher=
    stopPlc
    [ "$status" = 3 ] || { show; fail "status $status, not 3"; }
    grep -qx 'requests 0' "$work/report" || { show; fail "it has talked to another terminal"; }
}

hasValue() { grep -qE 'IW0 = |"value"' "$work/out"; }
hasRequest() { grep -q ' > ' "$work/err"; }

isReady=hasValue
bereft watch --tags "$work/tags.csv"
errorIs 'kakb-host: the simulated PLC has ended'
outputHas '  link lost: the simulated PLC has ended$' ' exchanges/s .* losses 1$'
bereft watch --tags "$work/tags.csv" --json
errorIs 'kakb-host: the simulated PLC has ended'

isReady=hasRequest
silent=(--trace --timeout-ms 60000 --simulator-arguments "--silent 1")
bereft read MW100 "${silent[@]}"
errorHas "$ended"
bereft write MW100=1 QX0.5=1 "${silent[@]}"
errorHas '^kakb-host: MW100 is not confirmed: the simulated PLC has ended$' \
    '^kakb-host: QX0\.5 is not confirmed: the simulated PLC has ended$'
printf 'name,station,area,address,type,value\nspeed,1,MW,100,uint16,7\n' >"$work/recipe.csv"
bereft recipe download "$work/recipe.csv" "${silent[@]}"
errorHas "$ended"
bereft recipe upload "$work/recipe.csv" "${silent[@]}"
errorHas "$ended"
