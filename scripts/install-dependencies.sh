#!/usr/bin/env bash
# Installs what is missing of the Debian packages that the project needs.
# usage: scripts/install-dependencies.sh [demo|test|all|bench|portability|packages]...
#   demo   build the driver, the host and the simulated PLC, with Qt 5 (default)
#   test   and the tests
#   all    and Qt 6, coverage, clang with its checks and fuzzer, cppcheck, valgrind
#   bench  what test has, and what scripts/bench.sh, bench-plot.sh and instructions.sh need
#   portability   what scripts/portability.sh needs
#   packages      what demo has, and what scripts/packages.sh needs with each option
# Exit status: 0 all is there, 1 usage, else apt's.
set -euo pipefail
. "$(dirname "$0")/common.sh"

demo_packages=(g++ cmake ninja-build pkg-config qtbase5-dev libqt5serialport5-dev libmodbus-dev
    libcli11-dev libpcap-dev libmicrohttpd-dev libsqlite3-dev libtomlplusplus-dev
    libjs-dygraphs libmosquitto-dev libssl-dev libprotobuf-dev protobuf-compiler mosquitto
    mosquitto-clients)
test_packages=(binutils curl systemd libgtest-dev librapidcheck-dev python3-pymodbus python3-serial
    python3-serial-asyncio tmux tshark wireshark-common procps iproute2 util-linux doxygen man-db
    groff-base clang-format git patch chromium chromium-driver python3-selenium
    python3-prometheus-client python3-paho-mqtt python3-protobuf openssl rabbitmq-server)
all_packages=(qt6-base-dev qt6-serialport-dev gcovr clang clang-tidy libclang-rt-14-dev llvm
    cppcheck valgrind)
bench_packages=(libbenchmark-dev libqt5serialbus5-dev gnuplot-nox valgrind)
portability_packages=(cmake ninja-build pkg-config protobuf-compiler python3 debootstrap qemu-user util-linux
    g++-arm-linux-gnueabihf g++-aarch64-linux-gnu g++-i686-linux-gnu g++-s390x-linux-gnu)
package_packages=(debhelper dpkg-dev qt6-base-dev lintian debootstrap git gzip util-linux qemu-user)

[ $# -gt 0 ] || set -- demo
packages=()
for name in "$@"; do
    case "$name" in
    demo) packages+=("${demo_packages[@]}") ;;
    test) packages+=("${demo_packages[@]}" "${test_packages[@]}") ;;
    all) packages+=("${demo_packages[@]}" "${test_packages[@]}" "${all_packages[@]}") ;;
    bench) packages+=("${demo_packages[@]}" "${test_packages[@]}" "${bench_packages[@]}") ;;
    portability) packages+=("${portability_packages[@]}") ;;
    packages) packages+=("${demo_packages[@]}" "${package_packages[@]}") ;;
    *) usage ;;
    esac
done

missing=()
for package in $(printf '%s\n' "${packages[@]}" | sort -u); do
    dpkg-query -W -f '${Status}' "$package" 2>/dev/null | grep -q '^install ok installed$' ||
        missing+=("$package")
done
[ ${#missing[@]} -gt 0 ] || exit 0

echo "installing: ${missing[*]}"
as_root apt-get update -q
as_root env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
