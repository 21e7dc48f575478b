#!/usr/bin/env bash
# usage: recipes.sh PROGRAM_FOLDER
# Recipes to the PLC and back; its memory is the judge. What differs, what cannot be written and
# what was refused is named.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/recipe.csv" <<'CSV'
name,station,area,address,type,value,comment
setpoint,1,MW,100,float32:high,21.5,
total,1,MW,104,uint32,4000000001,
speed,1,QW,40,int16,-300,
other speed,2,QW,40,uint16,1450,
single bit,1,QX,0.5,bool,1,
bit a,1,MX,30.0,bool,1,
bit b,1,MX,30.1,bool,0,
bit c,1,MX,30.2,bool,1,
CSV
# 400 words that lie together and 200 bits, more than fit in one request to write or to read.
{
    echo 'name,station,area,address,type,value,comment'
    for i in $(seq 0 399); do echo "word $i,1,MW,$((1000 + 2 * i)),uint16,$((i * 37 + 1)),"; done
    for i in $(seq 0 199); do echo "bit $i,1,MX,$((10 + i / 8)).$((i % 8)),bool,$((i % 3 == 0)),"; done
} >"$work/long.csv"
sed 's/,[^,]*,$/,,/; 1d' "$work/recipe.csv" >"$work/body"
{ head -n 1 "$work/recipe.csv"; cat "$work/body"; } >"$work/empty.csv"

for kind in pty tcp; do
    startPlc "$kind" --stations 1-2
    expect 0 host recipe download "$work/recipe.csv" --verify --link "$link"
    outputIs 'downloaded 8 values, verified'
    errorIs ''
    expect 0 host recipe upload "$work/empty.csv" --output "$work/back.csv" --verify --link "$link"
    outputIs 'uploaded 8 values, verified'
    cmp "$work/recipe.csv" "$work/back.csv" || fail "the recipe came back changed"
    grep -q 'setpoint,.*,,$' "$work/empty.csv" || fail "the upload changed its own file as well"
    cp "$work/empty.csv" "$work/self.csv"
    expect 0 host recipe upload "$work/self.csv" --link "$link" --json
    jsonIs 'lines == [{"recipe": "uploaded", "values": 8, "verified": False}]'
    cmp "$work/recipe.csv" "$work/self.csv" || fail "the upload did not fill its own file"
    stopPlc
    # 21.5 is 0x41AC0000 in IEEE 754, 4000000001 is 61035 * 65536 + 10241, -300 is 65236 unsigned.
    # MX 30.0 to 30.2 are bits 0 to 2 of the register 15 behind 3000, QX 0.5 bit 5 of register 0.
    dumpIs '1 QW 0 32' '1 QW 20 65236' '1 MW 3015 5' '1 MW 3050 16812' '1 MW 3052 10241' \
        '1 MW 3053 61035' '2 QW 20 1450'

    startPlc "$kind"
    expect 0 host recipe download "$work/long.csv" --verify --link "$link"
    outputIs 'downloaded 600 values, verified'
    stopPlc
    for i in 0 99 100 122 123 124 125 126 199 200 399; do
        grep -qx "1 MW $((3500 + i)) $((i * 37 + 1))" "$work/dump" || fail "word $i is not there"
    done
    # Every third of 200 bits from bit 0 of register 3005 on; 37449 = 0b1001001001001001.
    grep -qx '1 MW 3005 37449' "$work/dump" || fail "the first bits are not there"
    # Bits 192, 195 and 198: bits 0, 3 and 6 of the register 12 behind.
    grep -qx '1 MW 3017 73' "$work/dump" || fail "the last bits are not there"

    # Two words that move by themselves: other values by the time they are read back.
    startPlc "$kind" --stations 1-2 --turnaround-us 5000 \
        --signal 1:QW:20:counter:1:500 --signal 1:MW:3050:counter:1:500
    expect 6 host recipe download "$work/recipe.csv" --verify --link "$link"
    [ "$(wc -l <"$work/out")" = 2 ] || { show; fail "not the two values that differ"; }
    outputHas '^setpoint \(MW100\) is .*, not 21\.5$' '^speed \(QW40\) is [0-9]+, not -300$'
    errorIs 'kakb-host: 2 of 8 values differ'
    expect 6 host recipe download "$work/recipe.csv" --verify --link "$link" --json
    jsonIs '[(o["name"], o["address"]) for o in lines[:2]]
        == [("setpoint", "MW100"), ("speed", "QW40")] and lines[1]["expected"] in (-300, "-300")'
    expect 0 host recipe download "$work/recipe.csv" --link "$link"
    cp "$work/recipe.csv" "$work/kept.csv"
    expect 6 host recipe upload "$work/kept.csv" --verify --link "$link"
    cmp "$work/recipe.csv" "$work/kept.csv" || fail "a recipe that differs was written to its file"
    stopPlc

    startPlc "$kind" --stations 1-2
    for output in "$work/none/x.csv" "$work"; do
        expect 1 host recipe upload "$work/recipe.csv" --output "$output" --link "$link"
        saysOneSentence
        errorHas "cannot write $output: "
    done
    stopPlc

    startPlc "$kind" --stations 1-2 --exception 1 --exception-code 2 --fault-exchanges 2
    expect 5 host recipe download "$work/recipe.csv" --link "$link" --timeout-ms 30000
    saysOneSentence
    errorHas 'MW ?(100|3050)\b.*refused by the PLC: illegal address'
    tookLessThan 2000
    stopPlc

    startPlc "$kind" --stations 1-2 --silent 2
    expect 4 host recipe download "$work/recipe.csv" --link "$link" --timeout-ms 300
    saysOneSentence
    errorHas 'QW ?(40|20)\b.*station 2 does not answer'
    stopPlc
