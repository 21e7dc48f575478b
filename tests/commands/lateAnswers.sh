#!/usr/bin/env bash
# usage: lateAnswers.sh PROGRAM_FOLDER
# Nothing in an answer says which program asked: on a serial line, and behind a device server as well,
# one that comes late for a run would be good for the next. Each run begins with a fence, so that it
# neither waits for late answers at its end nor takes those of the run before.
source "$(dirname "$0")/common.sh" "$1"

# startLatePlc MS: the first answer comes so late; MW100 is 4711 and MW200 99 by themselves
startLatePlc() {
    startPlc pty --delay 1 --delay-ms "$1" --fault-exchanges 1 \
        --signal 1:MW:3050:toggle:86400000:4711 --signal 1:MW:3100:toggle:86400000:99
}

# startDeviceServer DELAY_MS HANG_UPS
server=
startDeviceServer() {
    rm -f "$work/server"
    "$python" "$here/deviceServer.py" "$@" >"$work/server" </dev/null &
    server=$!
    eventually 20 hasLine "$work/server" || fail "deviceServer.py says no link"
    link=$(head -n 1 "$work/server")
}
stopDeviceServer() {
    killQuietly "$server"
    server=
}
alsoEnd() { stopDeviceServer; }

# isOver NANOSECONDS MS: so long after that time
isOver() { [ $(($(date +%s%N) - $1)) -gt $(($2 * 1000000)) ]; }

# Three runs, of which the first gives up before its answer comes. None waits.
startLatePlc 300
expect 4 host read MW100 --link "$link" --timeout-ms 100 --attempts 1
tookLessThan 1000
expect 0 host read MW200 --link "$link" --timeout-ms 500
outputIs 'MW200 = 99'
expect 0 host read MW100 --link "$link" --timeout-ms 500
outputIs 'MW100 = 4711'
stopPlc

# A run whose PLC is silent ends with its last attempt, and an answered one at once.
startPlc pty --silent 1
expect 4 host read MW100 --link "$link" --timeout-ms 300 --attempts 2
tookLessThan 1500
stopPlc
startPlc pty
expect 0 host read MW100 --link "$link" --timeout-ms 30000
tookLessThan 1000
stopPlc

# A device server passes on whatever its serial side brings, to whoever is connected.
startDeviceServer 450 0
expect 4 host read MW100 --link "$link" --timeout-ms 300 --attempts 1
expect 0 host read MW4000 --link "$link" --timeout-ms 1000
outputIs 'MW4000 = 99'

# What it kept while nobody was connected comes first.
stopDeviceServer
startDeviceServer 1000 0
expect 124 timeout -s INT 0.5 "$programs/kakb-host" read MW100 --link "$link" --timeout-ms 5000
eventually 20 isOver "$(date +%s%N)" 1000
expect 0 host read MW4000 --link "$link" --timeout-ms 5000 --trace
outputIs 'MW4000 = 99'
errorHas ' < 01 03 .*stray'
stopDeviceServer

# A request that a lost connection cuts short is answered all the same, on the next one.
startDeviceServer 150 1
printf '%s\n' name,station,area,address,type a,1,MW,100,uint16 b,1,MW,4000,uint16 >"$work/tags.csv"
expect 0 host watch --tags "$work/tags.csv" --link "$link" --pause-ms 50 --seconds 3
outputHas 'link lost' 'link is back' 'a +MW100 = 4711$' 'b +MW4000 = 99$'
[ "$(grep -c ' = ' "$work/out")" = 2 ] || { show; fail "a value changed"; }
stopDeviceServer

# Whoever interrupts the time-out does not wait.
startPlc pty --silent 1
hasRequest() { grep -q ' > ' "$work/err"; }
: >"$work/err"
"$programs/kakb-host" read MW100 --link "$link" --timeout-ms 60000 --attempts 1 --trace \
    >"$work/out" 2>"$work/err" </dev/null &
watcher=$!
command_line="kakb-host read MW100, interrupted"
eventually 20 hasRequest || { show; fail "it does not get that far"; }
start=$(date +%s%N)
kill -INT "$watcher"
wait "$watcher" || true
watcher=
elapsed_ms=$((($(date +%s%N) - start) / 1000000))
tookLessThan 500
stopPlc
