# shellcheck shell=bash disable=SC2154
# What scripts/packages.sh --check does on a fresh Debian; sourced by it.

fresh=build/fresh-debian/root

# The packages lie beside the system, and the sources of hosts.
make_fresh_debian() {
    as_root rm -rf --one-file-system "$fresh" &&
        copy_of_bare_debian "$fresh" &&
        as_root mkdir "$fresh/packages" &&
        as_root cp "$packages"/*.deb "$fresh/packages" &&
        as_root cp -r tests/package/consumer "$fresh/packages"
}

# A driver of the package that had another name gives way.
install_tools() {
    inside "$fresh" 'apt-get update -q
        folder=/tmp/former$(dirname /usr/lib/*/libc.so.6)
        mkdir -p /tmp/former/DEBIAN "$folder"
        echo former >"$folder/libquorvane_ka_kb_plc.so"
        printf "Package: libquorvane-ka-kb-plc\nVersion: 0.9.0-1\nArchitecture: all\n%s\n%s\n" \
            "Maintainer: nobody <nobody@quorvane.example>" "Description: former driver" \
            >/tmp/former/DEBIAN/control
        dpkg-deb --build /tmp/former /tmp/former.deb
        dpkg --install /tmp/former.deb
        apt-get install -q -y --no-install-recommends \
            /packages/libquorvane-ka-kb-plc-qt5-1_*.deb /packages/quorvane-ka-kb-tools_*.deb \
            /packages/quorvane-ka-kb-station_*.deb curl
        [ "$(dpkg-query -W -f "\${db:Status-Status}" libquorvane-ka-kb-plc)" != installed ]'
}

# Manual pages, completion that bash can load, the tag file, and programs of the package's version.
look_at_tools() {
    inside "$fresh" 'set -x
        version=$(dpkg-query -W -f "\${source:Upstream-Version}" quorvane-ka-kb-tools)
        for tool in kakb-host kakb-sim kakb-station; do
            [ "$($tool --version)" = "$tool $version" ]
            gzip -dc /usr/share/man/man1/$tool.1.gz | grep -i "^\.TH $tool 1 .* $version\""
            . /usr/share/bash-completion/completions/$tool
            complete -p $tool
        done
        grep -q ^name,station,area,address,type /usr/share/quorvane-ka-kb/tags.csv
        # The plain name leads to the file of Qt 5 in its own folder.
        libraries=$(dirname /usr/lib/*/libc.so.6)
        [ "$(readlink -f $libraries/libquorvane_ka_kb_plc.so)" = \
            $libraries/quorvane-ka-kb/qt5/libquorvane_ka_kb_plc.so ]'
}

watch_tags() {
    inside "$fresh" 'cd /; kakb-host info
        kakb-host watch --seconds 5 | tee /packages/watched
        grep -q "  fill level  IW0 = " /packages/watched
        grep -q "  give-ups 0 " /packages/watched'
}

# The station as its service starts it: the page and good values, and an end on request.
watch_station() {
    inside "$fresh" 'cd /
        STATE_DIRECTORY=/tmp/state kakb-station --config /etc/kakb-station/station.toml \
            >/packages/station &
        trap "kill $!" ERR
        until grep ^http /packages/station; do
            kill -0 $!
            sleep 0.1
        done
        curl --silent --fail http://127.0.0.1:8480/ >/packages/page
        grep data-stream /packages/page
        curl --silent --fail-with-body --retry 10 --retry-delay 1 http://127.0.0.1:8480/healthz
        curl --silent --fail http://127.0.0.1:8480/api/v1/values | tee /packages/values
        grep -q "\"quality\":\"good\"" /packages/values
        kill $!
        wait $!
        grep -q ^ExecStart=/usr/bin/kakb-station /usr/lib/systemd/system/kakb-station.service'
}

# Both drivers beside each other, and for each Qt: the consumers through CMake and pkg-config, the
# example hosts of the package, a host that loads the driver, and the dependency that a package of a
# host gets.
build_hosts() {
    inside "$fresh" 'apt-get install -q -y --no-install-recommends g++ cmake make pkg-config dpkg-dev \
            qtbase5-dev qt6-base-dev /packages/libquorvane-ka-kb-plc-*.deb
        libraries=/usr/lib/$(dpkg-architecture -q DEB_HOST_MULTIARCH)
        version=$(dpkg-query -W -f "\${source:Upstream-Version}" libquorvane-ka-kb-plc-dev)
        mkdir -p /tmp/dependent/debian/panel/usr/bin
        printf "Source: panel\n\nPackage: panel\nArchitecture: any\n" >/tmp/dependent/debian/control
        for qt in 5 6; do
            set -x
            cmake -S /packages/consumer -B /tmp/consumer$qt -DQT_DEFAULT_MAJOR_VERSION=$qt
            cmake --build /tmp/consumer$qt
            /tmp/consumer$qt/consumer
            /tmp/consumer$qt/lineConsumer

            cmake -S /usr/share/doc/libquorvane-ka-kb-plc-dev/examples -B /tmp/examples$qt \
                -DQT_DEFAULT_MAJOR_VERSION=$qt
            cmake --build /tmp/examples$qt
            /tmp/examples$qt/loadedDriver $libraries/quorvane-ka-kb/qt$qt/libquorvane_ka_kb_plc.so

            g++ -std=c++17 -fPIC /packages/consumer/consumer.cpp \
                $(pkg-config --cflags --libs quorvane_ka_kb_plc-qt$qt) -o /tmp/by-pkg-config
            /tmp/by-pkg-config

            cd /tmp/dependent
            for host in /tmp/consumer$qt/consumer /tmp/by-pkg-config /tmp/examples$qt/carefulHost; do
                cp $host debian/panel/usr/bin/host
                dpkg-shlibdeps -O debian/panel/usr/bin/host | tee /tmp/depends
                grep -F "libquorvane-ka-kb-plc-qt$qt-1 (>= $version)" /tmp/depends
            done
        done
        # By its name, as the panels that are built with Qt 5 open it.
        /tmp/examples5/loadedDriver quorvane_ka_kb_plc
        # By the name that is not of a Qt, which is that of Qt 5.
        g++ -std=c++17 -fPIC /packages/consumer/consumer.cpp $(pkg-config --cflags Qt5Core) \
            -lquorvane_ka_kb_plc -lQt5Core -o /tmp/by-plain-name
        /tmp/by-plain-name
        cp /tmp/by-plain-name debian/panel/usr/bin/host
        dpkg-shlibdeps -O debian/panel/usr/bin/host | tee /tmp/depends
        grep -F "libquorvane-ka-kb-plc-qt5-1 (>= $version)" /tmp/depends'
}
