#!/usr/bin/env bash
# usage: consumeInstalledTree.sh BUILD_DIR CONSUMER_DIR COMPILER SANITIZERS
# Installs the build into an empty folder and builds and runs a consumer against that folder alone,
# once through the CMake package and once through pkg-config.
set -euo pipefail

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cmake --install "$1" --prefix "$work/root" >"$work/log" || { cat "$work/log"; exit 1; }

flags=()
[ -z "$4" ] || flags=("-fsanitize=$4")
cmake -S "$2" -B "$work/consumer" -G Ninja "-DCMAKE_CXX_COMPILER=$3" \
    "-DCMAKE_PREFIX_PATH=$work/root" "-DCMAKE_CXX_FLAGS=${flags[*]:-}"
cmake --build "$work/consumer"
"$work/consumer/consumer"
"$work/consumer/lineConsumer"
echo "built and run through the CMake package"

pc=$(dirname "$(find "$work/root" -name quorvane_ka_kb_plc.pc)")
export PKG_CONFIG_PATH="$pc"
libdir=$(pkg-config --variable=libdir quorvane_ka_kb_plc)
read -ra cflags <<<"$(pkg-config --cflags quorvane_ka_kb_plc)"
read -ra libs <<<"$(pkg-config --libs quorvane_ka_kb_plc)"
"$3" -std=c++17 -fPIC "${flags[@]}" "${cflags[@]}" "$2/consumer.cpp" "${libs[@]}" \
    -o "$work/by-pkg-config"
LD_LIBRARY_PATH="$libdir" "$work/by-pkg-config"
read -ra cflags <<<"$(pkg-config --cflags quorvane_ka_kb_line)"
read -ra libs <<<"$(pkg-config --libs quorvane_ka_kb_line)"
"$3" -std=c++17 -fPIC "${flags[@]}" "${cflags[@]}" "$2/lineConsumer.cpp" "${libs[@]}" \
    -o "$work/line-by-pkg-config"
"$work/line-by-pkg-config"
echo "built and run through pkg-config"
