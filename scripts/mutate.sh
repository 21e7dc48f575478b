#!/usr/bin/env bash
# Changes one operator, constant, condition or statement of the driver at a time, in a copy, and runs
# the unit tests against each change, and if nothing is noticed once more with the address and
# undefined-behaviour sanitizers: those that no test notices then survive.
# usage: scripts/mutate.sh [OPTION]...
#   --list           only list the mutants
#   --check-list     only see that each entry of equivalent.txt is one mutant's: seconds
#   --file FILE      only those of FILE, such as device/checksum.cpp; can be given several times
#   --again          only those that survived the last run
#   --sample N       only N of them, 1 or more, chosen by the seed
#   --seed S         0 or more (default 1)
#   --workers N      mutants at the same time, 1 to 64 (default 2)
#   --timeout S      seconds of processor time for the unit tests, 1 to 600 (default 4; unchanged
#                    they take less than 1), and 5 times as long by the clock; a mutant that takes
#                    longer counts as killed
#   --least PERCENT  share of the counted mutants to be killed, 0 to 100 (default 95)
# Works in build/mutate; all results are in build/mutate/results.tsv. Mutants that do not compile and
# those in tests/mutants/equivalent.txt, with the reason why they change nothing, are not counted.
# Exit status: 0 enough killed, 1 usage, 2 the tests do not build or fail without any change,
#   3 too few killed, or none counted, 4 equivalent.txt has an entry that is no mutant's, is several
#   ones', or was killed, 5 enough killed, but one survived that equivalent.txt does not list. Of
#   several, 4 comes first, then 3.
# Needs the packages of scripts/install-dependencies.sh test.
set -euo pipefail
cd "$(dirname "$0")/.."
exec python3 -B scripts/mutation/main.py "$@"
