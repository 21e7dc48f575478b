#!/usr/bin/env bash
# Makes the API reference from the driver's header. Anything undocumented is an error.
# usage: scripts/reference.sh [FOLDER]
#   FOLDER   where html/ and xml/ go (default: build/reference)
# Exit status: 0 made, 1 usage, or a warning of doxygen.
set -euo pipefail
. "$(dirname "$0")/common.sh"
[[ ${1:-} != -* ]] || usage
folder=${1:-build/reference}
mkdir -p "$folder"
folder=$(cd "$folder" && pwd)
cd "$(dirname "$0")/.."

{
    cat docs/Doxyfile
    echo "OUTPUT_DIRECTORY = \"$folder\""
} | doxygen - || exit 1
echo "$folder/html/index.html"
