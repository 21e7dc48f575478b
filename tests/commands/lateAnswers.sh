#!/usr/bin/env bash
# usage: lateAnswers.sh PROGRAM_FOLDER
# Nothing in an answer says which program asked: on a serial line, and behind a device server as well,
# one that came late for a run would be good for the next. So a run that was not answered stays until
# its answer has come, or cannot.
source "$(dirname "$0")/common.sh" "$1"

recipe() { printf 'name,station,area,address,type,value\nspeed,1,MW,100,uint32,%s\n' "$1"; }
recipe 7 >"$work/seven.csv"
recipe 8 >"$work/eight.csv"

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

# How many frames the run received, of a verb with --trace.
frames() { grep -c ' < ' "$work/err" || true; }

# The late answer is the first run's, though it gave up before.
startLatePlc 150
expect 4 host read MW100 --link "$link" --timeout-ms 100 --attempts 1 --trace
errorHas 'kakb-host: .*does not answer' ' < 01 03 02 12 67 ' # 4711
expect 0 host read MW200 --link "$link" --timeout-ms 100 --trace
outputIs 'MW200 = 99'
[ "$(frames)" = 1 ] || { show; fail "not one answer to one request"; }
stopPlc

# An attempt that is under way when another one's answer ends the run is one more to wait for.
startLatePlc 150
expect 0 host read MW100 --link "$link" --timeout-ms 100 --trace
outputIs 'MW100 = 4711'
[ "$(frames)" = 2 ] || { show; fail "not two answers to two attempts"; }
expect 0 host read MW200 --link "$link" --timeout-ms 100
outputIs 'MW200 = 99'
stopPlc

# The echo of function 16 holds no values: seven's would confirm eight.
startPlc pty --delay 1 --delay-ms 150 --fault-exchanges 1
expect 4 host recipe download "$work/seven.csv" --link "$link" --timeout-ms 100 --attempts 1 --trace
errorHas ' < 01 10 0B EA 00 02 '
expect 0 host recipe download "$work/eight.csv" --link "$link" --timeout-ms 100 --trace
[ "$(frames)" = 1 ] || { show; fail "not one echo of one request"; }
stopPlc
dumpIs '1 MW 3050 8'

# An answered run does not wait.
startPlc pty
expect 0 host read MW100 --link "$link" --timeout-ms 30000
tookLessThan 1000
stopPlc

# A device server passes on whatever its serial side brings, to whoever is connected.
startDeviceServer 450 0
expect 4 host read MW100 --link "$link" --timeout-ms 300 --attempts 1 --trace
errorHas 'kakb-host: .*does not answer' ' < 01 03 02 12 67 ' # 4711
expect 0 host read MW4000 --link "$link" --trace
outputIs 'MW4000 = 99'
[ "$(frames)" = 1 ] || { show; fail "not one answer to one request"; }

# What it kept while nobody was connected comes first, and is dropped.
stopDeviceServer
startDeviceServer 1000 0
expect 124 timeout -s INT 0.5 "$programs/kakb-host" read MW100 --link "$link" --timeout-ms 5000
eventually 20 isOver "$(date +%s%N)" 1000
expect 0 host read MW4000 --link "$link" --timeout-ms 5000 --trace
outputIs 'MW4000 = 99'
errorHas ' < 01 03 02 12 67 .*stray'

# An answered run does not wait, but for what may have been kept.
stopDeviceServer
startDeviceServer 0 0
expect 0 host read MW100 --link "$link" --timeout-ms 30000
tookLessThan 1000
stopDeviceServer

# A request that a lost connection cuts short is answered all the same, and so is the next attempt.
startDeviceServer 150 1
printf '%s\n' name,station,area,address,type a,1,MW,100,uint16 b,1,MW,4000,uint16 >"$work/tags.csv"
expect 0 host watch --tags "$work/tags.csv" --link "$link" --pause-ms 50 --seconds 3
outputHas 'link lost' 'link is back' 'a +MW100 = 4711$' 'b +MW4000 = 99$'
[ "$(grep -c ' = ' "$work/out")" = 2 ] || { show; fail "a value changed"; }
stopDeviceServer

# What failed is told before the wait, not behind it.
saysWhy() { grep -q 'kakb-host: .*does not answer' "$work/err"; }
startPlc pty --silent 1
seven=$work/seven.csv
for verb in "read MW100" "write MW100=7" "recipe download $seven" "recipe upload $seven"; do
    : >"$work/err" # what the run before said is not this one's
    # shellcheck disable=SC2086 # the verb's arguments
    "$programs/kakb-host" $verb --link "$link" --timeout-ms 2000 --attempts 1 \
        >"$work/out" 2>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host $verb"
    eventually 20 saysWhy || { show; fail "it does not say why it failed"; }
    isGone "$watcher" && { show; fail "it tells only when it ends"; }
    kill -INT "$watcher"
    status=0
    wait "$watcher" || status=$?
    watcher=
    [ "$status" = 4 ] || { show; fail "status $status, not 4"; }
    [ "$(grep -c 'kakb-host: ' "$work/err")" = 1 ] || { show; fail "it says so more than once"; }
done
stopPlc

# Whoever interrupts the wait itself, or the time-out before it, does not wait either.
startPlc pty --silent 1
hasRequest() { grep -q ' > ' "$work/err"; }
for timeout in 1000 60000; do
    : >"$work/err"
    "$programs/kakb-host" read MW100 --link "$link" --timeout-ms "$timeout" --attempts 1 --trace \
        >"$work/out" 2>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host read MW100, interrupted; time-out $timeout ms"
    eventually 20 hasRequest || { show; fail "it does not get that far"; }
    sent=$(date +%s%N)
    eventually 20 isOver "$sent" 1300
    isGone "$watcher" && { show; fail "it does not stay for a late answer"; }
    start=$(date +%s%N)
    kill -INT "$watcher"
    wait "$watcher" || true
    watcher=
    elapsed_ms=$((($(date +%s%N) - start) / 1000000))
    tookLessThan 500
done
stopPlc
