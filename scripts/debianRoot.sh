# shellcheck shell=bash
# Debian systems in folders; sourced after common.sh. debootstrap and chroot need root or sudo.

bare_debian=build/fresh-debian/bare

# copy_of_bare_debian FOLDER: a bare Debian 12, which is made once, copied to a folder that must be new.
copy_of_bare_debian() {
    if [ ! -d "$bare_debian" ]; then
        as_root rm -rf --one-file-system "$bare_debian.work" || return 1
        mkdir -p "$(dirname "$bare_debian")"
        as_root debootstrap --variant=minbase "$debian_release" "$PWD/$bare_debian.work" \
            "$(debian_mirror)" &&
            as_root mv "$bare_debian.work" "$bare_debian" || return 1
    fi
    mkdir -p "$(dirname "$1")"
    as_root cp -a "$bare_debian" "$1" && as_root cp /etc/resolv.conf /etc/hosts "$1/etc"
}

# inside FOLDER COMMAND: the command runs in the Debian of the folder; its mounts end with the command.
# It has devices of its own: packages that are installed there change none of this machine.
inside() {
    as_root unshare --mount bash -eu -c '
        mount -t tmpfs -o mode=755 devices "$1/dev"
        for device in null zero full random urandom tty; do
            touch "$1/dev/$device"
            mount --bind "/dev/$device" "$1/dev/$device"
        done
        mkdir -m 1777 "$1/dev/shm"
        mkdir "$1/dev/pts"
        mount -t devpts -o newinstance,ptmxmode=666,mode=620 terminals "$1/dev/pts"
        ln -s pts/ptmx "$1/dev/ptmx"
        ln -s /proc/self/fd "$1/dev/fd"
        mount -t proc proc "$1/proc"
        exec chroot "$1" env -i PATH=/usr/sbin:/usr/bin HOME=/root LC_ALL=C.UTF-8 \
            DEBIAN_FRONTEND=noninteractive bash -eu -o pipefail -c "$2"' \
        inside "$(realpath "$1")" "$2"
}
