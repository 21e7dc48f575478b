#!/usr/bin/env bash
# usage: vanishedPeer.sh PROGRAM_FOLDER
# A network peer vanishes without a word, as when a cable is pulled: no packet comes or goes any
# more. That is a lost link within seconds, with a request on the way and while only waiting.
# Needs a network of its own; status 77 where the system grants none.
readonly SKIPPED=77
if [ -z "${own_network:-}" ]; then
    unshare -rn ip link set lo up 2>/dev/null || exit "$SKIPPED"
    own_network=1 exec unshare -rn "$0" "$@"
fi
source "$(dirname "$0")/common.sh" "$1"

ip link set lo up
startPlc tcp --signal 1:IW:0:counter:50
printf 'name,station,area,address,type,comment\ncount,1,IW,0,uint16,\n' >"$work/tags.csv"
lost='127\.0\.0\.1, port [0-9]+: Connection timed out$'

startWatch --tags "$work/tags.csv" --link "$link" --pause-ms 100
eventually 20 grep -q 'IW0 = ' "$work/out" || { show; fail "the watch shows nothing"; }
ip link set lo down
eventually 10 grep -qE "  link lost: $lost" "$work/out" || { show; fail "the loss is not told"; }
ip link set lo up
eventually 20 grep -q '  link is back$' "$work/out" || { show; fail "the return is not told"; }
endWatch TERM
outputHas '  losses 1$'
stopPlc

# The request has arrived, so nothing is on the way: only keep-alives can tell.
startPlc tcp --silent 1
"$programs/kakb-host" read MW100 --trace --link "$link" --timeout-ms 60000 \
    >"$work/out" 2>"$work/err" </dev/null &
watcher=$!
command_line="kakb-host read MW100"
eventually 20 grep -q ' > ' "$work/err" || { show; fail "it asks nothing"; }
acknowledged() { ss -tnH "dport = :${link##*,}" | awk '{ exit !($3 == 0) }'; }
eventually 20 acknowledged || fail "the request does not arrive"
ip link set lo down
eventually 12 isGone "$watcher" || { show; fail "the loss is not noticed"; }
status=0
wait "$watcher" || status=$?
watcher=
[ "$status" = 3 ] || { show; fail "status $status, not 3"; }
errorHas "^kakb-host: $lost"
