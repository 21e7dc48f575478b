# shellcheck shell=bash disable=SC2034
# To be sourced by the scripts of this folder: source common.sh PROGRAM_FOLDER
# Runs the host and simulated PLCs in a folder of their own, and says what differed when something
# did. What a command printed is in $work/out and $work/err.
set -euo pipefail
programs=$(cd "$1" && pwd)
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
work=$(mktemp -d)
demo=$(cd "$here/../../demo" && pwd)
demo_tags=$demo/tags.csv
python=/usr/bin/python3 # the one that Debian's packages are for
plc=
link=
watcher=

# For a script that has more to end; it replaces this one.
alsoEnd() { :; }

end() {
    local status=$?
    alsoEnd
    killQuietly "$watcher"
    endPlc || true
    rm -rf "$work"
    exit "$status"
}
trap end EXIT

host() { "$programs/kakb-host" "$@"; }

fail() {
    echo "FAILED: $*" >&2
    exit 1
}

# eventually SECONDS COMMAND...: until the command succeeds
eventually() {
    local deadline=$((SECONDS + $1))
    shift
    until "$@"; do
        [ "$SECONDS" -lt "$deadline" ] || return 1
        sleep 0.02
    done
}

hasLine() { [ -n "$(head -n 1 "$1" 2>/dev/null)" ]; }
isGone() { ! kill -0 "$1" 2>/dev/null; }

# startPlc pty|tcp ARGUMENT...: sets $plc to its process and $link to what --link takes
startPlc() {
    local kind=$1
    shift
    local line=(--link-path "$work/plc")
    [ "$kind" = pty ] || line=(--tcp 0)
    rm -f "$work/address"
    "$programs/kakb-sim" "${line[@]}" --dump "$work/dump" "$@" >"$work/address" </dev/null &
    plc=$!
    eventually 20 hasLine "$work/address" || fail "kakb-sim $* says no address on $kind"
    link=serial:$work/plc
    [ "$kind" = pty ] || link=$(head -n 1 "$work/address")
}

# Afterwards the memory is in $work/dump.
stopPlc() {
    endPlc || fail "kakb-sim ended with status $?"
}

endPlc() {
    local process=$plc
    plc=
    [ -n "$process" ] || return 0
    kill "$process" 2>/dev/null || true
    wait "$process"
}

# Without a word from bash.
killQuietly() {
    [ -n "$1" ] || return 0
    { kill -KILL "$1" && wait "$1"; } 2>/dev/null || true
}

# startWatch ARGUMENT...: a watch in the background, $watcher
startWatch() {
    : >"$work/out"
    : >"$work/err"
    "$programs/kakb-host" watch "$@" >>"$work/out" 2>>"$work/err" </dev/null &
    watcher=$!
    command_line="kakb-host watch $*"
}

# endWatch SIGNAL: which must end it soon, and well
endWatch() {
    kill "-$1" "$watcher"
    eventually 3 isGone "$watcher" || fail "SIG$1 does not end the watch"
    status=0
    wait "$watcher" || status=$?
    watcher=
    [ "$status" = 0 ] || { show; fail "status $status after SIG$1"; }
}

# run SECONDS COMMAND...: notes status, output and the milliseconds it took
run() {
    local limit=$1 start
    shift
    start=$(date +%s%N)
    status=0
    # A function cannot be given to timeout.
    [ "$1" != host ] || set -- "$programs/kakb-host" "${@:2}"
    timeout "$limit" "$@" >"$work/out" 2>"$work/err" </dev/null || status=$?
    elapsed_ms=$((($(date +%s%N) - start) / 1000000))
    command_line="${*//$programs\//}"
}

show() {
    echo "--- $command_line" >&2
    sed 's/^/stdout: /' "$work/out" >&2
    sed 's/^/stderr: /' "$work/err" >&2
}

# expect STATUS COMMAND...
expect() {
    local expected=$1
    shift
    run 60 "$@"
    [ "$status" = "$expected" ] && return
    show
    fail "status $status, not $expected"
}

# outputIs TEXT, errorIs TEXT: all of standard output or standard error
outputIs() { fileIs out "$1"; }
errorIs() { fileIs err "$1"; }
fileIs() {
    [ "$(cat "$work/$1")" = "$2" ] && return
    show
    diff <(echo "$2") "$work/$1" >&2 || true
    fail "std$1 differs: < is expected, > was printed"
}

# outputHas REGEX..., errorHas REGEX...: each matches a line
outputHas() { fileHas out "$@"; }
errorHas() { fileHas err "$@"; }
fileHas() {
    local file=$1 regex
    shift
    for regex in "$@"; do
        grep -qE -- "$regex" "$work/$file" && continue
        show
        fail "no line of std$file matches: $regex"
    done
}

# One sentence for the user, and nothing else.
saysOneSentence() {
    [ "$(wc -l <"$work/err")" = 1 ] && grep -q '^kakb-host: .' "$work/err" &&
        [ ! -s "$work/out" ] && return
    show
    fail "not one sentence on standard error alone"
}

tookLessThan() {
    [ "$elapsed_ms" -lt "$1" ] && return
    show
    fail "took $elapsed_ms ms, not less than $1"
}

# dumpIs LINE...: all that is not 0 in the PLC that was stopped last
dumpIs() {
    local expected
    expected=$(printf '%s\n' "$@")
    [ "$(cat "$work/dump")" = "$expected" ] && return
    diff <(echo "$expected") "$work/dump" >&2 || true
    fail "the PLC's memory differs: < is expected, > is there"
}

# jsonIs EXPRESSION: true in Python with `lines`, the objects on the lines of standard output
jsonIs() {
    "$python" -c '
import json, sys
lines = [json.loads(line) for line in open(sys.argv[1])]
sys.exit(not eval("(" + sys.argv[2] + ")"))' "$work/out" "$1" && return
    show
    fail "not so: $1"
}
