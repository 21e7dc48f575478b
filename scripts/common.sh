# shellcheck shell=bash
# For scripts that make Debian folders or work in steps; sourced.

debian_release=bookworm

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# The mirror of Debian itself in apt's sources.
debian_mirror() {
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $debian_release" \
        'Label: Debian' 'Component: main' | head -1
}

# logged STATUS LOG COMMAND...: what the command says goes into a log. If the command fails, the log's
# end is shown and the script ends with the status. Leaves the seconds it took in took.
logged() {
    local status=$1 log=$2 began=$SECONDS
    shift 2
    mkdir -p "$(dirname "$log")"
    "$@" >"$log" 2>&1 || {
        tail -n 50 "$log"
        echo "FAILED, all that it said is in $log"
        exit "$status"
    }
    took=$((SECONDS - began))
}
