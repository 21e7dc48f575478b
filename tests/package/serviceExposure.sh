#!/usr/bin/env bash
# usage: serviceExposure.sh SOURCE
# The service's exposure, as systemd-analyze counts it, must be below 3.
set -euo pipefail

unit=$1/debian/quorvane-ka-kb-station.kakb-station.service
command -v systemd-analyze >/dev/null || { echo "there is no systemd-analyze"; exit 77; }
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
cp "$unit" "$work/kakb-station.service"
# The threshold is in tenths.
systemd-analyze security --offline=yes --no-pager --threshold=29 "$work/kakb-station.service" | tail -n 1
