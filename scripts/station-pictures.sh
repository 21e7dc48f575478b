#!/usr/bin/env bash
# Makes the pictures of the station's page, in the browser of the tests.
# usage: scripts/station-pictures.sh [PROGRAM_FOLDER [FOLDER]]
#   PROGRAM_FOLDER   where kakb-station and kakb-sim are (default: build/qt5/bin)
#   FOLDER           of the pictures (default: docs)
# Exit status: 0 made, 1 usage, or the page did not show what the pictures are of.
set -euo pipefail
. "$(dirname "$0")/common.sh"
[[ ${1:-} != -* ]] || usage
here=$(cd "$(dirname "$0")/.." && pwd)
programs=$(cd "${1:-$here/build/qt5/bin}" && pwd)
KAKB_PICTURES=$(realpath -m "${2:-$here/docs}") /usr/bin/python3 -B "$here/tests/commands/runTests.py" \
    "$programs" --folder "$here/tests/station/outside" browserPictures.BrowserPictures
