#!/usr/bin/env bash
# usage: traceAndCapture.sh PROGRAM_FOLDER
# --trace and --pcap hold every frame of a session. Wireshark's dissector must find nothing wrong
# with a capture that has each of the functions.
source "$(dirname "$0")/common.sh" "$1"
wellFormed=$here/../package/captureIsWellFormed.sh

# Frames by MODBUS Application Protocol V1.1b3, 6.3, 6.5, 6.6 and 7; checksums by pymodbus' computeCRC.
cat >"$work/frames.py" <<'PYTHON'
from pymodbus.utilities import computeCRC
for pdu in "0103 0BEA 0001", "0103 02 0007", "0106 0BEA 0007", "0105 0C1B FF00", "0183 02":
    frame = bytes.fromhex(pdu)
    print((frame + computeCRC(frame).to_bytes(2, "big")).hex(" ").upper())
PYTHON
mapfile -t frame < <("$python" "$work/frames.py")
[ ${#frame[@]} = 5 ] || fail "no frames from pymodbus"
time=' *[0-9]+\.[0-9]{6}'

cat >"$work/recipe.csv" <<'CSV'
name,station,area,address,type,value
two words,1,MW,100,float32,21.5
one word,1,QW,40,int16,-300
one bit,1,QX,0.5,bool,1
bit a,1,MX,30.0,bool,1
bit b,1,MX,30.1,bool,0
CSV

# At the pace of a wire, for a capture that is short on a network as well.
functions=(3 4 5 6 15 16)
for kind in pty tcp; do
    startPlc "$kind" --baud 38400
    expect 0 host write MW100=7 MX12.3=1 --trace --link "$link"
    outputIs 'MW100 = 7 confirmed
MX12.3 = 1 confirmed'
    errorHas "^$time > ${frame[2]}  station 1: write register 3050 = 7$" \
        "^$time < ${frame[2]}  station 1: echo, written$" \
        "^$time > ${frame[3]}  station 1: write coil 3099 = 1$" \
        "^$time < ${frame[3]}  station 1: echo, written$"
    [ "$(wc -l <"$work/err")" = 6 ] || { show; fail "not four frames behind a fence and its answer"; }
    errorHas "^$time > .*, a fence$"
    expect 0 host read MW100 --trace --link "$link"
    errorHas "^$time > ${frame[0]}  station 1: read 1 holding register from 3050$" \
        "^$time < ${frame[1]}  station 1: 1 register 0x0007$"

    expect 0 host recipe download "$work/recipe.csv" --verify --pcap "$work/recipe.pcap" \
        --link "$link"
    expect 0 host watch --tags "$demo_tags" --seconds 0.5 --pcap "$work/watch.pcap" --link "$link"
    mergecap -w "$work/all.pcap" "$work/recipe.pcap" "$work/watch.pcap"
    expect 0 "$wellFormed" "$work/all.pcap" "${functions[@]}"
    functions=() # looked for one by one, which takes long, on the first link only
    # Four requests write the recipe and four read it back, behind a fence.
    packets=$(tshark -r "$work/recipe.pcap" 2>/dev/null | wc -l)
    [ "$packets" = 18 ] || fail "$packets frames of a recipe in the capture, not 18"
    stopPlc
done

startPlc pty --exception 1 --exception-code 2
expect 5 host read MW100 --trace --link "$link" --pcap "$work/refused.pcap"
errorHas "^$time < ${frame[4]}  station 1: .*illegal address"
stopPlc
# Requests without an answer are in both as well.
startPlc pty --silent 1
expect 4 host read MW100 --trace --link "$link" --timeout-ms 300 --attempts 2 \
    --pcap "$work/silent.pcap"
[ "$(grep -c ' > .*, a fence$' "$work/err")" = 2 ] || { show; fail "not two fences"; }
stopPlc
mergecap -w "$work/none.pcap" "$work/refused.pcap" "$work/silent.pcap"
expect 0 "$wellFormed" "$work/none.pcap"
# Of the refused read two fences, as the first one's refusal could be its own.
outputHas '^8 frames of Modbus RTU'

expect 1 host read MW100 --pcap "$work/none/x.pcap"
errorHas "the capture $work/none/x.pcap cannot be written: "
saysOneSentence
