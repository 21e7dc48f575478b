#!/usr/bin/env bash
# Changes one operator, constant, condition or statement at a time, in a copy, and runs the unit tests
# against each change: a change that no test notices survives. Without --room the driver is changed.
# What survives there runs once more with the address and undefined-behaviour sanitizers.
# usage: scripts/mutate.sh [OPTION]...
#   --list           only list the mutants
#   --check-list     only see that each entry of equivalent.txt is one mutant's: seconds
#   --room ROOM      driver, line, host or simulator; can be given several times (default driver, or
#                    the rooms of --file, or those of the mutants of --again). line, host and simulator
#                    are judged by the programs of tests/line, tests/host and tests/simulator that link
#                    the changed file; the tests named after it run first. main.cpp is not changed.
#   --file FILE      only the mutants of FILE, such as device/checksum.cpp; several times
#   --again          only those that survived the last run
#   --sample N       only N of them, 1 or more, chosen by the seed
#   --rest N         and N mutants of the other rooms, 1 or more, chosen by the seed
#   --seed S         0 or more (default 1)
#   --workers N      mutants at the same time, 1 to 64 (default 2)
#   --timeout S      seconds of processor time for the unit tests, 1 to 600; a mutant that takes
#                    longer counts as killed. Default for the driver 4 (unchanged its tests take less
#                    than 1), and 5 times as long by the clock; in the other rooms 4 more than 3 times
#                    what the unchanged tests take, and 10 more than 3 times that by the clock
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
