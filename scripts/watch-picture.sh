#!/usr/bin/env bash
# Makes the picture of a watch: kakb-host on a terminal of tmux, on a simulated PLC at 38400 baud.
# usage: scripts/watch-picture.sh [PROGRAM_FOLDER [FILE]]
#   PROGRAM_FOLDER   where kakb-host and kakb-sim are (default: build/qt5/bin)
#   FILE             the picture (default: docs/watch.svg)
# Exit status: 0 made, 1 usage, or the watch never showed its table.
set -euo pipefail
. "$(dirname "$0")/common.sh"
[[ ${1:-} != -* ]] || usage
here=$(cd "$(dirname "$0")/.." && pwd)
programs=$(cd "${1:-$here/build/qt5/bin}" && pwd)
picture=$(realpath -m "${2:-$here/docs/watch.svg}")

work=$(mktemp -d)
terminal() { tmux -S "$work/tmux" -f /dev/null "$@"; }
trap 'terminal kill-server 2>/dev/null || true; rm -rf "$work"' EXIT

printf -v command '%q/kakb-host watch --tags %q' "$programs" "$here/demo/tags.csv"
terminal new-session -d -x 114 -y 16 "$command"
# Long enough for the rates to be those of a whole second, and for the toggles to move.
deadline=$((SECONDS + 30))
until terminal capture-pane -p 2>/dev/null | grep -qE 'fill level .* [1-9][0-9]+  good'; do
    [ "$SECONDS" -lt "$deadline" ] || { echo "no table in 30 s" >&2; exit 1; }
    sleep 0.2
done
sleep 4
terminal capture-pane -e -p >"$work/screen"
python3 "$here/scripts/terminalToSvg.py" "kakb-host watch --tags tags.csv" \
    <"$work/screen" >"$work/picture"
cat "$work/picture" >"$picture"
echo "$picture"
