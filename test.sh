#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests.
# usage: ./test.sh [--qt6 | --sanitize | --threads | --coverage | --memory | --fuzz | --static |
#                  --speed | --all]
#   (none)       with Qt 5
#   --qt6        with Qt 6
#   --sanitize   with the address and undefined-behaviour sanitizers
#   --threads    what runs on several threads, with the thread sanitizer
#   --coverage   the driver with line and branch counts; fails below 100 % of lines or 95 % of branches
#   --memory     the driver's unit tests under valgrind's memcheck
#   --fuzz       each fuzz target for a minute, with sanitizers
#   --static     clang-format, clang-tidy and cppcheck
#   --speed      instructions an exchange, at most 5 % more than bench/instructions.txt says
#   --all        all of these
# Exit status: 0 all passed, 1 usage or a failure.
set -euo pipefail
cd "$(dirname "$0")"

FUZZ_SECONDS=60

run_tests() {
    echo "== $1 =="
    local began=$SECONDS
    cmake --preset "$1" -DKAKB_BUILD_TESTS=ON
    cmake --build --preset "$1"
    local built=$SECONDS
    ctest --preset "$1"
    echo "$1: built in $((built - began)) s, tested in $((SECONDS - built)) s"
}

run_script() {
    echo "== $* =="
    local began=$SECONDS
    "scripts/$@"
    echo "$1: $((SECONDS - began)) s"
}

run_coverage() {
    find build/coverage -name '*.gcda' -delete 2>/dev/null || true
    run_tests coverage
    # Branches that only an exception takes are not counted: nothing in the driver throws.
    gcovr --root . --object-directory build/coverage \
        --filter include/ --filter device/ --filter service/ \
        --exclude-throw-branches --exclude-unreachable-branches \
        --print-summary --fail-under-line 100 --fail-under-branch 95 build/coverage
}

case "${1:-}" in
"")
    scripts/install-dependencies.sh test
    run_tests qt5
    ;;
--qt6)
    scripts/install-dependencies.sh all
    run_tests qt6
    ;;
--sanitize)
    scripts/install-dependencies.sh test
    run_tests sanitize
    ;;
--threads)
    scripts/install-dependencies.sh test
    run_tests threads
    ;;
--coverage)
    scripts/install-dependencies.sh all
    run_coverage
    ;;
--memory)
    scripts/install-dependencies.sh all
    run_script memcheck.sh
    ;;
--fuzz)
    scripts/install-dependencies.sh all
    run_script fuzz.sh all "$FUZZ_SECONDS"
    ;;
--static)
    scripts/install-dependencies.sh all
    run_script static-checks.sh
    ;;
--speed)
    scripts/install-dependencies.sh bench
    run_script instructions.sh
    ;;
--all)
    scripts/install-dependencies.sh all
    scripts/install-dependencies.sh bench
    run_script static-checks.sh
    run_script instructions.sh
    run_coverage
    # The fuzzers take their time whatever else runs.
    run_script memcheck.sh &
    memcheck=$!
    run_script fuzz.sh all "$FUZZ_SECONDS"
    wait "$memcheck"
    run_tests sanitize
    run_tests threads
    run_tests qt6
    run_tests qt5
    ;;
*)
    sed -n '2,16s/^# //p' "$0"
    exit 1
    ;;
esac
