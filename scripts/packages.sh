#!/usr/bin/env bash
# Builds the Debian packages of the driver library, its development files and the tools, and has
# lintian look at them.
# usage: scripts/packages.sh [--check]
#   --check   and install them with apt on a fresh Debian 12 in build/fresh-debian, look there for
#             what belongs to the tools, watch the simulated PLC for 5 seconds, and build a consumer
# Builds in build/packages, where the .deb files are. Needs the packages of
# scripts/install-dependencies.sh packages; --check needs root or sudo for chroot.
# Exit status: 0 done, 1 usage, 2 they do not build, 3 lintian has an error or a warning, 4 no fresh
#   Debian, 5 they do not install, or not all that belongs to the tools, 6 kakb-host does not watch,
#   7 the consumer does not build or run.
set -euo pipefail
. "$(dirname "$0")/common.sh"
cd "$(dirname "$0")/.."

build=build/packages
fresh=build/fresh-debian
jobs=${JOBS:-$(nproc)}

[[ $# -eq 0 || ($# -eq 1 && $1 == --check) ]] || usage

build_packages() {
    export CXXFLAGS LDFLAGS DEB_BUILD_MAINT_OPTIONS=hardening=+all
    CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)"
    LDFLAGS=$(dpkg-buildflags --get LDFLAGS)
    rm -f "$build"/*.deb
    cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DQT_MAJOR=5 \
        -DCMAKE_INSTALL_PREFIX=/usr -DKAKB_BUILD_TESTS=OFF &&
        cmake --build "$build" --parallel "$jobs" &&
        (cd "$build" && cpack)
}

# A bare Debian, made once, and a copy of it with the packages beside, made for each check.
make_fresh_debian() {
    local bare=$fresh/bare root=$fresh/root
    if [ ! -d "$bare" ]; then
        as_root rm -rf --one-file-system "$fresh"
        mkdir -p "$fresh"
        as_root debootstrap --variant=minbase $debian_release "$PWD/$bare.work" \
            "$(debian_mirror)" || return 1
        as_root mv "$bare.work" "$bare"
    fi
    as_root rm -rf --one-file-system "$root"
    as_root cp -a "$bare" "$root" &&
        as_root mkdir "$root/packages" &&
        as_root cp "$build"/*.deb "$root/packages" &&
        as_root cp -r tests/package/consumer "$root/packages" &&
        as_root cp /etc/resolv.conf /etc/hosts "$root/etc"
}

# inside COMMAND: in the fresh Debian, whose mounts end with the command.
inside() {
    as_root unshare --mount bash -c '
        mount --rbind /dev "$1/dev" && mount -t proc proc "$1/proc" &&
            exec chroot "$1" env -i PATH=/usr/sbin:/usr/bin HOME=/root LC_ALL=C.UTF-8 \
                DEBIAN_FRONTEND=noninteractive bash -eu -o pipefail -c "$2"' \
        inside "$PWD/$fresh/root" "$1"
}

install_tools() {
    inside 'apt-get update -q
        apt-get install -q -y --no-install-recommends \
            /packages/libquorvane-ka-kb-plc_*.deb /packages/quorvane-ka-kb-tools_*.deb'
}

# Manual pages, completion that bash can load, the tag file, and programs of the package's version.
look_at_tools() {
    inside 'set -x
        version=$(dpkg-query -W -f "\${source:Upstream-Version}" quorvane-ka-kb-tools)
        for tool in kakb-host kakb-sim; do
            [ "$($tool --version)" = "$tool $version" ]
            gzip -dc /usr/share/man/man1/$tool.1.gz | grep -i "^\.TH $tool 1 "
            . /usr/share/bash-completion/completions/$tool
            complete -p $tool
        done
        grep -q ^name,station,area,address,type /usr/share/quorvane-ka-kb/tags.csv'
}

watch_tags() {
    inside 'cd /; kakb-host info
        kakb-host watch --seconds 5 | tee /packages/watched
        grep -q "  fill level  IW0 = " /packages/watched
        grep -q "  give-ups 0 " /packages/watched'
}

build_consumer() {
    inside 'apt-get install -q -y --no-install-recommends g++ cmake make pkg-config \
            /packages/libquorvane-ka-kb-plc-dev_*.deb
        cmake -S /packages/consumer -B /tmp/consumer
        cmake --build /tmp/consumer
        /tmp/consumer/consumer
        g++ -std=c++17 -fPIC /packages/consumer/consumer.cpp \
            $(pkg-config --cflags --libs quorvane_ka_kb_plc) -o /tmp/by-pkg-config
        /tmp/by-pkg-config'
}

# step STATUS NAME COMMAND...
step() {
    logged "$1" "$build-$2.log" "${@:3}"
    echo "$2: done, $took s"
}

step 2 build build_packages
ls -l "$build"/*.deb
step 3 lintian lintian --fail-on error,warning --tag-display-limit 0 --info "$build"/*.deb
[ $# -gt 0 ] || exit 0
step 4 fresh make_fresh_debian
step 5 install install_tools
step 5 tools look_at_tools
step 6 watch watch_tags
step 7 consumer build_consumer
