#!/usr/bin/env bash
# usage: portableSources.sh PROJECT
# Panels build the driver with Qt 4.8. Names that one of Qt 4.8, 5.15 and 6 does not have must not
# stand in its sources, nor a sort or cast that those dropped.
set -euo pipefail
cd "$1"

forbidden='QStringLiteral|QStringView|qsizetype|SkipEmptyParts|KeepEmptyParts|asprintf|swapItemsAt'
forbidden+='|QRegExp|QRegularExpression|\bqSort\b|\bcbegin\b|\bcend\b|constFirst|constLast'
forbidden+='|NonRecursive|class QVector|\.removeAt\(|\.length\(\)|\bnullptr_t\b|\bmake_unique\b'
forbidden+='|char& [a-z]+ = [a-z]+\[0\]|\.swap\('

if grep -rnE "$forbidden" include device service; then
    echo "not common to Qt 4.8, 5.15 and 6"
    exit 1
fi
echo "$(find include device service -type f -exec cat {} + | wc -l) lines searched"
