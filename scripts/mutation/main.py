"""The mutation run; scripts/mutate.sh says how to use it."""

import argparse
import queue
import random
import sys
import time
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from equivalentList import ListError, check_entries, read_equivalents
from mutants import mutants_of
from roomBuild import RoomBuild, RoomWorkshop
from rooms import DRIVER, ROOMS, files_of, room_of
from testProgram import BuildError
from unitTestBuild import DriverBuild, DriverWorkshop

ROOT = Path(__file__).resolve().parents[2]
WORK = ROOT / "build" / "mutate"
RESULTS = WORK / "results.tsv"
EQUIVALENTS = ROOT / "tests" / "mutants" / "equivalent.txt"
PROGRESS_STEP = 100
KIT = "kit"  # the build of all rooms but the driver's

USAGE_ERROR, BUILD_FAILED, TOO_FEW_KILLED, LIST_WRONG, NOT_LISTED = 1, 2, 3, 4, 5


class Arguments(argparse.ArgumentParser):
    def error(self, message):
        self.print_usage(sys.stderr)
        print(f"mutate.sh: {message}", file=sys.stderr)
        sys.exit(USAGE_ERROR)


def between(least, most):
    def number(text):
        if not text.isdigit() or not least <= int(text) <= most:
            raise argparse.ArgumentTypeError(f"{text} is not a number from {least} to {most}")
        return int(text)

    return number


def read_arguments():
    parser = Arguments(prog="mutate.sh")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--check-list", action="store_true")
    parser.add_argument("--room", action="append", default=[], choices=list(ROOMS))
    parser.add_argument("--rest", type=between(1, 10**9), default=0)
    parser.add_argument("--file", action="append", default=[])
    parser.add_argument("--again", action="store_true")
    parser.add_argument("--sample", type=between(1, 10**9))
    parser.add_argument("--seed", type=between(0, 10**9), default=1)
    parser.add_argument("--workers", type=between(1, 64), default=2)
    parser.add_argument("--timeout", type=between(1, 600))
    parser.add_argument("--least", type=between(0, 100), default=95)
    arguments = parser.parse_args()
    known = [file for room in ROOMS for file in files_of(ROOT, room)]
    for file in arguments.file:
        if file not in known:
            parser.error(f"{file} is no file of {', '.join(ROOMS)}")
    if not arguments.room:
        named = arguments.file or [key[0] for key in last_survivors() if arguments.again]
        arguments.room = sorted({room_of(file) for file in named}) or [DRIVER]
    return arguments


def mutants_by_room():
    return {
        room: [m for file in files_of(ROOT, room) for m in mutants_of(file, (ROOT / file).read_text())]
        for room in ROOMS
    }


def chosen_mutants(by_room, arguments):
    mutants = [m for room in ROOMS if room in arguments.room for m in by_room[room]]
    rest = [m for room in ROOMS if room not in arguments.room for m in by_room[room]]
    if arguments.file:
        mutants = [mutant for mutant in mutants if mutant.file in arguments.file]
    if arguments.again:
        survivors = last_survivors()
        mutants = [mutant for mutant in mutants if mutant.key() in survivors]
    if arguments.sample:
        mutants = sample_of(mutants, arguments.sample, arguments.seed)
    return mutants + sample_of(rest, arguments.rest, arguments.seed)


def sample_of(mutants, count, seed):
    if count >= len(mutants):
        return mutants
    places = random.Random(seed).sample(range(len(mutants)), count)
    return [mutants[place] for place in sorted(places)]


def last_survivors():
    survivors = set()
    if RESULTS.exists():
        for line in RESULTS.read_text().splitlines():
            status, _, place, function, before, after, _ = line.split("\t")
            if status == "survived":
                survivors.add((place.split(":")[0], function, before, after))
    return survivors


def describe(mutant):
    function = f" {mutant.function}" if mutant.function else ""
    return f"{mutant.file}:{mutant.line}:{function}\n- {mutant.before}\n+ {mutant.after}"


class Workshops:
    """A worker's, one for each kind of build."""

    def __init__(self, builds, number, timeout):
        self.by_kind = {
            kind: (DriverWorkshop if kind == DRIVER else RoomWorkshop)(build, number, timeout)
            for kind, build in builds.items()
        }

    def result_of(self, mutant):
        return self.by_kind[kind_of(mutant)].result_of(mutant)


