#!/usr/bin/env bash
# Counts the instructions of the driver's exchanges with valgrind and compares them with
# bench/instructions.txt. The counts depend on the compiler and on Qt, hardly on the machine.
# usage: scripts/instructions.sh [--keep]
#   --keep   write what was counted to bench/instructions.txt
# Works in build/instructions. Needs the packages of scripts/install-dependencies.sh bench.
# Exit status: 0 none is more than 5 % above what is kept, 1 usage or build failure, 2 one is, or is
#   only kept or only counted, 3 one could not be counted.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

build=build/instructions
kept=bench/instructions.txt
room=5
kinds=(word block changed scan write merge)
declare -A times=([word]=2000 [block]=500 [changed]=200 [scan]=200 [write]=1000 [merge]=5)

[[ $# -eq 0 || ($# -eq 1 && $1 == --keep) ]] || usage
mkdir -p "$build"
{
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE= -DCMAKE_CXX_FLAGS="-O2 -DNDEBUG" \
        -DQT_MAJOR=5 -DKAKB_BUILD_BENCH=ON &&
        cmake --build "$build" --target instructionCount
} >"$build/build.log" 2>&1 || {
    cat "$build/build.log"
    exit 1
}

# instructions KIND TIMES: of a whole run. The C library copies with the plainest instructions, so
# that the processor's abilities do not count.
instructions() {
    env -i GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F,-AVX512VL,-AVX2,-AVX,-ERMS,-FSRM \
        setarch -R valgrind --tool=callgrind --callgrind-out-file=/dev/null \
        "$build/bin/instructionCount" "$1" "$2" >"$build/run.log" 2>&1 &&
        sed -n 's/.*Collected : \([0-9][0-9]*\).*/\1/p' "$build/run.log"
}

for kind in "${kinds[@]}"; do
    n=${times[$kind]}
    once=$(instructions "$kind" "$n") && twice=$(instructions "$kind" $((2 * n))) &&
        [[ -n $once && $twice -gt $once ]] || {
        echo "$kind could not be counted; all that valgrind said is in $build/run.log" >&2
        exit 3
    }
    echo "$kind $(((twice - once) / n))"
done >"$build/counted.txt"

if [ "${1:-}" = --keep ]; then
    {
        echo "# Instructions of one exchange, or of one merge of 1,000 keys; scripts/instructions.sh --keep"
        cat "$build/counted.txt"
    } >"$kept"
    cat "$kept"
    exit 0
fi
awk -v room=$room '
    FILENAME == ARGV[1] { if ($1 != "#") before[$1] = $2; next }
    { counted[$1] = 1 }
    !($1 in before) { printf "%-7s %10d, nothing kept\n", $1, $2; bad = 1; next }
    {
        change = 100 * ($2 - before[$1]) / before[$1]
        verdict = change > room ? "SLOWER" : change < -room ? "faster: renew with --keep" : "ok"
        printf "%-7s %10d, kept %10d, %+.1f %%  %s\n", $1, $2, before[$1], change, verdict
        if (change > room) bad = 1
    }
    END {
        for (kind in before) if (!(kind in counted)) {
            printf "%-7s not counted, kept %10d\n", kind, before[kind]
            bad = 1
        }
        exit bad ? 2 : 0
    }' "$kept" "$build/counted.txt"
