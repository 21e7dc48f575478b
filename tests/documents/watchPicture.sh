#!/usr/bin/env bash
# usage: watchPicture.sh SOURCE PROGRAM_FOLDER
# The picture in the documents is one of a watch as it is now: but for figures, the script draws the
# same text.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$1/scripts/watch-picture.sh" "$2" "$work/watch.svg" >/dev/null

# Texts of an SVG in order, with every figure replaced; attributes of the place are left out.
texts() {
    python3 - "$1" <<'END'
import re, sys
from xml.etree import ElementTree
for element in ElementTree.parse(sys.argv[1]).iter("{http://www.w3.org/2000/svg}text"):
    print(re.sub(r" +", " ", re.sub(r"-?\d+(\.\d+)?", "N", element.text)).strip())
END
}
texts "$1/docs/watch.svg" >"$work/shown"
texts "$work/watch.svg" >"$work/drawn"
diff "$work/shown" "$work/drawn"
# Every tag of the demo is in it.
tail -n +3 "$1/demo/tags.csv" | cut -d, -f1 | sed -E 's/[0-9]+/N/g' >"$work/names"
while read -r name; do
    grep -q "^$name " "$work/shown" || { echo "the picture has no $name"; exit 1; }
done <"$work/names"
