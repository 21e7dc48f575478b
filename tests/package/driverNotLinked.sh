#!/usr/bin/env bash
# usage: driverNotLinked.sh PROGRAM
# Fails when the program needs the driver to start, or has it built in: it is to load, at run time,
# whatever driver it is given.
set -euo pipefail

needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
grep -q '^libQt.Core' <<<"$needed" || { echo "QtCore is missing: is this the program?"; exit 1; }
! grep quorvane <<<"$needed" || { echo "the driver is among the needed libraries"; exit 1; }
symbols=$(nm --defined-only "$1")
grep -q ' [Tt] main$' <<<"$symbols" || { echo "there are no symbols to look through"; exit 1; }
! grep -E ' [TtWw] intf_' <<<"$symbols" || { echo "the driver is built in"; exit 1; }
echo needs $needed
