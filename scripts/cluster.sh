#!/usr/bin/env bash
# RabbitMQ nodes on this machine, as one cluster that speaks MQTT on a loopback port each.
# usage: scripts/cluster.sh start FOLDER [NODES]  start 1 to 3 nodes (default: 3); print the MQTT port of
#                                                 each, one a line
#        scripts/cluster.sh kill FOLDER NUMBER    end node 1, 2 or 3 by SIGKILL
#        scripts/cluster.sh revive FOLDER NUMBER  start it again, and wait until it takes MQTT clients
#        scripts/cluster.sh stop FOLDER           end all nodes
#   FOLDER   of the nodes' files; made when it is missing. Nothing outside it is written.
# The nodes trust every client of this machine; they listen on 127.0.0.1 alone.
# Exit status: 0 done, 1 usage or a node that does not start.
set -euo pipefail
. "$(dirname "$0")/common.sh"

SERVER=/usr/lib/rabbitmq/bin/rabbitmq-server
START_S=120

[ $# -ge 2 ] || usage
verb=$1
mkdir -p "$2"
folder=$(cd "$2" && pwd)
number=${3:-}

# A port that nobody listens on now.
free_port() {
    python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])'
}

# port KIND NUMBER: drawn once for a folder.
port() {
    local file=$folder/ports/$1-$2
    mkdir -p "$folder/ports"
    [ -s "$file" ] || free_port >"$file"
    cat "$file"
}

write_config() {
    local home=$folder/node$1
    mkdir -p "$home"
    {
        echo "listeners.tcp.1 = 127.0.0.1:$(port amqp "$1")"
        echo "mqtt.listeners.tcp.1 = 127.0.0.1:$(port mqtt "$1")"
        echo "mqtt.allow_anonymous = true"
        echo "mqtt.sparkplug = true" # else the topics' spBv1.0 becomes spBv1/0
        echo "loopback_users = none"
        echo "load_definitions = $folder/definitions.json"
        echo "cluster_formation.peer_discovery_backend = classic_config"
        # Node 1 begins the cluster, at once.
        for node in 1 "$1"; do
            echo "cluster_formation.classic_config.nodes.$node = kakb$node@localhost"
        done
    } >"$home/rabbitmq.conf"
    echo "[rabbitmq_mqtt]." >"$home/plugins"
}

# The queue of a client's session is at one node. Without a mirror elsewhere a client of a killed node
# cannot subscribe at another one.
write_definitions() {
    cat >"$folder/definitions.json" <<'END'
{"vhosts": [{"name": "/"}],
 "users": [{"name": "guest", "password": "guest", "tags": "administrator"}],
 "permissions": [{"user": "guest", "vhost": "/", "configure": ".*", "write": ".*", "read": ".*"}],
 "policies": [{"vhost": "/", "name": "sessions", "pattern": "^mqtt-subscription-",
               "apply-to": "queues", "priority": 0, "definition": {"ha-mode": "all"}}]}
END
}

# The cookie lets the nodes trust each other; each Erlang of the folder reads it.
write_cookie() {
    local cookie=$folder/.erlang.cookie
    [ -s "$cookie" ] || (umask 077 && head -c 32 /dev/urandom | od -An -tx1 | tr -d ' \n' >"$cookie")
    chmod 400 "$cookie"
}

begin() {
    local home=$folder/node$1
    write_config "$1"
    (
        cd "$home"
        exec env HOME="$folder" ERL_EPMD_ADDRESS=127.0.0.1 ERL_EPMD_PORT="$(port epmd 0)" \
            RABBITMQ_NODENAME="kakb$1@localhost" RABBITMQ_DIST_PORT="$(port dist "$1")" \
            RABBITMQ_MNESIA_BASE="$home/data" RABBITMQ_LOG_BASE="$home/log" \
            RABBITMQ_CONFIG_FILE="$home/rabbitmq" RABBITMQ_ENABLED_PLUGINS_FILE="$home/plugins" \
            RABBITMQ_PID_FILE="$home/pid" RABBITMQ_SERVER_ADDITIONAL_ERL_ARGS="+S 1:1" \
            setsid "$SERVER" >"$home/output" 2>&1 </dev/null
    ) &
    echo $! >"$home/group"
}

takes_clients() {
    python3 - "$1" <<'END'
import socket, sys
connect = bytes.fromhex("101000044d51545404020005000463686563")  # CONNECT, client id "chec"
try:
    with socket.create_connection(("127.0.0.1", int(sys.argv[1])), 2) as client:
        client.settimeout(5)
        client.sendall(connect)
        sys.exit(client.recv(4) != bytes.fromhex("20020000"))
except OSError:
    sys.exit(1)
END
}

# The node is the leader of a process group of its own.
kill_node() {
    local group=$folder/node$1/group
    [ -s "$group" ] || return 0
    kill -KILL -- "-$(cat "$group")" 2>/dev/null || true
    rm "$group"
}

await() {
    local end=$((SECONDS + START_S))
    until takes_clients "$(port mqtt "$1")"; do
        if [ -e "$folder/stopped" ]; then
            kill_node "$1" # it was begun while the others ended
            end_name_server
            return 1
        fi
        if [ $SECONDS -gt $end ]; then
            tail -n 20 "$folder/node$1/output" >&2
            echo "node $1 does not take clients" >&2
            return 1
        fi
        sleep 0.3
    done
}

# The name server stays as long as a node is entered with it.
end_name_server() {
    for _ in {1..50}; do
        ERL_EPMD_ADDRESS=127.0.0.1 ERL_EPMD_PORT=$(port epmd 0) epmd -kill 2>&1 |
            grep -q 'Killed\|cannot connect' && return 0
        sleep 0.1
    done
    echo "the name server of the nodes does not end" >&2
}

# All nodes, one behind the other: of two that join at the same time one may never come in.
start_nodes() {
    local node
    for ((node = 1; node <= $1; ++node)); do
        begin "$node"
        await "$node"
        port mqtt "$node"
    done
}

is_number() {
    case "$number" in
    1 | 2 | 3) ;;
    *) usage ;;
    esac
}

case "$verb" in
start)
    number=${number:-3}
    is_number
    rm -f "$folder/stopped"
    write_cookie
    write_definitions
    start_nodes "$number"
    ;;
kill)
    is_number
    kill_node "$number"
    ;;
revive)
    is_number
    begin "$number"
    await "$number"
    ;;
stop)
    touch "$folder/stopped"
    for node in 1 2 3; do
        kill_node "$node"
    done
    end_name_server
    ;;
*) usage ;;
esac
