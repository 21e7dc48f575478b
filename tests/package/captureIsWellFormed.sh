#!/usr/bin/env bash
# usage: captureIsWellFormed.sh CAPTURE [FUNCTION...]
# Every packet of a capture by the host must be a Modbus RTU frame that tshark finds nothing wrong
# with, and each function given must have a request and an answer.
set -euo pipefail

capture=$1
shift
log=$(mktemp)
trap 'rm -f "$log"' EXIT

read_capture() {
    tshark -r "$capture" -o mbrtu.udp.port:10502 -o mbrtu.crc_verification:TRUE \
        -o udp.check_checksum:TRUE -o ip.check_checksum:TRUE "$@" 2>"$log" ||
        { cat "$log" >&2; echo "tshark cannot read $capture" >&2; exit 1; }
}

frames=$(read_capture -Y mbrtu -T fields -e frame.number | wc -l)
[ "$frames" -gt 0 ] || { echo "no Modbus RTU frame in $capture"; exit 1; }

# 6291456 is the severity of a warning, 1 the status of a right checksum. Of a read reply whose byte
# count is wrong, tshark shows bare data in place of registers.
bad=$(read_capture -Y '!mbrtu || !modbus || _ws.malformed || mbrtu.crc16.status != 1 ||
    (modbus.data && modbus.func_code <= 4) || udp.checksum.status != 1 ||
    ip.checksum.status != 1 || _ws.expert.severity >= 6291456')
[ -z "$bad" ] || { echo "$bad"; echo "malformed or with a wrong checksum"; exit 1; }

unclear=$(read_capture | grep 'Unable to classify' || true)
[ -z "$unclear" ] || { echo "$unclear"; echo "neither request nor answer"; exit 1; }

for function in "$@"; do
    for port in udp.dstport udp.srcport; do
        found=$(read_capture -Y "modbus.func_code == $function && $port == 10502")
        [ -n "$found" ] || { echo "no frame of function $function with $port 10502"; exit 1; }
    done
done
echo "$frames frames of Modbus RTU, all well formed"
