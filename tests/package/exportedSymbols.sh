#!/usr/bin/env bash
# usage: exportedSymbols.sh LIBRARY
# Compares the library's dynamic symbols with the host interface.
set -euo pipefail

expected="intf_SetDriverPropertyPage
intf_addConditionRead
intf_addrMerge
intf_checkAddr
intf_checkAddrValidity
intf_dealRcvFrame
intf_getData
intf_getDriverParameter
intf_getDriverPropertyPage
intf_getProtocolType
intf_getRegDiscription
intf_getRegListByType
intf_getSendFrame
intf_getVersion
intf_initProperty
intf_multiCopy
intf_setAddrValueChangeCallBack
intf_setData
intf_setRcpAddress"

exported=$(nm -D --defined-only "$1" | awk '{print $NF}' | LC_ALL=C sort)
diff <(printf '%s\n' "$expected") <(printf '%s\n' "$exported") || {
    echo "the library exports something else than the 19 functions (left: wanted, right: exported)"
    exit 1
}
echo "19 functions exported"
