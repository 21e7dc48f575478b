#!/usr/bin/env bash
# usage: stoppedReader.sh PROGRAM_FOLDER
# A reader that takes nothing any more cannot hold a verb that is to end, by itself or because it was
# asked to. What could not be shown is a failure.
source "$(dirname "$0")/common.sh" "$1"

stopped() { "$python" "$here/stoppedReader.py" "$@"; }

# newPipe: $work/pipe, which nobody reads
newPipe() {
    exec 8>&-
    rm -f "$work/pipe"
    mkfifo "$work/pipe"
    exec 8<>"$work/pipe"
}

# endsUnshown STATUS: $watcher does, soon
endsUnshown() {
    eventually 10 isGone "$watcher" || { show; fail "it goes on"; }
    status=0
    wait "$watcher" || status=$?
    watcher=
    [ "$status" = "$1" ] || { show; fail "status $status, not $1"; }
}

# Their first values are more than there is room for.
{
    echo 'name,station,area,address,type,comment'
    for i in $(seq 0 3999); do echo "word number $i,1,MW,$((2 * i)),uint16,"; done
} >"$work/many.csv"
cannotWrite='kakb-host: cannot write the output'
: >"$work/out"
startPlc pty --stations 1-2

# By itself.
for more in "" --json; do
    # shellcheck disable=SC2086 # an option or nothing
    {
        newPipe
        stopped pipe "$work/pipe"
        "$programs/kakb-host" watch --tags "$work/many.csv" --link "$link" --seconds 1 $more \
            >&8 2>"$work/err" </dev/null &
    }
    watcher=$!
    command_line="kakb-host watch --seconds 1 $more, to a reader that takes nothing"
    endsUnshown 1
    errorIs "$cannotWrite"
done

run 20 "$python" "$here/stoppedReader.py" terminal "$programs/kakb-host" watch \
    --tags "$work/many.csv" --link "$link" --seconds 1
tookLessThan 10000
[ "$status" = 1 ] || { show; fail "status $status, not 1"; }
errorIs "$cannotWrite"

# The trace's reader is another one: all changes are shown.
"$programs/kakb-host" watch --tags "$demo_tags" --link "$link" --seconds 1 --trace \
    >"$work/out" 2>&8 </dev/null &
watcher=$!
command_line="kakb-host watch --seconds 1 --trace, to a reader that takes nothing"
: >"$work/err"
endsUnshown 0
outputHas ' exchanges/s '

# Because it is asked to.
hasAnswer() { grep -q ' < ' "$work/err"; }
for signal in INT TERM HUP; do
    : >"$work/err"
    "$programs/kakb-host" watch --tags "$work/many.csv" --link "$link" --trace \
        >&8 2>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host watch, to a reader that takes nothing, SIG$signal"
    eventually 20 hasAnswer || { show; fail "it does not get that far"; }
    kill "-$signal" "$watcher"
    endsUnshown 1
    errorHas "^$cannotWrite\$"
done

# A verb that prints all at once.
newPipe
printsAlready() { [ "$(stopped bytes "$work/pipe")" -gt 0 ]; }
"$programs/kakb-host" read --tags "$work/many.csv" --link "$link" >&8 2>"$work/err" </dev/null &
watcher=$!
command_line="kakb-host read, to a reader that takes nothing, SIGTERM"
eventually 20 printsAlready || { show; fail "it prints nothing"; }
isGone "$watcher" && { show; fail "it does not wait for its reader"; }
kill -TERM "$watcher"
endsUnshown 1
errorIs "$cannotWrite"
exec 8>&-
stopPlc
