#!/usr/bin/env bash
# usage: consumeInstalledTree.sh BUILD_DIR PROJECT COMPILER SANITIZERS QT_MAJOR
# Installs the build into an empty folder and builds and runs a consumer against that folder alone,
# once through the CMake package and once through pkg-config. Builds the example hosts, too, and loads
# the driver by its path and by its name.
set -euo pipefail

compiler=$3
qt=qt$5
consumer=$2/tests/package/consumer
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root
cmake --install "$1" --prefix "$root" >"$work/log" || { cat "$work/log"; exit 1; }

flags=()
[ -z "$4" ] || flags=("-fsanitize=$4")

# needs FILE LIBRARY: the library is among those that the file names.
needs() {
    readelf -d "$1" | grep -qF "(NEEDED)             Shared library: [$2]" ||
        { echo "$1 does not need $2:"; readelf -d "$1"; exit 1; }
}

# build_with_cmake SOURCE NAME
build_with_cmake() {
    cmake -S "$1" -B "$work/$2" -G Ninja "-DCMAKE_CXX_COMPILER=$compiler" \
        "-DCMAKE_PREFIX_PATH=$root" "-DCMAKE_CXX_FLAGS=${flags[*]:-}"
    cmake --build "$work/$2"
}

build_with_cmake "$consumer" consumer
"$work/consumer/consumer"
"$work/consumer/lineConsumer"
echo "built and run through the CMake package"

pc=$(dirname "$(find "$root" -name "quorvane_ka_kb_plc-$qt.pc")")
export PKG_CONFIG_PATH="$pc"
libdir=$(pkg-config --variable=libdir "quorvane_ka_kb_plc-$qt")

# build_with_pkg_config PACKAGE SOURCE PROGRAM
build_with_pkg_config() {
    local cflags libs
    read -ra cflags <<<"$(pkg-config --cflags "$1")"
    read -ra libs <<<"$(pkg-config --libs "$1")"
    "$compiler" -std=c++17 -fPIC "${flags[@]}" "${cflags[@]}" "$consumer/$2" "${libs[@]}" -o "$3"
}

build_with_pkg_config "quorvane_ka_kb_plc-$qt" consumer.cpp "$work/by-pkg-config"
needs "$work/by-pkg-config" "libquorvane_ka_kb_plc-$qt.so.1"
LD_LIBRARY_PATH="$libdir" "$work/by-pkg-config"
build_with_pkg_config "quorvane_ka_kb_line-$qt" lineConsumer.cpp "$work/line-by-pkg-config"
"$work/line-by-pkg-config"
for package in quorvane_ka_kb_plc quorvane_ka_kb_line; do
    diff <(pkg-config --cflags --libs "$package") <(pkg-config --cflags --libs "$package-$qt") ||
        { echo "$package is not $package-$qt for pkg-config"; exit 1; }
done
echo "built and run through pkg-config"

# The name that is not of a Qt leads to the panels' file, and a host linked by it needs the version.
read -ra cflags <<<"$(pkg-config --cflags "quorvane_ka_kb_plc-$qt")"
read -ra libs <<<"$(pkg-config --libs "Qt$5Core")"
"$compiler" -std=c++17 -fPIC "${flags[@]}" "${cflags[@]}" "$consumer/consumer.cpp" \
    "-L$libdir" -lquorvane_ka_kb_plc "${libs[@]}" -o "$work/by-plain-name"
needs "$work/by-plain-name" "libquorvane_ka_kb_plc-$qt.so.1"
LD_LIBRARY_PATH="$libdir" "$work/by-plain-name"
echo "built and run by the plain name"

panels_file=$(pkg-config --variable=driverdir "quorvane_ka_kb_plc-$qt")/libquorvane_ka_kb_plc.so
[ ! -L "$panels_file" ] || { echo "$panels_file is a link"; exit 1; }
[ "$(readlink "$libdir/libquorvane_ka_kb_plc.so")" = "quorvane-ka-kb/$qt/libquorvane_ka_kb_plc.so" ] ||
    { echo "the plain name is not a link to the panels' file"; ls -l "$libdir"; exit 1; }

build_with_cmake "$2/docs/examples" examples
needs "$work/examples/carefulHost" "libquorvane_ka_kb_plc-$qt.so.1"
if readelf -d "$work/examples/loadedDriver" | grep quorvane; then
    echo "the example that loads the driver needs it to start"
    exit 1
fi
"$work/examples/loadedDriver" "$panels_file"
LD_LIBRARY_PATH="$libdir" "$work/examples/loadedDriver" quorvane_ka_kb_plc
echo "built the example hosts, and loaded the driver by its path and by its name"
