#!/usr/bin/env bash
# usage: refusals.sh PROGRAM_FOLDER
# The PLC understood the request and refused it: that is said at once, without waiting for the
# time-out and without asking again. Code 6, busy, is worth asking again.
source "$(dirname "$0")/common.sh" "$1"

printf 'name,station,area,address,type,value\nspeed,1,MW,100,uint16,7\n' >"$work/recipe.csv"

# refused CODE WORDS: by every verb
refused() {
    startPlc "$kind" --exception 1 --exception-code "$1" --report "$work/report"
    for verb in "read MW100" "read IX0.0" "write MW100=1" "write MX0.0=1" \
        "recipe download $work/recipe.csv" "recipe upload $work/recipe.csv"; do
        # shellcheck disable=SC2086 # a verb with its argument
        expect 5 host $verb --link "$link" --timeout-ms 30000
        saysOneSentence
        errorHas "refused by the PLC: $2"
        tookLessThan 1000
    done
    stopPlc
    # Each request once, behind a fence; and a second fence where the refusal of the first one could
    # be taken for the request's own: twice.
    grep -qx 'requests 14' "$work/report" || fail "asked again: $(cat "$work/report")"
}

# Texts by MODBUS Application Protocol V1.1b3, 7: what is illegal with codes 1 to 3; 4 is a failure.
for kind in pty tcp; do
    refused 1 'illegal function'
    refused 2 'illegal address'
    refused 3 'illegal value'
    refused 4 'device failure'

    startPlc "$kind" --exception 1 --exception-code 6 --fault-exchanges 2
    expect 0 host read MW100 --link "$link" --timeout-ms 30000
    tookLessThan 1000
    stopPlc
done
