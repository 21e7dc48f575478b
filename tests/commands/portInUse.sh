#!/usr/bin/env bash
# usage: portInUse.sh PROGRAM_FOLDER
# A serial port belongs to one program at a time, by whatever name it is opened, and whether the other
# program is a host or one that locks it with flock.
source "$(dirname "$0")/common.sh" "$1"

startPlc pty
port=$(readlink -f "$work/plc")
ln -s "$work/plc" "$work/another-name"

# isRefused: under both names
isRefused() {
    for name in "$work/plc" "$work/another-name" "$port"; do
        expect 3 host read MW100 --link "serial:$name"
        saysOneSentence
        errorIs "kakb-host: $name: in use by another program"
    done
}

printf '%s\n' name,station,area,address,type word,1,MW,100,uint16 >"$work/tags.csv"
"$programs/kakb-host" watch --tags "$work/tags.csv" --link "serial:$work/another-name" \
    >"$work/watched" </dev/null &
watcher=$!
eventually 20 hasLine "$work/watched" || fail "the watch shows nothing"
isRefused
killQuietly "$watcher"
watcher=
expect 0 host read MW100 --link "serial:$work/plc"

exec 9<>"$port"
flock 9
isRefused
flock -u 9
expect 0 host read MW100 --link "serial:$work/another-name"

# A host lets go of it at its end.
flock -n 9 || fail "the lock stays"
exec 9>&-
stopPlc
