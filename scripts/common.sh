# shellcheck shell=bash
# What the scripts share; sourced before they change the folder, as $0 may be relative.

this_script=$(realpath "$0")
debian_release=bookworm

# Prints the comment at the top of the script, and ends it.
usage() {
    sed -n '2,/^[^#]/s/^# \{0,1\}//p' "$this_script"
    exit 1
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then "$@"; else sudo "$@"; fi
}

# The mirror of Debian itself in apt's sources, for debootstrap; nothing if debootstrap cannot read it,
# such as a disc: it then takes its own.
debian_mirror() {
    apt-get indextargets --format '$(REPO_URI)' 'Created-By: Packages' "Codename: $debian_release" \
        'Label: Debian' 'Component: main' | sed -n '/^https\{0,1\}:/{p;q}'
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
