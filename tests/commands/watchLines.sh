#!/usr/bin/env bash
# usage: watchLines.sh PROGRAM_FOLDER
# A watch without a terminal: one line a change, the link's figures at the end, and an end as soon
# as it is asked for, which takes the simulated PLC with it.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
count,1,IW,0,uint16,
still,1,MW,100,uint16,
lamp,1,QX,2.1,bool,
CSV
number='[0-9]+\.[0-9]{6}'
figures='^[0-9.]+ exchanges/s  retries 0  give-ups 0  refused 0  fences [0-9]+  reply p50 .* losses 0$'

for kind in pty tcp; do
    startPlc "$kind" --signal 1:IW:0:counter:50
    expect 0 host watch --tags "$work/tags.csv" --link "$link" --seconds 0.7
    outputHas "^$number  still  MW100 = 0$" "^$number  lamp  QX2\.1 = 0$" "$figures"
    errorIs ''
    # Each step of the counter is a line, one in 50 ms; what did not change is shown once.
    [ "$(grep -c 'still\|lamp' "$work/out")" = 2 ] || { show; fail "shown without a change"; }
    steps=$(sed -nE "s/^$number  count  IW0 = //p" "$work/out")
    [ "$(wc -l <<<"$steps")" -ge 7 ] || { show; fail "fewer than 7 steps of the counter"; }
    sort -nuc <<<"$steps" || { show; fail "the counter does not count"; }
    tookLessThan 4000

    expect 0 host watch --tags "$work/tags.csv" --link "$link" --seconds 0.5 --json
    jsonIs '{line["name"] for line in lines[:-1]} == {"count", "still", "lamp"}
        and all(line["good"] and type(line["value"]) in (int, float) for line in lines[:-1])
        and [line["time"] for line in lines[:-1]] == sorted(line["time"] for line in lines[:-1])
        and lines[-1]["exchanges"] > 0 and lines[-1]["retries"] == 0
        and lines[-1]["connected"] is True'

    # The first value of each tag is shown, however soon it comes.
    for _ in $(seq 4); do
        expect 0 host watch --tags "$work/tags.csv" --link "$link" --seconds 0.5
        outputHas "^$number  still  MW100 = 0$"
    done
    stopPlc

    # A station that is silent does not keep the others from being shown.
    startPlc "$kind" --stations 1-2 --silent 2
    { cat "$work/tags.csv"; echo 'gone,2,MW,0,uint16,'; } >"$work/two.csv"
    expect 0 host watch --tags "$work/two.csv" --link "$link" --seconds 0.5 --timeout-ms 50
    outputHas "^$number  still  MW100 = 0$" \
        "^$number  gone  2:MW0 bad: station 2 does not answer$" '  fences [2-9]'
    stopPlc

    startPlc "$kind" --exception 1 --exception-code 2
    expect 0 host watch --tags "$work/tags.csv" --link "$link" --seconds 0.3 --timeout-ms 5000
    outputHas "^$number  still  MW100 bad: refused by the PLC: illegal address \(exception 2\)$" '  refused [1-9]'
    stopPlc
done

# Without a tag file there is one for the simulated PLC, and each of its tags has a value.
expect 0 host watch --seconds 0.5
names=$(sed '/^#/d; /^name,/d; s/,.*//' "$demo_tags")
while read -r name; do
    outputHas "^$number  $name  [0-9:A-Z.]+ = -?[0-9.]+$"
done <<<"$names"
outputHas "$figures"
errorIs ''

# On the simulated PLC that the host starts for itself.
for signal in INT TERM; do
    startWatch --tags "$work/tags.csv"
    eventually 20 grep -q ' = ' "$work/out" || { show; fail "the watch shows nothing"; }
    simulator=$(pgrep -P "$watcher" -x kakb-sim) || fail "no kakb-sim beside the host"
    endWatch "$signal"
    isGone "$simulator" || fail "SIG$signal leaves kakb-sim behind"
    tail -n 1 "$work/out" | grep -qE "$figures" || { show; fail "the last line has no figures"; }
    [ ! -s "$work/err" ] || { show; fail "something on standard error"; }
done

# Even when it is killed.
startWatch --tags "$work/tags.csv"
eventually 20 grep -q ' = ' "$work/out" || { show; fail "the watch shows nothing"; }
simulator=$(pgrep -P "$watcher" -x kakb-sim) || fail "no kakb-sim beside the host"
killQuietly "$watcher"
watcher=
eventually 3 isGone "$simulator" || fail "a killed host leaves kakb-sim behind"

# A reader that has seen enough, also of a tag that stands still from then on.
grep -v '^count\|^lamp' "$work/tags.csv" >"$work/still.csv"
for tags in "$demo_tags" "$work/still.csv"; do
    status=0
    timeout 10 bash -o pipefail -c '"$1" watch --tags "$2" 2>"$3" | head -n 1' \
        bash "$programs/kakb-host" "$tags" "$work/err" >"$work/out" || status=$?
    command_line="kakb-host watch --tags $tags | head -n 1"
    [ "$status" = 0 ] && [ "$(wc -l <"$work/out")" = 1 ] || { show; fail "status $status, not 0"; }
    [ ! -s "$work/err" ] || { show; fail "something on standard error"; }
done
