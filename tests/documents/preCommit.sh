#!/usr/bin/env bash
# usage: preCommit.sh SOURCE
# The hook in a repository of its own: what it must stop and what it must let through, by what is
# staged and not by what lies in the folder.
set -euo pipefail
source=$(cd "$1" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A hook of the repository that this one runs in would name itself.
unset "${!GIT_@}"
cd "$work"
git init -q
git config core.hooksPath scripts
git config user.name tester
git config user.email tester@example.invalid
cp -r "$source/scripts" "$source/.clang-format" .

stages() { printf '%s' "$2" >"$1" && git add "$1"; }
passes() { git commit -q -m "$1" >"$work/log" 2>&1 || { cat "$work/log"; echo "FAILED: $1"; exit 1; }; }
stops() {
    if git commit -q -m "$1" >"$work/log" 2>&1; then echo "FAILED: lets through: $1"; exit 1; fi
    grep -q -- "$2" "$work/log" || { cat "$work/log"; echo "FAILED: $1: says no $2"; exit 1; }
    git reset -q --hard
}

git add .clang-format scripts
passes "the scripts themselves"
stages good.cpp $'int main()\n{\n    return 0;\n}\n'
passes "a well-formatted file"

stages bad.cpp $'int main() { return   0; }\n'
stops "a badly formatted file" 'bad.cpp: clang-format'

# Staged badly, and put right only in the folder.
stages late.cpp $'int  a;\n'
printf 'int a;\n' >late.cpp
stops "a file that was formatted after it was staged" 'late.cpp: clang-format'

stages "with blank.cpp" $'int  b;\n'
stops "a badly formatted file with a blank in its name" 'with blank.cpp: clang-format'

stages text.md $'A robust driver.\n'
stops "a word to do without" 'text.md: words'
stages text.md $'A robustness test is another word.\n'
passes "a word that only begins so"

stages text.md $'blank at the end \n'
stops "a blank at a line's end" 'trailing whitespace'

printf 'weasel\n' >.git/words
stages text.md $'The weasel.\n'
stops "a word of one's own" 'text.md: words'