def kind_of(mutant):
    return DRIVER if room_of(mutant.file) == DRIVER else KIT


def builds_for(mutants, arguments):
    """The unchanged builds that the mutants need, whose tests pass."""
    WORK.mkdir(parents=True, exist_ok=True)
    rooms = {room_of(mutant.file) for mutant in mutants}
    builds = {}
    if DRIVER in rooms:
        builds[DRIVER] = DriverBuild(ROOT, WORK, arguments.workers)
    if rooms - {DRIVER}:
        builds[KIT] = RoomBuild(ROOT, WORK, rooms - {DRIVER})
    for workshop in Workshops(builds, "Base", arguments.timeout).by_kind.values():
        status, failure = workshop.result_unchanged()
        if status != "survived":
            raise BuildError(f"the unit tests fail without any change: {status} {failure}")
    return builds


def run_all(mutants, builds, arguments, reasons):
    """The results in the order of the mutants; results.tsv grows along."""
    free = queue.Queue()
    for number in range(arguments.workers):
        free.put(Workshops(builds, number, arguments.timeout))

    def result_of(mutant):
        workshops = free.get()
        try:
            return workshops.result_of(mutant)
        finally:
            free.put(workshops)

    results = []
    with ThreadPoolExecutor(arguments.workers) as pool, open(RESULTS, "w") as out:
        for mutant, result in zip(mutants, pool.map(result_of, mutants)):
            results.append(result)
            print(*row_of(mutant, result, reasons), sep="\t", file=out, flush=True)
            if len(results) % PROGRESS_STEP == 0:
                print(f"{len(results)} of {len(mutants)}", file=sys.stderr, flush=True)
    return results


def row_of(mutant, result, reasons):
    status, noticed = result
    listed = "equivalent" if mutant.key() in reasons else ""
    place = f"{mutant.file}:{mutant.line}"
    return status, listed, place, mutant.function, mutant.before, mutant.after, noticed


def judge(mutants, results, reasons, arguments):
    """Prints the survivors and the figures; returns the exit status."""
    counted = {"killed": 0, "timed out": 0, "survived": 0, "not compiled": 0}
    listed = 0
    wrong = []
    for mutant, (status, noticed) in zip(mutants, results):
        if mutant.key() in reasons and status != "not compiled":
            listed += 1
            if status != "survived":
                wrong.append((mutant, noticed or status))
            continue
        counted[status] += 1
        if status == "survived":
            print(f"survived: {describe(mutant)}\n")
    for mutant, noticed in wrong:
        print(f"listed as equivalent, but killed by {noticed}: {describe(mutant)}\n")

    killed = counted["killed"] + counted["timed out"]
    total = killed + counted["survived"]
    print(f"{len(mutants)} mutants, {counted['not compiled']} not compiled, {listed} equivalent")
    print(f"{total} counted: {killed} killed ({counted['timed out']} of them timed out), "
          f"{counted['survived']} survived")
    if total > 0:
        print(f"killed {100 * killed / total:.1f} %, at least {arguments.least} % expected")
    all_listed = 0 < listed == len(mutants)
    if wrong:
        return LIST_WRONG
    if 100 * killed < arguments.least * total or (total == 0 and not all_listed):
        return TOO_FEW_KILLED
    return NOT_LISTED if counted["survived"] else 0


def main():
    arguments = read_arguments()
    by_room = mutants_by_room()
    every = [mutant for room in ROOMS for mutant in by_room[room]]
    mutants = chosen_mutants(by_room, arguments)
    if arguments.list:
        for mutant in mutants:
            print(describe(mutant), end="\n\n")
        print(f"{len(mutants)} mutants")
        return 0
    try:
        reasons = read_equivalents(EQUIVALENTS)
        check_entries(reasons, every)
        if arguments.check_list:
            print(f"{len(reasons)} entries, each exactly one of {len(every)} mutants")
            return 0
        builds = builds_for(mutants, arguments)
    except ListError as error:
        print(f"equivalent.txt: {error}", file=sys.stderr)
        return LIST_WRONG
    except BuildError as error:
        print(error, file=sys.stderr)
        return BUILD_FAILED
    began = time.monotonic()
    results = run_all(mutants, builds, arguments, reasons)
    print(f"{time.monotonic() - began:.0f} s with {arguments.workers} workers")
    return judge(mutants, results, reasons, arguments)


if __name__ == "__main__":
    sys.exit(main())
