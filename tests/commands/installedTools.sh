#!/usr/bin/env bash
# usage: installedTools.sh PROGRAM_FOLDER
# Driver and tools installed into an empty folder need nothing else to watch the simulated PLC.
source "$(dirname "$0")/common.sh" "$1"

root=$work/root
for component in driver tools; do
    cmake --install "$programs/.." --prefix "$root" --component $component >"$work/out" 2>"$work/err" ||
        { show; fail "the $component cannot be installed"; }
done
programs=$root/bin
cmp -s "$demo_tags" "$root/share/quorvane-ka-kb/tags.csv" || fail "the tag file is not installed"
for tool in kakb-host kakb-sim; do
    gzip -t "$root/share/man/man1/$tool.1.gz" || fail "$tool has no manual page"
    [ -s "$root/share/bash-completion/completions/$tool" ] || fail "$tool has no completion"
done

cd /
expect 0 host watch --seconds 0.5
outputHas '  fill level  IW0 = [0-9]+$' '  speed of line 2  2:QW40 = 0$' '  give-ups 0  refused 0 '
errorIs ''

# With the file gone, which the tools' own package brings, it is named.
rm "$root/share/quorvane-ka-kb/tags.csv"
expect 1 host watch
saysOneSentence
errorHas "cannot read $root/share/quorvane-ka-kb/tags\.csv: No such file or directory$"
