#!/usr/bin/env bash
# usage: reads.sh PROGRAM_FOLDER
# Reads by name and by address, and what is said of a tag file that cannot be used.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
level,1,MW,100,float32:high,
total,2,QW,8,uint32,
offset,1,MW,110,int16,
lamp,1,MX,12.3,bool,
CSV

for kind in pty tcp; do
    startPlc "$kind" --stations 1-2
    # 21.5 is 0x41AC0000 in IEEE 754; 100000 is 1 * 65536 + 34464.
    expect 0 host write --link "$link" --tags "$work/tags.csv" \
        level=21.5 total=100000 offset=-2 lamp=1

    expect 0 host read --link "$link" --tags "$work/tags.csv"
    outputIs 'level (MW100) = 21.5
total (2:QW8) = 100000
offset (MW110) = -2
lamp (MX12.3) = 1'
    expect 0 host read --link "$link" --tags "$work/tags.csv" lamp level
    outputIs 'lamp (MX12.3) = 1
level (MW100) = 21.5'
    expect 0 host read --link "$link" MW100 MW102 2:QW8 2:QW10 MX12.3 MW110 IW0
    outputIs 'MW100 = 16812
MW102 = 0
2:QW8 = 34464
2:QW10 = 1
MX12.3 = 1
MW110 = 65534
IW0 = 0'
    expect 0 host read --link "$link" --tags "$work/tags.csv" --json level total MW110
    jsonIs '[(o["name"], o["address"], o["value"], o["good"]) for o in lines]
        == [("level", "MW100", 21.5, True), ("total", "2:QW8", 100000, True),
            ("MW110", "MW110", 65534, True)]'
    stopPlc
done

# 255 bytes take 266 ms at 9600 baud, 10 bits each. A serial link's speed is known, so its time-out
# is the PLC's own time; over TCP it is that of all.
{
    echo 'name,station,area,address,type'
    for i in $(seq 0 124); do echo "word $i,1,MW,$((2 * i)),uint16"; done
} >"$work/long.csv"
for kind in pty tcp; do
    startPlc "$kind" --baud 9600 --trickle
    [ "$kind" = tcp ] || link+=,9600
    expected=0
    [ "$kind" = pty ] || expected=4
    expect "$expected" host read --link "$link" --tags "$work/long.csv" --timeout-ms 150 --attempts 1
    expect 0 host read --link "$link" --tags "$work/long.csv" --timeout-ms 5000
    stopPlc
done
expect 0 host read --help
tr -s '\n ' ' ' <"$work/out" | grep -q 'begin its answer; over TCP, until all of the answer is there' ||
    { show; fail "the help does not tell the two apart"; }

# The simulated PLC that the host starts for itself knows the stations asked for.
expect 0 host read 2:QW8 7:MW0
outputHas '^2:QW8 = 0$' '^7:MW0 = [0-9]+$'

expect 1 host read --tags "$work/none.csv"
errorHas "cannot read $work/none.csv: No such file or directory"
saysOneSentence
expect 1 host read --tags "$work"
saysOneSentence

cat >"$work/bad.csv" <<'CSV'
name,station,area,address,type,comment
good,1,MW,100,uint16,
odd,1,MW,101,uint16,
# a comment
station,0,MW,100,uint16,
area,1,ZZ,100,uint16,
type,1,MW,100,int64,

good,1,MW,102,uint16,
fields,1,MW
bit,1,MW,104,bool,
end,1,MW,8190,float32,
CSV
expect 1 host read --tags "$work/bad.csv"
errorHas '^kakb-host: line 3: address 101 of MW is odd' '^kakb-host: line 5: station "0"' '^kakb-host: line 6: area "ZZ"' \
    '^kakb-host: line 7: type "int64"' '^kakb-host: line 9: name "good" stands on line 2' '^kakb-host: line 10: 3 fields' \
    '^kakb-host: line 11: MW holds words' '^kakb-host: line 12: address 8190 of MW .* with its two words$'
[ "$(wc -l <"$work/err")" = 8 ] || { show; fail "not the eight bad lines"; }
for verb in plan watch "write MW100=1"; do
    # shellcheck disable=SC2086 # a verb with its argument
    expect 1 host $verb --tags "$work/bad.csv"
    errorHas '^kakb-host: line 3: ' '^kakb-host: line 12: '
done

expect 1 host read
saysOneSentence
expect 1 host read MW101
saysOneSentence
expect 1 host read 300:MW0
saysOneSentence
expect 1 host read --tags "$work/tags.csv" lvel
errorHas 'nor is it a name of the tag file'
saysOneSentence
