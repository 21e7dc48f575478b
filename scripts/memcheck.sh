#!/usr/bin/env bash
# Runs the unit tests under valgrind's memcheck, built without optimisation by the preset coverage.
# usage: scripts/memcheck.sh [GTEST_FILTER]
#   GTEST_FILTER   which tests (default: all but the tests of locks, which let accesses to a page
#                  fault on purpose: valgrind reports each fault as an error)
# Exit status: 0 no error and no leak, 1 usage, build failure, no test, a failing one, or not done in
# 900 s, 2 an error or a leak, which valgrind has printed.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

build=build/coverage
most_seconds=900
error_status=99

[ $# -le 1 ] && [[ ${1:-} != -* ]] || usage
filter=${1:-*-*Locks.*}

mkdir -p "$build"
{
    cmake --preset coverage -DKAKB_BUILD_TESTS=ON &&
        cmake --build --preset coverage --target unit_tests
} >"$build/memcheck.log" || {
    cat "$build/memcheck.log"
    exit 1
}

"$build/tests/unit_tests" --gtest_list_tests --gtest_filter="$filter" | grep '^  ' >/dev/null || {
    echo "no test matches $filter"
    exit 1
}

start=$SECONDS
status=0
timeout "$most_seconds" valgrind --quiet --leak-check=full --num-callers=25 \
    --errors-for-leak-kinds=definite,indirect,possible --show-leak-kinds=definite,indirect,possible \
    --error-exitcode=$error_status \
    "$build/tests/unit_tests" --gtest_brief=1 --gtest_filter="$filter" || status=$?
echo "memcheck: $((SECONDS - start)) s"
case "$status" in
0) exit 0 ;;
"$error_status") exit 2 ;;
124) echo "not done in $most_seconds s" ;;
esac
exit 1
