#!/usr/bin/env bash
# Checks the sources without running them; prints what is found and how long each check took.
# usage: scripts/static-checks.sh [format|cppcheck|tidy|tidyTests]...
#   format     clang-format, by .clang-format
#   cppcheck   cppcheck, but for what scripts/cppcheckSuppressions.txt lists
#   tidy       clang-tidy of all but the tests, by .clang-tidy
#   tidyTests  clang-tidy of the tests, by tests/.clang-tidy: takes four times as long
#   (none)     all but tidyTests
# Works in build/static. JOBS files are looked at side by side (default: one a processor).
# Exit status: 0 nothing found, 1 usage or something found.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

jobs=${JOBS:-$(nproc)}
build=build/static
folders=(include device service line host station simulator bench docs/examples tests)

check_format() {
    find "${folders[@]}" -name '*.h' -o -name '*.cpp' | xargs clang-format --dry-run -Werror
}

# The C++ files that are built below the given folders.
built_files() {
    python3 - "$build/compile_commands.json" "$@" <<'END'
import json, os, sys

files = {os.path.relpath(entry["file"]) for entry in json.load(open(sys.argv[1]))}
print("\n".join(sorted(file for file in files if file.split("/")[0] in sys.argv[2:])))
END
}

# tidy FOLDER... [-- ARGUMENT...]: the arguments go to clang-tidy. What it says on the error output
# is how many warnings it did not show.
tidy() {
    local places=() files
    while [ $# -gt 0 ] && [ "$1" != -- ]; do
        places+=("$1")
        shift
    done
    files=$(built_files "${places[@]}") && [ -n "$files" ] || {
        echo "no files of ${places[*]} are built"
        return 1
    }
    echo "$(wc -l <<<"$files") files of ${places[*]}"
    xargs -P "$jobs" -I FILE clang-tidy -p "$build" --quiet "${@:2}" FILE 2>/dev/null <<<"$files"
}

configure() {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQT_MAJOR=5 \
        -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_DISABLE_PRECOMPILE_HEADERS=ON \
        -DKAKB_BUILD_BENCH=ON -DCMAKE_EXPORT_COMPILE_COMMANDS=ON >/dev/null &&
        cmake --build "$build" --target kakb_sparkplug_messages >/dev/null
}

# The analyser follows every path of the driver, and elsewhere fewer, to be done in minutes.
fewer_paths=(--extra-arg=-Xclang --extra-arg=-analyzer-config --extra-arg=-Xclang
    --extra-arg=mode=shallow)

check_tidy() {
    configure || return 1
    local found=0
    tidy device service || found=1
    tidy line host station simulator bench docs -- "${fewer_paths[@]}" || found=1
    return "$found"
}

check_tidyTests() {
    configure || return 1
    tidy tests -- "${fewer_paths[@]}"
}

check_cppcheck() {
    mkdir -p "$build/cppcheck"
    cppcheck -j "$jobs" --quiet --error-exitcode=1 --cppcheck-build-dir="$build/cppcheck" \
        --std=c++17 --language=c++ --library=qt,googletest,posix \
        --enable=warning,performance,portability --inline-suppr \
        --suppressions-list=scripts/cppcheckSuppressions.txt \
        -DQUORVANE_KA_KB_PLC_BUILD -I include -I device -I service -I line -I host -I station -I simulator \
        -I tests/support "${folders[@]}"
}

[ $# -gt 0 ] || set -- format cppcheck tidy
for check in "$@"; do
    case "$check" in
    format | cppcheck | tidy | tidyTests) ;;
    *) usage ;;
    esac
done

failed=0
for check in "$@"; do
    SECONDS=0
    if "check_$check"; then result=clean; else
        result=FOUND
        failed=1
    fi
    echo "$check: $result, $SECONDS s"
done
exit "$failed"
