#!/usr/bin/env bash
# Installs what is missing, builds, and shows the driver at work on a simulated PLC: watching every
# area and type, writing, and a recipe round trip. On a terminal the watch is a table; it ends by
# itself. With --page it shows the values of a simulated PLC in a browser instead, at the address of its
# last line, until Ctrl-C. With --plant two stations tell a broker what they read, and a subscriber prints
# it for some seconds.
# usage: ./demo.sh [SECONDS | --page | --plant]
#   SECONDS   how long to watch, 1 or more (default: 10 on a terminal, else 3)
# Exit status: 0 all went well, 1 usage, else the status of the call that failed.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/common.sh

seconds=3
programs=(kakb-host)
[ ! -t 1 ] || seconds=10
case "${1:-}" in
"") ;;
--page | --plant) programs=(kakb-station) ;;
*[!0-9]* | 0*) usage ;;
*) seconds=$1 ;;
esac

scripts/install-dependencies.sh demo
# The tests are configured by test.sh, which also installs what they need.
if [ ! -f build/qt5/build.ninja ]; then
    cmake --preset qt5 -DKAKB_BUILD_TESTS=OFF
fi
cmake --build --preset qt5 --target "${programs[@]}" kakb-sim driver
case "${1:-}" in
--page) exec build/qt5/bin/kakb-station ;;
--plant) exec demo/plant.sh build/qt5/bin "$seconds" ;;
esac
exec demo/session.sh build/qt5/bin "$seconds"
