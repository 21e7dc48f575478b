#!/usr/bin/env bash
# usage: infoVerbs.sh PROGRAM_FOLDER
# What the verbs without a link say. The ranges and address numbers are those of the driver's
# manual, the header that is installed with it.
source "$(dirname "$0")/common.sh" "$1"

expect 0 host info
outputHas '^protocol .*type 0$' '^version +2\.0\.0\.0$' '^property page +0_0$' \
    '^serial line +38400 baud, 8 data bits, parity NONE, stop bits 1$' \
    '^network +192\.168\.1\.100, port 8000$' \
    '^MW +words +DDDD +0 +8190 +16 bits +read and write$' \
    '^IW +words +DDDD +0 +510 +16 bits +read$' \
    '^QW +words +DDDD +0 +510 +16 bits +read and write$' \
    '^MX +bits +DDDDO +0\.0 +7816\.7 +1 bit +read and write$' \
    '^IX +bits +DDDDO +0\.0 +511\.7 +1 bit +read$' \
    '^QX +bits +DDDDO +0\.0 +511\.7 +1 bit +read and write$'

expect 0 host info --json
jsonIs 'lines[0]["version"] == "2.0.0.0" and lines[0]["baud"] == 38400
    and lines[0]["port"] == 8000 and len(lines) == 1
    and sorted(a["name"] for a in lines[0]["areas"]) == ["IW", "IX", "MW", "MX", "QW", "QX"]
    and [a["highest"] for a in lines[0]["areas"] if a["name"] == "MX"] == ["7816.7"]'

# check STATUS ARGUMENT... REGEX: the last one matches the only line
check() {
    local expected=$1 regex=${*: -1}
    expect "$expected" host check "${@:2:$#-2}"
    outputHas "$regex"
    isAlone
}

isAlone() {
    [ "$(wc -l <"$work/out")" = 1 ] && [ ! -s "$work/err" ] || { show; fail "more than one line"; }
}

check 0 MW 100 '^MW 100: valid, address number 3050, holding register 3050 \(function 3, written by 6\)$'
check 0 IX 0.3 --count 20 'address number 3, 20 bits from bit 3 on in input registers 0 to 1 \(function 4\)$'
check 0 QW 510 '^QW 510: valid, address number 255, '
# 3000 + 8 * 13 + 1; bit 9 of the register six behind 3000
check 0 MX 12.9 '^MX 13\.1: valid, address number 3105, bit 9 of holding register 3006 '
check 7 MW 101 '^MW 101: not valid: odd: a word starts at an even number$'
check 7 MW 8192 '^MW 8192: not valid: past the end of MW, whose last address is 8190$'
check 7 MW 8190 --count 2 'past the end of MW: the last address that leaves room for 2 words is 8188$'
check 7 QX 512.0 '^QX 512\.0: not valid: past the end of QX, whose last address is 511\.7$'
check 7 IW 0 --write '^IW 0: not valid: IW is read-only$'
check 7 IX 1.0 --write '^IX 1\.0: not valid: IX is read-only$'
check 7 ZZ 0 '^ZZ 0: not valid: there is no area "ZZ"; the areas are MW, IW, QW, MX, IX, QX$'
check 7 MX 12 '^MX 12: not valid: malformed'
check 0 IW 0 '^IW 0: valid'

expect 7 host check MW 101 --json
jsonIs 'len(lines) == 1 and lines[0]["valid"] is False and "odd" in lines[0]["reason"]'
expect 0 host check MX 12.3 --json
jsonIs 'lines[0]["valid"] is True and lines[0]["number"] == 3099 and lines[0]["coil"] == 3099
    and lines[0]["firstRegister"] == 3006 and lines[0]["bit"] == 3'

expect 0 host series MW 0 --count 3 --interval 10
outputIs 'MW 0 = 3000
MW 20 = 3010
MW 40 = 3020'
expect 0 host series QW 506 --count 4 --interval 1
outputIs 'QW 506 = 253
QW 508 = 254
QW 510 = 255
QW 510 = 255
clipped: the last 1 lay past the end of QW and became 510'
expect 0 host series QX 0.0 --count 3 --interval 9 --json
jsonIs 'lines[0]["clipped"] == 0 and [(e["address"], e["number"]) for e in lines[0]["entries"]]
    == [("0.0", 0), ("1.1", 9), ("2.2", 18)]'
expect 7 host series MW 3
outputHas '^MW 3: not valid: odd'
