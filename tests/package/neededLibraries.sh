#!/usr/bin/env bash
# usage: neededLibraries.sh LIBRARY QT_MAJOR SANITIZERS
# Fails when the library needs more than QtCore and the C and C++ run-time libraries. A sanitized
# build also needs the sanitizers' own.
set -euo pipefail

allowed="^(libQt$2Core\.so\..*|libstdc\+\+\.so\..*|libgcc_s\.so\..*|libm\.so\..*|libc\.so\..*|ld-linux.*)$"
[ -z "$3" ] || allowed="$allowed|^lib(asan|ubsan|tsan)\.so\..*$"

needed=$(readelf -d "$1" | sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p')
grep -q "libQt$2Core" <<<"$needed" || { echo "QtCore is missing: is this the library?"; exit 1; }
surplus=$(grep -vE "$allowed" <<<"$needed" || true)
[ -z "$surplus" ] || { echo "needs beyond QtCore and the run-time libraries: $surplus"; exit 1; }
echo needs $needed
