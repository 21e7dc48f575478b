#!/usr/bin/env bash
# usage: closedTerminal.sh PROGRAM_FOLDER
# A terminal that is closed ends both programs in order, unless they were started with nohup; and
# whatever ends a host, the next one gets the line.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
count,1,IW,0,uint16,
still,1,MW,100,uint16,
CSV
# Root is let past another program's lock on a terminal. Without this power it is not.
powerless=()
[ "$(id -u)" -ne 0 ] || powerless=(setpriv --bounding-set "-sys_admin")

isShown() { grep -q ' = ' "$work/out"; }
hasFigures() { tail -n 1 "$work/out" | grep -qE '^[0-9.]+ exchanges/s .* losses 0$'; }

# startPowerless: a watch of $link that shows something
startPowerless() {
    : >"$work/out"
    "${powerless[@]}" "$programs/kakb-host" watch --tags "$work/tags.csv" --link "$link" \
        >"$work/out" 2>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host watch"
    eventually 20 isShown || { show; fail "the watch shows nothing"; }
}

readsPowerless() {
    run 20 "${powerless[@]}" "$programs/kakb-host" read MW100 --link "$link"
    [ "$status" = 0 ]
}

# One host at a time; one that is killed cannot give the line back by itself.
startPlc pty --signal 1:IW:0:counter:20
for signal in KILL HUP TERM; do
    startPowerless
    ! readsPowerless || fail "two hosts on one line"
    errorHas 'in use by another program'
    kill "-$signal" "$watcher"
    wait "$watcher" 2>/dev/null || true
    watcher=
    eventually 2 readsPowerless || { show; fail "the line of a host with SIG$signal is not free"; }
done

startWatch --tags "$work/tags.csv" --link "$link"
eventually 20 isShown || { show; fail "the watch shows nothing"; }
endWatch HUP
hasFigures || { show; fail "the last line has no figures"; }

# Under nohup it goes on: the counter's values are shown behind the signal as well.
: >"$work/out"
(trap '' HUP; exec "$programs/kakb-host" watch --tags "$work/tags.csv" --link "$link") \
    >"$work/out" 2>"$work/err" </dev/null &
watcher=$!
eventually 20 isShown || { show; fail "the watch shows nothing"; }
kill -HUP "$watcher"
goesOn() { [ "$(wc -l <"$work/out")" -gt $((shown + 5)) ]; }
shown=$(wc -l <"$work/out")
eventually 20 goesOn || { show; fail "SIGHUP ends a watch under nohup"; }
endWatch INT
stopPlc

# The signal reaches the simulated PLC that the host has started as well, which must not look lost.
startWatch --tags "$work/tags.csv"
eventually 20 isShown || { show; fail "the watch shows nothing"; }
simulator=$(pgrep -P "$watcher" -x kakb-sim) || fail "no kakb-sim beside the host"
kill -HUP "$simulator"
shown=$(wc -l <"$work/out")
eventually 20 goesOn || { show; fail "SIGHUP ends a simulated PLC that its host is to end"; }
endWatch HUP
hasFigures || { show; fail "the end looks like a lost link"; }
isGone "$simulator" || fail "SIGHUP leaves kakb-sim behind"

startPlc pty
expect 0 host write MW100=7 --link "$link"
kill -HUP "$plc"
process=$plc
plc=
wait "$process" || fail "kakb-sim ends with status $? after SIGHUP"
dumpIs '1 MW 3050 7'
[ ! -e "$work/plc" ] && [ ! -L "$work/plc" ] || fail "kakb-sim leaves its link behind"

trap '' HUP
startPlc pty
trap - HUP
kill -HUP "$plc"
expect 0 host read MW100 --link "$link"
stopPlc
