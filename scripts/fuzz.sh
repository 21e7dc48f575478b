#!/usr/bin/env bash
# Runs one fuzz target, or all of them, for some seconds each; builds into build/fuzz first.
# usage: scripts/fuzz.sh TARGET|all SECONDS
#        scripts/fuzz.sh TARGET|all --keep     keeps the fewest found inputs that reach as much
#   TARGET   replyFuzz, propertyTextFuzz, addressTextFuzz, keyListFuzz, callSequenceFuzz,
#            requestFuzz, apiRequestFuzz, commandPayloadFuzz or setPayloadFuzz
# A run starts from tests/fuzz/corpus/TARGET and what earlier runs found, which stays in
# build/fuzz/found/TARGET. JOBS targets, 1 or more, run side by side (default: one a processor).
# Exit status: 0 nothing found, or with --keep all kept, 1 usage or build failure, or a run without an
#   input in tests/fuzz/corpus/TARGET, 2 an input that breaks a rule, crashes, hangs or leaks (its file
#   and the command that repeats it are printed), or no input tried; with --keep: a target's inputs
#   could not be sorted out or none would be left, and its corpus stays as it was.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

targets=(replyFuzz propertyTextFuzz addressTextFuzz keyListFuzz callSequenceFuzz requestFuzz
    apiRequestFuzz commandPayloadFuzz setPayloadFuzz)
jobs=${JOBS:-$(nproc)}
build=build/fuzz
most_bytes=600
most_kept_bytes=120

build_all() {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
        -DQT_MAJOR=5 -DKAKB_FUZZ=ON -DKAKB_BUILD_TESTS=OFF -DKAKB_BUILD_KIT=OFF >"$1" &&
        cmake --build "$build" --target fuzzers >>"$1"
}

has_files() {
    [ -d "$1" ] && [ -n "$(find "$1" -type f -print -quit)" ]
}

# Directories to read inputs from, the one to add new ones to first.
inputs() {
    mkdir -p "$build/found/$1"
    echo "$build/found/$1"
    [ ! -d "tests/fuzz/corpus/$1" ] || echo "tests/fuzz/corpus/$1"
}

run() {
    local target=$1 seconds=$2 log=$build/$1.log tried
    mapfile -t dirs < <(inputs "$target")
    if "$build/tests/fuzz/$target" -max_total_time="$seconds" -max_len=$most_bytes -timeout=20 \
        -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$build/found/$target-" \
        "${dirs[@]}" >"$log" 2>&1; then
        tried=$(awk '/stat::number_of_executed_units/ { print $2 }' "$log")
        [[ $tried =~ ^[1-9] ]] || {
            echo "$target: no input tried; all that it said is in $log"
            return 2
        }
        echo "$target: $tried inputs in $seconds s, $(grep -o 'cov: [0-9]*' "$log" | tail -1)," \
            "nothing found"
        return 0
    fi
    grep -E 'rule broken|ERROR: |runtime error|SUMMARY' "$log" | head -5
    local file
    file=$(sed -n 's/.*Test unit written to //p' "$log" | tail -1)
    echo "$target: found ${file:-no input}; all that it said is in $log"
    [ -z "$file" ] || echo "again: $build/tests/fuzz/$target $file"
    return 2
}

keep() {
    local target=$1 kept=tests/fuzz/corpus/$1 fresh=$build/kept-$1
    mapfile -t dirs < <(inputs "$target")
    rm -rf "$fresh"
    mkdir -p "$fresh"
    "$build/tests/fuzz/$target" -set_cover_merge=1 -use_counters=0 -max_len=$most_kept_bytes \
        "$fresh" "${dirs[@]}" >"$build/$target.log" 2>&1 && has_files "$fresh" || {
        echo "$target: nothing kept; all that it said is in $build/$target.log"
        return 2
    }
    mkdir -p tests/fuzz/corpus
    rm -rf "$kept"
    cp -r "$fresh" "$kept"
    echo "$target: $(find "$kept" -type f | wc -l) files, $(cat "$kept"/* | wc -c) bytes in $kept"
}

[ $# -eq 2 ] || usage
if [ "$1" = all ]; then
    chosen=("${targets[@]}")
else
    chosen=("$1")
    [[ " ${targets[*]} " == *" $1 "* ]] || usage
fi
[[ $2 =~ ^[1-9][0-9]*$ || $2 = --keep ]] || usage
[[ $jobs =~ ^[1-9][0-9]*$ ]] || usage
if [ "$2" != --keep ]; then
    for target in "${chosen[@]}"; do
        has_files "tests/fuzz/corpus/$target" || {
            echo "no input in tests/fuzz/corpus/$target"
            exit 1
        }
    done
fi

mkdir -p "$build"
build_all "$build/build.log" || {
    cat "$build/build.log"
    exit 1
}

# Every JOBS-th of the chosen targets, from the given one on.
run_lane() {
    local status=0 place
    for ((place = $1; place < ${#chosen[@]}; place += jobs)); do
        run "${chosen[place]}" "$2" || status=2
    done
    return "$status"
}

status=0
if [ "$2" = --keep ]; then
    for target in "${chosen[@]}"; do keep "$target" || status=2; done
    exit "$status"
fi
lanes=()
for ((lane = 0; lane < jobs && lane < ${#chosen[@]}; lane++)); do
    run_lane "$lane" "$2" &
    lanes+=($!)
done
for lane in "${lanes[@]}"; do wait "$lane" || status=2; done
exit "$status"
