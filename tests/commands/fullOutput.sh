#!/usr/bin/env bash
# usage: fullOutput.sh PROGRAM_FOLDER
# What was asked for cannot be shown: no verb ends as if it had been, and each says why. A reader who
# has seen enough is another matter.
source "$(dirname "$0")/common.sh" "$1"

# cannotShow VERB...: standard output is full
cannotShow() {
    status=0
    : >"$work/out"
    timeout 20 "$programs/kakb-host" "$@" >/dev/full 2>"$work/err" </dev/null || status=$?
    command_line="kakb-host $* >/dev/full"
    [ "$status" = 1 ] || { show; fail "status $status, not 1"; }
    saysOneSentence
    errorIs 'kakb-host: cannot write the output'
}

# sawEnough VERB...: nobody reads the rest, and that is no failure
sawEnough() {
    status=0
    timeout 20 bash -o pipefail -c '"$@" | head -c 10' bash "$programs/kakb-host" "$@" \
        >"$work/out" 2>"$work/err" || status=$?
    command_line="kakb-host $* | head -c 10"
    [ "$status" = 0 ] || { show; fail "status $status, not 0"; }
    errorIs ''
}

cannotShow --help
cannotShow --version
cannotShow watch --help

sawEnough series MW 0 --count 4000 --interval 1
sawEnough series MW 0 --count 4000 --interval 1 --json

for json in "" --json; do
    # shellcheck disable=SC2086 # an option or nothing
    {
        cannotShow info $json
        cannotShow check MW 100 $json
        cannotShow series MW 100 --count 3 $json
        cannotShow plan --tags "$demo_tags" $json
    }
    for kind in pty tcp; do
        startPlc "$kind"
        # shellcheck disable=SC2086 # an option or nothing
        {
            cannotShow read MW100 --link "$link" $json
            cannotShow write MW100=1 --link "$link" $json
            # Not only when it is stopped.
            cannotShow watch --tags "$demo_tags" --link "$link" $json
        }
        stopPlc
        dumpIs '1 MW 3050 1'
    done
done