done

# The simulated PLC that the host starts for itself knows every station of the recipe.
expect 0 host recipe download "$work/recipe.csv" --verify
outputIs 'downloaded 8 values, verified'

cat >"$work/bad.csv" <<'CSV'
name,station,area,address,type,value
good,1,MW,100,uint16,1
odd,1,QW,41,int16,-300
input,1,IX,30.0,bool,1
value,1,MX,30.1,bool,2
large,1,MW,102,uint16,65536
none,1,MW,104,uint16,
CSV
expect 1 host recipe download "$work/bad.csv"
errorHas '^kakb-host: line 3: address 41 of QW is odd' '^kakb-host: line 4: area IX is read-only$' \
    '^kakb-host: line 5: "2" is no value of type bool$' '^kakb-host: line 6: "65536" is no value of type uint16$' \
    '^kakb-host: line 7: the value is missing$'
[ "$(wc -l <"$work/err")" = 5 ] || { show; fail "not the five bad lines"; }
expect 1 host recipe download "$work/none.csv"
saysOneSentence
printf 'name,station,area,address,type,value\na,1,MW,0,uint32,1\nb,1,MW,2,uint16,1\n' >"$work/shared.csv"
expect 1 host recipe download "$work/shared.csv"
errorHas 'a and b share a word of station 1'
printf 'name,station,area,address,type,value\nword,1,MW,0,uint16,1\nbit,1,MX,0.0,bool,0\n' >"$work/shared.csv"
expect 1 host recipe download "$work/shared.csv"
errorHas '^kakb-host: word and bit share a bit of station 1$'
saysOneSentence
printf 'name,station,area,address,type,value\nbit,1,QX,375.0,bool,1\n' >"$work/coils.csv"
expect 1 host recipe download "$work/coils.csv"
errorHas '^kakb-host: line 2: QX 375.0 and above can be read but not written: '
saysOneSentence
head -n 1 "$work/bad.csv" >"$work/header.csv"
expect 1 host recipe download "$work/header.csv"
saysOneSentence
