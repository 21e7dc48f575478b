#!/usr/bin/env bash
# Builds the driver's benchmarks with optimisation, runs them beside other Modbus software, and
# prints one table of what was measured and what the goal is, all of one run. Writes it to
# bench/RESULTS.md with the machine's description and bench/history.md, and the growth curves to
# build/bench/growth.dat for scripts/bench-plot.sh.
# usage: scripts/bench.sh [REPETITIONS]
#   REPETITIONS   of each benchmark, 1 to 100; the fastest counts (default 9)
# It wants the machine for itself. Needs the packages of scripts/install-dependencies.sh bench.
# Exit status: 0 all goals kept, 1 usage, build failure or a missed goal, 2 a benchmark failed, 3 all
# goals kept, but other Modbus software was not there to measure: its row says so.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

build=build/bench
qt=5
python=/usr/bin/python3 # the one that Debian's pymodbus is for
repetitions=${1:-9}
[[ $# -le 1 && $repetitions =~ ^[1-9][0-9]?$|^100$ ]] || usage

build_benchmarks() {
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQT_MAJOR=$qt -DKAKB_BUILD_BENCH=ON &&
        cmake --build "$build" --target driver driverBench footprint
}

run_benchmarks() {
    # The heap is not handed back between two runs of a benchmark: the next one would pay for it.
    MALLOC_TRIM_THRESHOLD_=1000000000 MALLOC_TOP_PAD_=16777216 "$build/bin/driverBench" \
        --benchmark_min_time=0.03 --benchmark_repetitions="$repetitions" \
        --benchmark_enable_random_interleaving=true \
        --benchmark_out="$build/times.json" --benchmark_out_format=json
}

measure_footprint() {
    local library=$build/libquorvane_ka_kb_plc.so
    strip --strip-unneeded -o "$build/stripped.so" "$library"
    "$build/bin/footprint" "$library"
    echo "stripped_bytes $(stat -c %s "$build/stripped.so")"
}

describe_machine() {
    local package version
    echo "- processor: $(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -1), $(nproc) of it"
    echo "- kernel: $(uname -sr)"
    echo "- compiler: $("${CXX:-c++}" --version | head -1), Release"
    for package in qtbase5-dev libqt5serialbus5-dev libmodbus-dev libbenchmark-dev python3-pymodbus; do
        version=$(dpkg-query -W -f '${Version}' "$package" 2>/dev/null) || version="not there"
        echo "- $package: $version"
    done
}

mkdir -p "$build"
build_benchmarks >"$build/build.log" 2>&1 || {
    cat "$build/build.log"
    exit 1
}
run_benchmarks >"$build/run.log" 2>&1 || {
    cat "$build/run.log"
    exit 2
}
measure_footprint >"$build/footprint.txt"
"$python" bench/peers/pymodbusExchange.py >"$build/pymodbus.txt" || : >"$build/pymodbus.txt"

status=0
"$python" bench/table.py "$build/times.json" "$build/footprint.txt" "$build/pymodbus.txt" \
    "$build/growth.dat" >"$build/table.md" || status=$?
[ $status -ne 2 ] || exit 2
{
    echo "# What the driver takes"
    echo
    echo "Written by \`scripts/bench.sh\`. Processor time, the fastest of $repetitions repetitions in one"
    echo "run; libmodbus is its RTU client on a socket pair whose replies lie there already."
    echo
    cat "$build/table.md"
    echo
    echo "Measured on"
    echo
    describe_machine
    echo
    cat bench/history.md
} >bench/RESULTS.md
cat "$build/table.md"
exit $status
