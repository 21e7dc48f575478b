#!/usr/bin/env bash
# usage: writes.sh PROGRAM_FOLDER
# A write ends with status 0 only when the PLC has the value. The simulated PLC's memory is the
# judge.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
level,1,MW,100,float32:high,
total,2,QW,8,uint32,
offset,1,MW,110,int16,
lamp,1,MX,12.3,bool,
input,1,IW,0,uint16,
CSV

# 21.5 is 0x41AC0000 in IEEE 754, 4000000001 is 61035 * 65536 + 10241, -2 is 65534 unsigned.
# MX 12.3 is bit 3 of the register six behind 3000, QX 1.0 bit 8 of register 0.
for kind in pty tcp; do
    startPlc "$kind" --stations 1-2
    expect 0 host write --link "$link" --tags "$work/tags.csv" \
        level=21.5 total=4000000001 offset=-2 lamp=1 MW200=7 2:QX1.0=true QW510=0xFFFF
    outputIs 'level (MW100) = 21.5 confirmed
total (2:QW8) = 4000000001 confirmed
offset (MW110) = -2 confirmed
lamp (MX12.3) = 1 confirmed
MW200 = 7 confirmed
2:QX1.0 = 1 confirmed
QW510 = 65535 confirmed'
    [ ! -s "$work/err" ] || { show; fail "something on standard error"; }
    expect 0 host write --link "$link" --json MW202=9
    jsonIs 'len(lines) == 1 and lines[0]["address"] == "MW202" and lines[0]["confirmed"] is True
        and int(lines[0]["value"]) == 9'
    # What is 0 afterwards is not in the memory's list: 0 is written as well.
    expect 0 host write --link "$link" MX12.3=0 MW200=0
    stopPlc
    dumpIs '1 QW 255 65535' '1 MW 3050 16812' '1 MW 3055 65534' '1 MW 3101 9' \
        '2 QW 0 256' '2 QW 4 10241' '2 QW 5 61035'

    startPlc "$kind" --exception 1 --exception-code 2
    expect 5 host write --link "$link" --timeout-ms 30000 MW100=7
    saysOneSentence
    errorHas 'MW100: .*illegal address'
    stopPlc
    dumpIs ''

    startPlc "$kind" --silent 1
    expect 4 host write --link "$link" --timeout-ms 300 MW100=7
    saysOneSentence
    errorHas 'MW100: station 1 does not answer'
    stopPlc
    dumpIs ''

    # Only the value of the station that answers arrives, and this is no success.
    startPlc "$kind" --stations 1-2 --silent 2
    expect 4 host write --link "$link" --timeout-ms 300 2:MW100=7 MW100=8
    errorHas '2:MW100: station 2 does not answer'
    stopPlc
    dumpIs '1 MW 3050 8'
done

# A name may hold what stands between name and value.
printf 'name,station,area,address,type\na=b,1,MW,0,uint16\na,1,MW,2,uint16\na=b=,1,MW,4,uint16\n' \
    >"$work/equals.csv"
startPlc pty
expect 0 host write --link "$link" --tags "$work/equals.csv" a=b=1 a=2 a=b==3 MW6=4
stopPlc
dumpIs '1 MW 3000 1' '1 MW 3001 2' '1 MW 3002 3' '1 MW 3003 4'

# A request that is lost twice is sent again.
startPlc pty --drop-request 1 --fault-exchanges 2
expect 0 host write --link "$link" --timeout-ms 300 MW100=7
stopPlc
dumpIs '1 MW 3050 7'

# refused VALUE... REGEX: for a reason that needs no PLC
refused() {
    expect 1 host write --link serial:/dev/none --tags "$work/tags.csv" "${@:1:$#-1}"
    errorHas "${*: -1}"
    saysOneSentence
}

refused input=1 'area IW is read-only'
refused IX0.0=1 'area IX is read-only'
refused MW100=1 IW2=1 'IW2=1: area IW is read-only'
coils='can be read but not written: their coils are those of the markers$'
refused QX375.0=1 "QX375.0=1: QX 375.0 and above $coils"
refused QX511.7=0 "QX511.7=0: QX 375.0 and above $coils"
refused MW0=1 MX0.0=0 'MX0.0: shares memory with MW0, which is written as well$'
refused lamp=1 MW12=7 'MW12: shares memory with lamp \(MX12.3\), which is written as well$'
refused MW100=1 level=2 'level \(MW100\): is written twice$'
for value in MW100=65536 MW100=-1 MW100=x MW100= MW100=1.5 lamp=2 offset=32768 level=warm \
    level=1e39 total=4294967296; do
    refused "$value" "$value: the value does not fit"
done
refused a=b=1 'a: '
refused MW100 'is not NAME=VALUE'
refused '=7' 'is not NAME=VALUE'
refused MW101=7 'odd'
refused nothing=7 'nor is it a name of the tag file'
expect 1 host write
