#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests.
# usage: ./test.sh [--quick | --qt6 | --sanitize | --threads | --coverage | --memory | --fuzz | --static |
#                  --speed | --all]
#   (none)       with Qt 5
#   --quick      what needs no process and no waiting: under a minute where ./test.sh has built before
#   --qt6        with Qt 6
#   --sanitize   with the address and undefined-behaviour sanitizers
#   --threads    what runs on several threads, with the thread sanitizer
#   --coverage   the driver with line and branch counts; fails below 100 % of lines or 95 % of branches
#   --memory     the driver's unit tests under valgrind's memcheck
#   --fuzz       each fuzz target for half a minute, with sanitizers
#   --static     clang-format, clang-tidy and cppcheck
#   --speed      instructions an exchange, at most 5 % more than bench/instructions.txt says
#   --all        all of these
# Exit status: 0 all passed, 1 usage or a failure; else apt's, when packages cannot be installed.
set -euo pipefail
cd "$(dirname "$0")"
. scripts/common.sh

FUZZ_SECONDS=30
FUZZ_TARGETS_AT_ONCE=3

# build PRESET [OPTION...]
build() {
    local began=$SECONDS
    cmake --preset "$1" -DKAKB_BUILD_TESTS=ON && cmake --build --preset "$@" || return 1
    echo "$1: built in $((SECONDS - began)) s"
}

# What the tests that count or measure printed; ctest keeps it to itself.
print_figures() {
    ctest --preset "$1" -N -L 'proof|figures' |
        awk '
        NR == FNR { if ($1 == "Test") shown[$3] = 1; next }
        $2 == "Test:" { name = $3; is_shown = name in shown }
        /^<end of output>/ { output = 0 }
        is_shown && output && !/^(\[|Running|Note|Using|-+$|$)/ {
            if (name) print "-- " name
            name = ""
            print
        }
        $1 == "Output:" { output = 1 }' - "build/$1/Testing/Temporary/LastTest.log"
}

run_built_tests() {
    local began=$SECONDS
    echo "== $1 =="
    ctest --preset "$1" || return 1
    print_figures "$1"
    echo "$1: tested in $((SECONDS - began)) s"
}

run_tests() {
    build "$1"
    run_built_tests "$1"
}

run_quick() {
    local began=$SECONDS
    logged 1 build/quick.log build qt5 --target quick
    ctest --preset qt5 -L quick || return 1
    echo "quick: built in $took s, built and tested in $((SECONDS - began)) s"
}

run_script() {
    echo "== $* =="
    local began=$SECONDS
    "scripts/$@" || return 1
    echo "$1: $((SECONDS - began)) s"
}

run_coverage() {
    find build/coverage -name '*.gcda' -delete 2>/dev/null || true
    run_tests coverage
    # Branches that only an exception takes are not counted: nothing in the driver throws.
    gcovr --root . --object-directory build/coverage \
        --filter include/ --filter device/ --filter service/ \
        --exclude-throw-branches --exclude-unreachable-branches \
        --print-summary --fail-under-line 100 --fail-under-branch 95 build/coverage || return 1
}

# beside LOG COMMAND... -- COMMAND...: the first has what the second leaves of the processors, as
# tests wait more than they work. Fails when one of the two does.
beside() {
    local log=$1 status=0 first=()
    shift
    while [ "$1" != -- ]; do
        first+=("$1")
        shift
    done
    shift
    mkdir -p build
    (
        renice -n 19 "$BASHPID" >/dev/null
        "${first[@]}"
    ) >"$log" 2>&1 &
    "$@" || status=1
    wait $! || {
        status=1
        cat "$log"
        echo "FAILED: ${first[*]}"
    }
    tail -n 4 "$log"
    return "$status"
}

run_all() {
    build qt5
    run_quick
    beside build/all-sanitize.log build sanitize -- run_built_tests qt5
    beside build/all-qt6.log build qt6 -- run_built_tests sanitize
    beside build/all-threads.log build threads -- run_built_tests qt6
    beside build/all-static.log run_script static-checks.sh -- run_built_tests threads
    run_coverage
    # The fuzzers take their time whatever else runs.
    JOBS=$FUZZ_TARGETS_AT_ONCE beside build/all-memcheck.log run_script memcheck.sh -- \
        run_script fuzz.sh all "$FUZZ_SECONDS"
    run_script instructions.sh
}

case "${1:-}" in
"")
    scripts/install-dependencies.sh test
    run_tests qt5
    ;;
--quick)
    scripts/install-dependencies.sh test
    run_quick
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
    scripts/install-dependencies.sh all bench
    run_script static-checks.sh
    ;;
--speed)
    scripts/install-dependencies.sh bench
    run_script instructions.sh
    ;;
--all)
    scripts/install-dependencies.sh all bench
    run_all
    ;;
*) usage ;;
esac
echo "all passed in $SECONDS s"
