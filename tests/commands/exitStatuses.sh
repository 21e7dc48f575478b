#!/usr/bin/env bash
# usage: exitStatuses.sh PROGRAM_FOLDER
# Each kind of mistake has its own exit status and one sentence that says what it is.
source "$(dirname "$0")/common.sh" "$1"

# usage REGEX ARGUMENT...: one sentence that the regex describes, and where there is more to read
usage() {
    local regex=$1
    shift
    expect 1 host "$@"
    saysOneSentence
    errorHas "^kakb-host: $regex \(kakb-host .*--help says more\)$"
    ! grep -qi subcommand "$work/err" || { show; fail "it is called a verb"; }
}

verbs='info, check, series, plan, watch, read, write, recipe'
usage "a verb is missing: $verbs"
usage "there is no verb \"bogus\"; the verbs are $verbs" bogus
usage 'there is no verb "bogus"; .*' bogus --json
usage 'there is no option "--bogus"' --bogus
usage '.*--nothing.*' read --nothing MW100
usage '.*extra.*' info extra
usage 'a verb is missing: download, upload' recipe
errorHas '\(kakb-host recipe --help'
usage 'there is no verb "bogus"; the verbs are download, upload' recipe bogus
usage '.*FILE.*' recipe download
errorHas '\(kakb-host recipe download --help'
usage '.*ADDRESS.*' check MW
usage '.*--count.*' check MW 0 --count 0
usage '.*--timeout-ms.*' read MW0 --timeout-ms 5
usage '.*--attempts.*' read MW0 --attempts 0
usage '.*--echo.*' read MW0 --echo maybe
for number in -1 10000001 nan -nan inf x; do
    usage '.*--seconds.*' watch --tags "$demo_tags" --seconds $number
done
usage '.*--driver.*' --driver

for verb in "" info check series plan watch read write recipe "recipe download" "recipe upload"; do
    # shellcheck disable=SC2086 # words of a verb
    expect 0 host $verb --help
    outputHas '^Usage: kakb-host' '^Exit status:$' '^  0  done$' '^  1  usage' \
        '^  2  the driver' '^  3  the link' '^  4  a station did not answer$' '^  5  the PLC refused$' \
        '^  6  what was read back' '^  7  check, series: the address is not valid$' \
        '^  8  interrupted before it was done; a watch ends with 0$'
done

# Every bad line of a file, and each says whose complaint it is.
printf 'name,station,area,address,type\na,1,ZZ,0,bool\nb,1,MW,1,uint16\n' >"$work/bad.csv"
expect 1 host plan --tags "$work/bad.csv"
errorHas '^kakb-host: line 2: ' '^kakb-host: line 3: '
[ "$(wc -l <"$work/err")" = 2 ] || { show; fail "not a line for each bad one"; }

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

# Only of the simulated PLC it is known what is where.
for verb in plan watch; do
    for link in serial:/dev/none tcp:127.0.0.1,1; do
        expect 1 host $verb --link $link
        saysOneSentence
        errorHas '^kakb-host: --tags is required: '
    done
    expect 1 host $verb --link nothing
    saysOneSentence
    errorHas 'the link "nothing" is not'
done

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
noLink "serial:$work/file" "^kakb-host: $work/file is not a serial port$"
noLink serial:/dev/null '^kakb-host: /dev/null is not a serial port$'
# Root without its power over files is refused like any other user.
powerless=()
[ "$(id -u)" -ne 0 ] || powerless=(setpriv --bounding-set "-dac_override,-dac_read_search")
chmod 0 "$work/file"
expect 3 "${powerless[@]}" "$programs/kakb-host" read MW100 --link "serial:$work/file"
saysOneSentence
errorHas "$work/file: Permission denied$"
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
