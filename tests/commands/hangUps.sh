#!/usr/bin/env bash
# usage: hangUps.sh PROGRAM_FOLDER
# A peer that hangs up: every verb says so in a sentence and ends with the status of a lost link, and
# each write that was not confirmed is named.
source "$(dirname "$0")/common.sh" "$1"

peer=
alsoEnd() { killQuietly "$peer"; }

# startPeer REPLIES: in front of the PLC; sets $link. -1: hangs up at once
startPeer() {
    alsoEnd
    rm -f "$work/peer"
    "$python" "$here/hangingUp.py" "$port" "$1" >"$work/peer" </dev/null &
    peer=$!
    eventually 20 hasLine "$work/peer" || fail "hangingUp.py says no link"
    link=$(cat "$work/peer")
}

# What a host sees depends on whether its request was on the way already.
gone='127\.0\.0\.1, port [0-9]+: (the peer closed the connection|Connection reset by peer|Broken pipe)'

# loses REGEX VERB...: with the link lost, soon, whatever the time-out
loses() {
    local regex=$1
    shift
    expect 3 host "$@" --link "$link" --timeout-ms 30000
    saysOneSentence
    errorHas "^kakb-host: $regex$gone$"
    tookLessThan 5000
}

startPlc tcp
port=${link##*,}
printf 'name,station,area,address,type,value\nspeed,1,MW,100,uint16,7\nmode,1,MW,300,uint16,3\n' \
    >"$work/recipe.csv"
cp "$work/recipe.csv" "$work/before.csv"

for replies in -1 0; do
    startPeer "$replies"
    loses '' read MW100
    loses 'MW100 is not confirmed: ' write MW100=1
    loses '' recipe download "$work/recipe.csv"
    loses '' recipe upload "$work/recipe.csv"
done
startPeer 1
loses '' read MW100 QX0.0
loses '' recipe download "$work/recipe.csv"
loses '' recipe upload "$work/recipe.csv"
cmp "$work/before.csv" "$work/recipe.csv" || fail "an upload that failed changed the file"

# Two outstanding writes: both are named, in their order.
startPeer 0
expect 3 host write MW100=1 QX0.5=1 --link "$link" --timeout-ms 30000
[ "$(wc -l <"$work/err")" = 2 ] || { show; fail "not two complaints"; }
outputIs ''
errorHas "^kakb-host: MW100 is not confirmed: $gone$" "^kakb-host: QX0\.5 is not confirmed: $gone$"

# One of three is confirmed and stands; the others are not. The first reply is to the fence.
startPeer 2
expect 3 host write MW100=1 MW300=2 QX0.5=1 --link "$link" --timeout-ms 30000
[ "$(wc -l <"$work/out")" = 1 ] || { show; fail "not one confirmation"; }
outputHas ' = [12] confirmed$'
[ "$(wc -l <"$work/err")" = 2 ] || { show; fail "not two complaints"; }
[ "$(grep -cE "^kakb-host: (MW[13]00|QX0\.5) is not confirmed: $gone$" "$work/err")" = 2 ] ||
    { show; fail "not the two that were not confirmed"; }

# A watch goes on: it tells the loss and connects again, each time.
cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
near,1,MW,100,uint16,
far,1,MW,1000,uint16,
CSV
startPeer 1
expect 0 host watch --tags "$work/tags.csv" --link "$link" --seconds 2 --pause-ms 50 \
    --timeout-ms 50
outputHas "  link lost: $gone$" '  link is back$' '  losses [2-9][0-9]*$|  losses 1[0-9]+$'
[ ! -s "$work/err" ] || { show; fail "something on standard error"; }
stopPlc
