#!/usr/bin/env bash
# Installs what is missing, builds, and runs the tests.
# usage: ./test.sh [--qt6 | --sanitize | --threads | --coverage | --format | --all]
#   (none)       with Qt 5
#   --qt6        with Qt 6
#   --sanitize   with the address and undefined-behaviour sanitizers
#   --threads    what runs on several threads, with the thread sanitizer
#   --coverage   the driver with line and branch counts; fails below 100 % of lines or 95 % of branches
#   --format     only checks the sources' format
#   --all        all of these
# Exit status: 0 all passed, 1 usage or a failure.
set -euo pipefail
cd "$(dirname "$0")"

run_tests() {
    echo "== $1 =="
    cmake --preset "$1" -DKAKB_BUILD_TESTS=ON
    cmake --build --preset "$1"
    ctest --preset "$1"
}

check_format() {
    echo "== format =="
    git ls-files '*.h' '*.cpp' | xargs clang-format --dry-run -Werror
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
--format)
    scripts/install-dependencies.sh all
    check_format
    ;;
--all)
    scripts/install-dependencies.sh all
    check_format
    run_coverage
    run_tests sanitize
    run_tests threads
    run_tests qt6
    run_tests qt5
    ;;
*)
    sed -n '2,12s/^# //p' "$0"
    exit 1
    ;;
esac
