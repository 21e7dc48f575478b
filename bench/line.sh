# Sourced by the scripts beside it: a simulated PLC on a pseudo-terminal.
# Needs $programs, the folder of kakb-host and kakb-sim. Sets $work, a folder that is removed at the
# end.
work=$(mktemp -d)
trap 'stop_plc; rm -rf "$work"' EXIT

# start_plc OPTIONS...   serves $work/plc until stop_plc
start_plc() {
    coproc plc { exec "$programs/kakb-sim" --link-path "$work/plc" --report "$work/report" \
        --until-stdin-ends "$@"; }
    plc_input=${plc[1]}
    read -r _ <&"${plc[0]}"
}

stop_plc() {
    [ -n "${plc_PID:-}" ] || return 0
    local pid=$plc_PID
    exec {plc_input}>&-
    wait "$pid" || true
}

# reported KEY   a figure of the PLC's report
reported() {
    awk -v key="$1" '$1 == key { print $2 }' "$work/report"
}

# figure KEY   a figure of `kakb-host watch --json` from standard input
figure() {
    python3 -c '
import json, sys
figures = [json.loads(line) for line in sys.stdin][-1]
print(figures[sys.argv[1]])' "$1"
}

# tags_of WORDS > FILE   a tag file whose plan is one block of so many words
tags_of() {
    echo name,station,area,address,type
    for ((word = 0; word < $1; ++word)); do echo "w$word,1,MW,$((2 * word)),uint16"; done
}
