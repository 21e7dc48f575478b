#!/usr/bin/env bash
# Installs what is missing, builds, and runs the driver against a simulated PLC: polling, writing
# and a recipe round trip. Ends by itself.
# usage: ./demo.sh [options of kakb-host demo]
set -euo pipefail
cd "$(dirname "$0")"

scripts/install-dependencies.sh demo
# The tests are configured by test.sh, which also installs what they need.
if [ ! -f build/qt5/build.ninja ]; then
    cmake --preset qt5 -DKAKB_BUILD_TESTS=OFF
fi
cmake --build --preset qt5 --target kakb-host kakb-sim driver
build/qt5/bin/kakb-host demo "$@"
