#!/usr/bin/env bash
# usage: fullOutput.sh PROGRAM_FOLDER
# What was asked for cannot be shown: no verb ends as if it had been, and each says why.
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
