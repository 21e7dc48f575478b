#!/usr/bin/env bash
# Builds the Debian source package, and from it, in a clean folder, the packages of the driver, its
# development files and the tools. Has lintian look at all of them.
# usage: scripts/packages.sh [--check | --arch armhf|arm64]
#   --check   and install them with apt on a fresh Debian 12 in build/fresh-debian, look there for
#             what belongs to the tools, watch the simulated PLC for 5 seconds, start the station, and
#             build hosts with Qt 5 and with Qt 6
#   --arch    cross-build them for 32-bit or 64-bit ARM instead, in a Debian 12 with the cross compiler
#             that is made once in build/cross-debian, and run kakb-host and kakb-station under qemu
# The packages are in build/packages, those of --arch in build/packages/ARCH. Needs the packages of
# scripts/install-dependencies.sh packages; --check and --arch need root or sudo for chroot.
# Exit status: 0 done, 1 usage, 2 they do not build, 3 lintian has an error or a warning, 4 no fresh
#   Debian, 5 they do not install, or not all that belongs to the tools, 6 kakb-host or kakb-station does not
#   run, 7 a host does not build or run, or gets no dependency on the driver's package.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."
. scripts/debianRoot.sh
. scripts/packageCheck.sh

packages=build/packages
jobs=${JOBS:-$(nproc)}
arch=

case "$#${1:+ $1}" in
0 | '1 --check') ;;
'2 --arch') arch=$2 ;;
*) usage ;;
esac
[[ -z $arch || $arch == armhf || $arch == arm64 ]] || usage

# The files that git knows or would take, without the debian folder, as the source package wants them.
upstream_files() {
    git ls-files -z --cached --others --exclude-standard -- . ':!debian' |
        while IFS= read -r -d '' file; do [ ! -e "$file" ] || printf '%s\0' "$file"; done
}

# The files' time in the source package is that of the changelog, so that each build makes the same;
# but never a time to come, which ninja takes for a change without end.
source_time() {
    local released now
    released=$(dpkg-parsechangelog -S Timestamp)
    now=$(date +%s)
    echo $((released < now ? released : now))
}

# build_source FOLDER: the source package.
build_source() {
    local version upstream name
    version=$(dpkg-parsechangelog -S Version)
    upstream=${version%-*}
    name=quorvane-ka-kb-$upstream
    mkdir -p "$1/$name" &&
        upstream_files | tar --null -T - --transform "s,^,$name/," --sort=name --owner=0 --group=0 \
            --numeric-owner --mtime="@$(source_time)" -c |
        gzip -9n >"$1/quorvane-ka-kb_$upstream.orig.tar.gz" &&
        tar -xzf "$1/quorvane-ka-kb_$upstream.orig.tar.gz" -C "$1" &&
        git ls-files -z --cached --others --exclude-standard -- debian |
        tar --null -T - -c | tar -x -C "$1/$name" &&
        (cd "$1" && dpkg-source -b "$name") &&
        rm -r "${1:?}/$name"
}

# build_packages FOLDER: what a user does who has nothing but the source package.
build_packages() {
    (cd "$1" &&
        dpkg-source -x ./*.dsc clean &&
        cd clean &&
        dpkg-buildpackage -us -uc -b "-j$jobs") &&
        rm -r "$1/clean"
}

# The former packages go when all new ones are there.
build_all() {
    local work=$packages.work
    rm -rf "$work"
    build_source "$work" &&
        build_packages "$work" &&
        mkdir -p "$packages" &&
        find "$packages" -maxdepth 1 -type f -delete &&
        mv "$work"/* "$packages" &&
        rmdir "$work"
}

# cross_build ARCH: dpkg-buildpackage in a Debian that has the libraries of both processors.
cross_build() {
    local root=build/cross-debian/$1 work=$packages-$1.work
    as_root rm -rf --one-file-system "$work" "$root.work" || return 1
    if [ ! -d "$root" ]; then
        copy_of_bare_debian "$root.work" && as_root mv "$root.work" "$root" || return 1
    fi
    build_source "$work" || return 1
    as_root rm -rf --one-file-system "$root/build" &&
        as_root cp -r "$work" "$root/build" || return 1
    inside "$root" "dpkg --add-architecture $1
        apt-get update -q
        apt-get install -q -y --no-install-recommends dpkg-dev crossbuild-essential-$1
        cd /build
        apt-get build-dep -q -y --no-install-recommends -P cross,nocheck -a $1 ./*.dsc
        dpkg-source -x ./*.dsc clean
        cd clean
        dpkg-buildpackage -us -uc -b -a $1 -Pcross,nocheck -j$jobs" || return 1
    mkdir -p "$packages/$1" &&
        find "$packages/$1" -type f -delete &&
        cp "$root"/build/*_"$1".* "$packages/$1" &&
        as_root rm -rf --one-file-system "$work" "$root/build"
}

# run_crossed ARCH: the programs of the packages, under qemu, with the libraries they were built with.
run_crossed() {
    local root=build/cross-debian/$1 unpacked=$packages-$1.unpacked emulator=qemu-arm
    [ "$1" != arm64 ] || emulator=qemu-aarch64
    rm -rf "$unpacked"
    for package in "$packages/$1"/*qt5-1_*.deb "$packages/$1"/*tools_*.deb \
        "$packages/$1"/*station_*.deb; do
        dpkg-deb -x "$package" "$unpacked" || return 1
    done
    "$emulator" -L "$root" "$unpacked/usr/bin/kakb-host" info | tee /dev/stderr |
        grep -q '^protocol  *quorvane_ka_kb_plc' &&
        "$emulator" -L "$root" "$unpacked/usr/bin/kakb-station" --check \
            --config "$unpacked/etc/kakb-station/station.toml" && rm -r "$unpacked"
}

# step STATUS NAME COMMAND...
step() {
    logged "$1" "$packages-$2.log" "${@:3}"
    echo "$2: done, $took s"
}

look() {
    lintian --fail-on error,warning --tag-display-limit 0 --info "$@"
}

if [ -n "$arch" ]; then
    step 2 "build-$arch" cross_build "$arch"
    ls -l "$packages/$arch"/*.deb
    step 3 "lintian-$arch" look "$packages/$arch"/*.changes
    step 6 "run-$arch" run_crossed "$arch"
    exit 0
fi
step 2 build build_all
ls -l "$packages"/*.deb "$packages"/*.dsc
step 3 lintian look "$packages"/*.dsc "$packages"/*.changes
[ $# -gt 0 ] || exit 0
step 4 fresh make_fresh_debian
step 5 install install_tools
step 5 tools look_at_tools
step 6 watch watch_tags
step 6 station watch_station
step 7 hosts build_hosts
