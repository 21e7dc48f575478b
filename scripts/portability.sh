#!/usr/bin/env bash
# Builds the driver and its unit, model and property tests for another processor, with Debian's cross
# compiler and Qt 5, runs them under qemu, and compares the records with the documents.
# usage: scripts/portability.sh [--station] [armhf|arm64|i386|s390x]...|all
#   --station   and kakb-station and those of its tests that start no program, which takes minutes more
#   armhf   32-bit ARM, the usual panel (default)
#   arm64   64-bit ARM
#   i386    32-bit x86
#   s390x   big-endian, 64 bits
# Needs the packages of scripts/install-dependencies.sh portability, and root or sudo: for unshare, and for
# debootstrap, which makes build/sysroot/ARCH once from the mirror that apt uses; remove it to have it
# made anew.
# Builds in build/portability/ARCH.
# MODEL_CALLS (default 20000) and PROPERTY_CASES (default 100) are fewer than in a native run; with
# fewer than 100 cases a property may not come to all that it must.
# Exit status: 0 all passed, 1 usage, 2 no sysroot, 3 it does not build, 4 a test failed.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

known=(armhf arm64 i386 s390x)
model_calls=${MODEL_CALLS:-20000}
property_cases=${PROPERTY_CASES:-100}
jobs=${JOBS:-$(nproc)}
packages=qtbase5-dev,libgtest-dev,libmodbus-dev,libcli11-dev,librapidcheck-dev
# What the station needs as well.
packages+=,libqt5serialport5-dev,libpcap-dev,libmicrohttpd-dev,libsqlite3-dev,libsystemd-dev
packages+=,libmosquitto-dev,libssl-dev,libprotobuf-dev
packages+=,libtomlplusplus-dev,libjs-dygraphs
# What no compiler or test reads.
unneeded=(./usr/share/doc ./usr/share/locale ./usr/share/man ./usr/share/i18n ./usr/share/fonts
    ./usr/share/X11 ./etc ./var)

# unpack FOLDER: the packages downloaded below it, as on a system whose /lib is in /usr.
unpack() {
    local folder
    for folder in bin sbin lib; do
        mkdir -p "$1/root/usr/$folder"
        ln -s "usr/$folder" "$1/root/$folder"
    done
    local package
    for package in "$1"/downloaded/var/cache/apt/archives/*.deb; do
        dpkg-deb --fsys-tarfile "$package" |
            tar -x --keep-directory-symlink -C "$1/root" "${unneeded[@]/#/--exclude=}" || return 1
    done
}

# Links that start at the root would leave the sysroot.
make_links_relative() {
    local link
    find "$1" -type l -lname '/*' | while read -r link; do
        ln -sfnr "$1$(readlink "$link")" "$link"
    done
}

# sysroot ARCH: makes build/sysroot/ARCH, which appears when it is whole.
sysroot() {
    local made=build/sysroot/$1 work=build/sysroot/$1.work
    [ ! -d "$made" ] || return 0
    as_root rm -rf "$work"
    mkdir -p "$work/root"
    as_root debootstrap --download-only --arch="$1" --variant=minbase --include=$packages \
        $debian_release "$PWD/$work/downloaded" "$(debian_mirror)" &&
        unpack "$work" &&
        make_links_relative "$work/root" &&
        mv "$work/root" "$made" &&
        as_root rm -rf "$work"
}

build() {
    cmake -S . -B "build/portability/$1" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQT_MAJOR=5 \
        -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/crossBuild.cmake" -DKAKB_ARCH="$1" \
        -DKAKB_BUILD_KIT="$kit" -DKAKB_BUILD_TESTS=ON &&
        cmake --build "build/portability/$1" --parallel "$jobs" --target "${targets[@]}"
}

# Under qemu Qt's QProcess starts nothing, and goes on with the number of a process that was never set.
# So the tests that start a simulated PLC are left out, and nothing that a test kills can be a process
# of this machine.
unstartable='OwnSimulatorTest.*:LinkCommandsTest.*:LinkRecipesTest.*:LinkWritesTest.*'
unstartable+=':StationLinksTest.*:PlantThreadWithPlc.*:PlantThreadInBothDialects.*'
confined() {
    as_root unshare --pid --fork --kill-child --mount-proc --setgid "$(id -g)" --setuid "$(id -u)" "$@"
}

# The programs themselves, not ctest: to start one under qemu takes longer than most tests.
run_tests() {
    local tests=$PWD/build/portability/$1/tests emulator=qemu-$1
    case "$1" in
    armhf) emulator=qemu-arm ;;
    arm64) emulator=qemu-aarch64 ;;
    esac
    local program status=0 run=("$emulator" -L "$PWD/build/sysroot/$1")
    for program in "${programs[@]}"; do
        echo "$program"
        confined env KAKB_MODEL_CALLS="$model_calls" \
            RC_PARAMS="seed=20240611 max_success=$property_cases" \
            "${run[@]}" "$tests/$program" --gtest_brief=1 --gtest_filter="-$unstartable" || status=1
    done
    python3 -B tests/records/recordTable.py docs/integrating.md 5 \
        "${run[@]}" "$tests/records/recordLayout" || status=1
    return "$status"
}

try() {
    local sysroot_took build_took tests_log=build/portability/$1-tests.log
    logged 2 "build/portability/$1-sysroot.log" sysroot "$1"
    sysroot_took=$took
    logged 3 "build/portability/$1-build.log" build "$1"
    build_took=$took
    logged 4 "$tests_log" run_tests "$1"
    grep -E '^\[  PASSED  \]|^[0-9]+ (calls|places)' "$tests_log"
    echo "$1: all passed; sysroot $sysroot_took s, build $build_took s, tests $took s"
}

kit=OFF
targets=(driver unit_tests model_tests property_tests recordLayout)
programs=(unit_tests model/model_tests properties/property_tests)
if [ "${1:-}" = --station ]; then
    kit=ON
    targets+=(kakb-station station_tests station_threads_tests station_property_tests)
    programs+=(station/station_tests station/station_threads_tests station/station_property_tests)
    shift
fi
[ $# -gt 0 ] || set -- armhf
[ "$*" != all ] || set -- "${known[@]}"
for arch in "$@"; do
    [[ " ${known[*]} " == *" $arch "* ]] || usage
done
for arch in "$@"; do try "$arch"; done
