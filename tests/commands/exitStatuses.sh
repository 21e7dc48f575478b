#!/usr/bin/env bash
# usage: exitStatuses.sh PROGRAM_FOLDER
# Each kind of mistake has its own exit status and one sentence that says what it is.
source "$(dirname "$0")/common.sh" "$1"

usage() {
    expect 1 host "$@"
    [ -s "$work/err" ] && [ ! -s "$work/out" ] || { show; fail "nothing on standard error alone"; }
}

usage
errorHas '[Ss]ubcommand|verb'
usage nothing
usage read --nothing MW100
errorHas '--nothing'
usage recipe
usage recipe download
usage check MW
usage check MW 0 --count 0
errorHas '--count'
usage read MW0 --timeout-ms 5
errorHas '--timeout-ms'
usage read MW0 --attempts 0
usage watch
errorHas '--tags'
usage watch --tags "$demo_tags" --seconds -1
errorHas '--seconds'
for verb in "" info check series plan watch read write recipe "recipe download" "recipe upload"; do
    # shellcheck disable=SC2086 # words of a verb
    expect 0 host $verb --help
    outputHas '^Usage: kakb-host'
done

# badLink TEXT REGEX
badLink() {
    expect 1 host read MW100 --link "$1"
    saysOneSentence
    errorHas "$2"
}

badLink nothing 'the link "nothing" is not sim, serial:DEVICE or tcp:HOST,PORT'
badLink "" 'the link "" is not'
badLink sim:3 'plain "sim"'
badLink serial 'a serial link needs a device'
badLink serial: 'a serial link needs a device'
badLink serial:/dev/none,x 'the baud rate "x"'
badLink serial:/dev/none,9600,9 'the number of data bits "9"'
badLink serial:/dev/none,9600,8,MARK 'the parity "MARK" is not NONE, EVEN or ODD'
badLink serial:/dev/none,9600,8,NONE,3 'the number of stop bits "3"'
badLink serial:/dev/none,9600,8,NONE,1,5 'more parts than serial:DEVICE'
badLink tcp:127.0.0.1,0 'the port "0"'
badLink tcp:127.0.0.1,65536 'the port "65536"'
badLink tcp:127.0.0.1:502 'must follow a comma'
badLink tcp:127.0.0.1,502,3 'more parts than tcp:HOST,PORT'

# noLink TEXT REGEX
noLink() {
    for verb in "read MW100" "write MW100=1" "watch --tags $demo_tags"; do
        # shellcheck disable=SC2086 # a verb with its argument
        expect 3 host $verb --link "$1"
        saysOneSentence
        errorHas "$2"
        tookLessThan 10000
    done
}

noLink "serial:$work/none" 'none: No such file or directory'
noLink "serial:$work" 'Is a directory'
touch "$work/file"
noLink "serial:$work/file" 'file: .'
if [ "$(id -u)" -ne 0 ]; then
    chmod 0 "$work/file"
    noLink "serial:$work/file" 'Permission denied'
fi
# A port that was free a moment ago.
startPlc tcp
closed=$link
stopPlc
noLink "$closed" '127\.0\.0\.1, port [0-9]+: Connection refused'
expect 3 host read MW100 --simulator "$work/none"
saysOneSentence

expect 2 host --driver "$work/none.so" info
saysOneSentence
errorHas "$work/none\.so"
expect 2 host --driver "$work/file" read MW100
saysOneSentence

startPlc pty --silent 1
for verb in "read MW100" "read IX0.0" "write MW100=1" "write MX0.0=1"; do
    # shellcheck disable=SC2086 # a verb with its argument
    expect 4 host $verb --link "$link" --timeout-ms 300
    saysOneSentence
    errorHas 'station 1 does not answer$'
    tookLessThan 2000
done
stopPlc
startPlc pty --corrupt 1
expect 4 host read MW100 --link "$link" --timeout-ms 300
errorHas 'station 1 gave no usable answer$'
saysOneSentence
