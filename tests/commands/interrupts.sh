#!/usr/bin/env bash
# usage: interrupts.sh PROGRAM_FOLDER
# Ctrl-C, SIGTERM and SIGHUP end a verb at once, whatever it waits for.
source "$(dirname "$0")/common.sh" "$1"

silent=
alsoEnd() { killQuietly "$silent"; }

# interrupted SIGNAL STATUS VERB...: signalled as soon as $isReady, it ends at once with the status
interrupted() {
    local signal=$1 expected=$2 start
    shift 2
    : >"$work/out"
    : >"$work/err"
    "$programs/kakb-host" "$@" --link "$link" --timeout-ms 60000 \
        >"$work/out" 2>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host $*, SIG$signal"
    eventually 20 "$isReady" || { show; fail "it does not get that far"; }
    start=$(date +%s%N)
    kill "-$signal" "$watcher"
    status=0
    wait "$watcher" || status=$?
    watcher=
    elapsed_ms=$((($(date +%s%N) - start) / 1000000))
    [ "$status" = "$expected" ] || { show; fail "status $status, not $expected"; }
    tookLessThan 500
}

printf 'name,station,area,address,type,comment\nstill,1,MW,100,uint16,\n' >"$work/tags.csv"
cp "$demo/recipe.csv" "$work/recipe.csv"
figures='[0-9.]+ exchanges/s  retries [0-9]+ .* losses 0$'

# While it connects; the system's list has one more connection that is not answered.
rm -f "$work/silent"
mkfifo "$work/hold"
"$python" "$here/silentPort.py" >"$work/silent" <"$work/hold" &
silent=$!
exec 9>"$work/hold"
eventually 20 hasLine "$work/silent" || fail "silentPort.py says no link"
link=$(cat "$work/silent")
unanswered() { grep -c "0100007F:$(printf %04X "${link##*,}") 02 " /proc/net/tcp || true; }
connecting() { [ "$(unanswered)" -gt "$others" ]; }
others=$(unanswered)
isReady=connecting
for signal in INT TERM HUP; do
    interrupted "$signal" 8 read MW100
    saysOneSentence
    errorHas 'interrupted'
    interrupted "$signal" 8 write MW100=1
    errorHas '^kakb-host: MW100 is not confirmed: interrupted'
    interrupted "$signal" 0 watch --tags "$work/tags.csv"
    outputHas "^link lost  $figures"
done

# Nobody interrupts.
expect 3 host read MW100 --link "$link"
saysOneSentence
errorHas '127\.0\.0\.1, port [0-9]+: Connection timed out$'
tookLessThan 8000
exec 9>&-

# While it waits for an answer, and between the exchanges of a watch.
hasRequest() { grep -q ' > ' "$work/err"; }
hasValue() { grep -q 'MW100 = 0' "$work/out"; }
for kind in pty tcp; do
    for signal in INT TERM HUP; do
        startPlc "$kind" --silent 1
        isReady=hasRequest
        interrupted "$signal" 8 read MW100 --trace
        errorHas '^kakb-host: interrupted; what became of it is not known$'
        interrupted "$signal" 8 write MW100=1 QX0.5=1 --trace
        errorHas '^kakb-host: MW100 is not confirmed: interrupted' \
            '^kakb-host: QX0\.5 is not confirmed: interrupted'
        for verb in download upload; do
            interrupted "$signal" 8 recipe "$verb" "$work/recipe.csv" --trace
            errorHas '^kakb-host: interrupted; what became of it is not known$'
        done
        stopPlc
        startPlc "$kind"
        isReady=hasValue
        interrupted "$signal" 0 watch --tags "$work/tags.csv"
        [ ! -s "$work/err" ] || { show; fail "something on standard error"; }
        tail -n 1 "$work/out" | grep -qE "^$figures" || { show; fail "the last line has no figures"; }
        stopPlc
    done
done
