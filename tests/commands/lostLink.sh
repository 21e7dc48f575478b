#!/usr/bin/env bash
# usage: lostLink.sh PROGRAM_FOLDER
# A PLC that goes away in the middle of a watch is reported once, and so is its return; then there
# are values again. A single read or write fails at once.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
count,1,IW,0,uint16,
still,1,MW,100,uint16,
CSV

# What is killed leaves its link behind, and the number of its terminal may go to another program.
killPlc() {
    killQuietly "$plc"
    rm -f "$work/plc"
    plc=
}

# restartPlc KIND: where it was before
restartPlc() {
    local line=(--link-path "$work/plc")
    [ "$1" = pty ] || line=(--tcp "${link##*,}")
    "$programs/kakb-sim" "${line[@]}" --signal 1:IW:0:counter:50 >"$work/address" </dev/null &
    plc=$!
}

count() { grep -cE "$1" "$work/out" || true; }
# At full pace: the counter steps every 50 ms.
isBack() { [ "$(sed '1,/link is back/d' "$work/out" | grep -c 'IW0 = ')" -ge 20 ]; }
valuesCome() { [ "$(grep -c 'IW0 = ' "$work/out")" -ge 3 ]; }

for kind in pty tcp; do
    for stop in stopPlc killPlc; do
        startPlc "$kind" --signal 1:IW:0:counter:50
        startWatch --tags "$work/tags.csv" --link "$link" --pause-ms 50
        eventually 20 valuesCome || { show; fail "the watch shows nothing"; }

        $stop
        eventually 10 grep -q '  link lost: ' "$work/out" || { show; fail "the loss is not told"; }
        # Several attempts to open it fail meanwhile, which is not told again.
        sleep 0.4
        restartPlc "$kind"
        eventually 10 isBack || { show; fail "no values after the return"; }
        endWatch TERM

        for line in '^[0-9.]+  link lost: [^ ]' '^[0-9.]+  link is back$' \
            '  count  IW0 bad: link lost: ' '  still  MW100 bad: link lost: '; do
            [ "$(count "$line")" = 1 ] || { show; fail "$(count "$line") lines, not 1, with: $line"; }
        done
        # The value did not change but is good again.
        [ "$(count '  still  MW100 = 0$')" = 2 ] || { show; fail "no value after the return"; }
        outputHas '  losses 1$'
        [ ! -s "$work/err" ] || { show; fail "something on standard error"; }
        killPlc
    done

    # The PLC goes while a read waits for its answer.
    startPlc "$kind" --silent 1
    (
        sleep 0.5
        exec kill -TERM "$plc"
    ) &
    expect 3 host read MW100 --link "$link" --timeout-ms 10000
    stopPlc
    saysOneSentence
    tookLessThan 5000
done
