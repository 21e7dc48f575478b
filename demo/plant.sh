#!/usr/bin/env bash
# The demo of a plant: a broker, a subscriber that prints, and two stations with a simulated PLC each.
# usage: plant.sh PROGRAM_FOLDER SECONDS
# Exit status: 0 the subscriber saw both stations come and go, 1 it did not.
set -euo pipefail
programs=$(cd "$1" && pwd)
seconds=$2

work=$(mktemp -d)
pids=()
end() {
    [ ${#pids[@]} -eq 0 ] || kill "${pids[@]}" 2>/dev/null || true
    wait
    rm -rf "$work"
}
trap end EXIT

# Debian has the broker where only root's path leads.
PATH=$PATH:/usr/sbin

takes_connections() {
    (: <>"/dev/tcp/127.0.0.1/$port") 2>/dev/null
}

start_broker() {
    for port in {18830..18899}; do
        takes_connections && continue
        mosquitto -p "$port" >"$work/broker" 2>&1 &
        pids=($!)
        for _ in {1..100}; do
            takes_connections && return
            kill -0 "${pids[0]}" 2>/dev/null || break
            sleep 0.05
        done
    done
    echo "no broker could be started" >&2
    return 1
}

# start_station NODE: its page gets any free port.
start_station() {
    "$programs/kakb-station" --listen 127.0.0.1:0 --pace 1s --state "$work/$1" \
        --mqtt "mqtt://127.0.0.1:$port" --mqtt-node "$1" --mqtt-dialect sparkplug,json \
        >"$work/$1.page" 2>"$work/$1.errors" &
    pids+=($!)
}

# await TEXT: waits until the subscriber has printed it.
await() {
    for _ in {1..200}; do
        grep -qF "$1" "$work/seen" && return
        sleep 0.05
    done
    echo "the subscriber never saw: $1" >&2
    cat "$work"/*.errors >&2
    return 1
}

start_broker
echo "a broker on 127.0.0.1:$port; the same messages come to:"
echo "\$ mosquitto_sub -p $port -v -t 'kakb/#' -t 'spBv1.0/#'"
echo
touch "$work/seen"
mosquitto_sub -p "$port" -v -q 1 -t 'kakb/+/status' -t 'kakb/+/plc/+/availability' \
    -t 'kakb/+/plc/setpoint' -t 'kakb/+/plc/fill level' > >(tee "$work/seen") &
pids+=($!)

for node in mixer press; do
    start_station "$node"
done
for node in mixer press; do
    await "kakb/$node/status online"
    await "kakb/$node/plc/1/availability online"
done
sleep "$seconds"
kill "${pids[2]}" "${pids[3]}"
for node in mixer press; do
    await "kakb/$node/status offline"
done
echo
echo "both stations told the broker what they read, and that they ended"
