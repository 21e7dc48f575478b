#!/usr/bin/env bash
# usage: initialisationOrder.sh LIBRARY
# Reads the library's list of start-up functions: the tables of device/ are built before those of
# service/ and before the driver state.
set -euo pipefail
library=$1

# Address and length of the list. Relocations fill its entries, in any order.
read -r list length < <(readelf -SW "$library" |
    sed -nE 's/.* \.init_array +INIT_ARRAY +([0-9a-f]+) [0-9a-f]+ ([0-9a-f]+) .*/\1 \2/p')

# position UNIT: the place in the list of the function that builds a unit's tables.
position() {
    local function
    function=$(nm "$library" | awk -v name="_GLOBAL__sub_I_$1.cpp" '$3 == name { print $1 }')
    [ -n "$function" ] || return 0
    readelf -rW "$library" | while read -r at _ _ target _; do
        [[ $at =~ ^[0-9a-f]+$ && $target =~ ^[0-9a-f]+$ ]] || continue
        [ $((16#$target)) -eq $((16#$function)) ] || continue
        [ $((16#$at)) -ge $((16#$list)) ] || continue
        [ $((16#$at)) -lt $((16#$list + 16#$length)) ] || continue
        echo $((16#$at))
    done
}

device=$(position quorvane_ka_kb_plc)
service=$(position serviceForProtocol)
if [ -z "$device" ] || [ -z "$service" ]; then
    echo "the list of start-up functions was not read"
    exit 1
fi
[ "$device" -lt "$service" ] || {
    echo "service/ is initialised before device/"
    exit 1
}
echo "device/ is initialised before service/"
