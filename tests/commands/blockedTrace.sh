#!/usr/bin/env bash
# usage: blockedTrace.sh PROGRAM_FOLDER
# A reader of the trace that stops does not delay the exchange: frames are missed instead, and both
# the trace and the capture say how many.
source "$(dirname "$0")/common.sh" "$1"

server=
alsoEnd() { killQuietly "$server"; }

# More frames than the host keeps, and those that a pipe takes besides.
exchanges=25000
"$python" "$here/countingPort.py" $exchanges "$work/enough" >"$work/port" &
server=$!
eventually 20 hasLine "$work/port" || fail "countingPort.py says no link"
link=$(head -n 1 "$work/port")

printf 'name,station,area,address,type\nword,1,MW,100,uint16\n' >"$work/tags.csv"
mkfifo "$work/trace"
"$programs/kakb-host" watch --tags "$work/tags.csv" --link "$link" --trace \
    --pcap "$work/watch.pcap" >"$work/out" 2>"$work/trace" </dev/null &
watcher=$!
command_line="kakb-host watch --trace, whose reader stops"
exec 8<"$work/trace"
: >"$work/err"
eventually 60 test -e "$work/enough" || fail "the exchange was delayed"
# The kept frames ahead of the hole, and others behind it.
cat <&8 >"$work/err" &
reader=$!
hasHole() { grep -q ' frames missed: ' "$work/err"; }
goesOn() { [ "$(sed '1,/ frames missed: /d' "$work/err" | grep -c ' > ')" -gt 100 ]; }
eventually 60 hasHole || { command_line+=", no hole"; fail "the trace says nothing of a hole"; }
eventually 20 goesOn || fail "the trace does not go on behind the hole"
kill -INT "$watcher"
wait "$watcher" || fail "the watch ends with status $?"
watcher=
exec 8<&-
wait "$reader"

# Each request and each answer was traced, or counted as missed.
wait "$server" || fail "countingPort.py ends with status $?"
server=
answered=$(tail -n 1 "$work/port")
missed=$(sed -nE 's/^([0-9]+) frames missed: the output was blocked$/\1/p' "$work/err" |
    awk '{ sum += $1 } END { print sum }')
traced=$(grep -cE '^ *[0-9]+\.[0-9]{6} [<>] ' "$work/err")
difference=$((traced + missed - 2 * answered))
[ "${difference#-}" -le 2 ] ||
    fail "$traced frames in the trace, $missed missed, but $answered exchanges"
errors=$(grep '^kakb-host: ' "$work/err" || true)
[ "$errors" = "kakb-host: the capture lacks $missed frames: the output was blocked" ] ||
    fail "said of the capture: $errors"
