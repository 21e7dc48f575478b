#!/usr/bin/env bash
# usage: plan.sh PROGRAM_FOLDER
# The plan's requests must be those that pymodbus builds for the same registers.
source "$(dirname "$0")/common.sh" "$1"

cat >"$work/tags.csv" <<'CSV'
name,station,area,address,type,comment
inputs,1,IW,0,uint16,
more inputs,1,IW,4,int16,
outputs,2,QW,40,uint16,
level,1,MW,100,float32:high,
count,1,MW,104,uint32,
marker,1,MX,20.0,bool,
lamp,3,QX,0.5,bool,
door,1,IX,8.1,bool,
CSV

cat >"$work/compare.py" <<'PYTHON'
import json, sys
from pymodbus.factory import ClientDecoder
from pymodbus.framer.rtu_framer import ModbusRtuFramer
from pymodbus.register_read_message import ReadHoldingRegistersRequest, ReadInputRegistersRequest

INPUT, HOLDING = ReadInputRegistersRequest, ReadHoldingRegistersRequest
# Registers by the device's map: MW n at 3000 + n / 2, MX b.k in register 3000 + b / 2.
READS = {(1, INPUT, 0, 3): {"inputs", "more inputs"}, (2, HOLDING, 20, 1): {"outputs"},
         (1, HOLDING, 3050, 4): {"level", "count"}, (1, HOLDING, 3010, 1): {"marker"},
         (3, HOLDING, 0, 1): {"lamp"}, (1, INPUT, 4, 1): {"door"}}

framer = ModbusRtuFramer(ClientDecoder())
expected = {framer.buildPacket(request(address, count, station)).hex(): names
            for (station, request, address, count), names in READS.items()}
if sys.argv[1] == "text":
    for request in expected:
        print(" ".join(request[i:i + 2] for i in range(0, len(request), 2)))
    sys.exit()
plan = json.load(sys.stdin)
found = {block["request"]: set(block["tags"]) for block in plan["blocks"]}
if found != expected or plan["grouped"]["requests"] != 6 or plan["single"]["requests"] != 8:
    sys.exit("expected %s\nfound    %s" % (expected, found))
PYTHON

expect 0 host plan --tags "$work/tags.csv" --json
"$python" -m json.tool "$work/out" >/dev/null || fail "no JSON"
"$python" "$work/compare.py" json <"$work/out" || fail "the plan differs from pymodbus' requests"

expect 0 host plan --tags "$work/tags.csv"
requests=$("$python" "$work/compare.py" text)
while read -r request; do
    outputHas " $request "
done <<<"$requests"
outputHas '^station +area +number +count +tags +request +reply +names$' \
    '^grouped: +6 requests, [0-9.]+ ms a cycle$' \
    '^without grouping: +8 requests, [0-9.]+ ms a cycle$'

# Wire time at 9600 baud is about four times that at 38400; a network has none.
cycleTime() { "$python" -c 'import json, sys; print(json.load(sys.stdin)["grouped"]["cycleTime"])'; }
expect 0 host plan --tags "$work/tags.csv" --json --turnaround-us 0
fast=$(cycleTime <"$work/out")
expect 0 host plan --tags "$work/tags.csv" --json --turnaround-us 0 --link serial:/dev/none,9600
slow=$(cycleTime <"$work/out")
expect 0 host plan --tags "$work/tags.csv" --json --turnaround-us 0 --link tcp:127.0.0.1,1
jsonIs 'lines[0]["grouped"]["cycleTime"] is None and lines[0]["single"]["cycleTime"] is None'
expect 0 host plan --tags "$work/tags.csv" --turnaround-us 0 --link tcp:127.0.0.1,1
outputHas '^grouped: +6 requests, no wire time$' '^without grouping: +8 requests, no wire time$'
[ "$slow" -gt $((3 * fast)) ] || fail "$slow us at 9600 baud, $fast us at 38400"

# The simulated PLC's own tags.
expect 0 host plan --tags "$demo_tags"
cp "$work/out" "$work/of-the-demo"
expect 0 host plan
outputIs "$(cat "$work/of-the-demo")"

expect 1 host plan --tags "$work/none.csv"
saysOneSentence
