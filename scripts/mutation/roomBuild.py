"""Builds the tests of line/, host/ and simulator/ once, and for each mutant only what it touches.

Which object is in which library, and which test program links it, is read from the build tree.
"""

import json
import os
import re
import resource
import shlex
import shutil
import time

from rooms import DRIVER, ROOMS
from testProgram import (
    BuildError, compilation_of, judge_tests, run, slow_tests, succeeds, with_output,
)

KIT_ROOMS = [room for room in ROOMS if room != DRIVER]
KIT_FOLDERS = [folder for room in KIT_ROOMS for folder in ROOMS[room]]

# Tests that ask for speed get it in this kind of build. Assertions stay in, the standard library's
# as well: they notice an index out of range.
BUILD_TYPE = "RelWithDebInfo"
FLAGS = "-O0 -w -D_GLIBCXX_ASSERTIONS"

# By how much a mutant's tests may take longer than the unchanged ones.
SLOWNESS = 3
SPARE_PROCESSOR_SECONDS = 4
SPARE_CLOCK_SECONDS = 10


class TestProgram:
    """A program of unit tests, whose own objects become one, which makes linking a mutant quick."""

    def __init__(self, name, objects, archives):
        self.name = name
        self.own_objects = objects
        self.archives = archives
        self.folder = name.split("/")[1]

    def read_link(self, folder, work):
        last = run(["ninja", "-t", "commands", self.name], folder).strip().splitlines()[-1]
        link = next(part for part in last.split("&&") if f" -o {self.name} " in part)
        words = shlex.split(link)
        self.compiler = words[0]
        self.libraries = [
            word for word in words[words.index("-o") + 2 :] if word not in self.own_objects
        ]
        self.joined_object = work / (os.path.basename(self.name) + ".o")
        run(["ld", "-r", "-o", self.joined_object, *self.own_objects], folder)

    def measure(self, folder, work):
        """What the unchanged tests take, and which are slow."""
        report = work / "times.json"
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        began = time.monotonic()
        run([folder / self.name, "--gtest_brief=1", f"--gtest_output=json:{report}"], work)
        self.clock_seconds = time.monotonic() - began
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        self.processor_seconds = after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime
        self.slow_tests = slow_tests(json.loads(report.read_text()))


class RoomBuild:
    """The test programs of some rooms without any change."""

    def __init__(self, root, work, rooms):
        self.root = root
        self.work = work
        self.folder = work / "rooms"
        self._configure()
        self._read_compilations()
        self._read_programs(rooms)
        run(["ninja", "-C", self.folder, *[program.name for program in self.programs]], root)
        self._read_users()
        for program in self.programs:
            program.read_link(self.folder, work)
            program.measure(self.folder, work)

    def _configure(self):
        run(
            ["cmake", "-S", self.root, "-B", self.folder, "-G", "Ninja",
             f"-DCMAKE_BUILD_TYPE={BUILD_TYPE}", f"-DCMAKE_CXX_FLAGS_{BUILD_TYPE.upper()}={FLAGS}",
             "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "-DQT_MAJOR=5", "-DKAKB_BUILD_TESTS=ON",
             "-DKAKB_PROCESS_EACH_TEST=OFF"],
            self.root,
        )

    def _read_compilations(self):
        """Command and source by object."""
        self.commands = {}
        self.sources = {}
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            command = compilation_of(entry)
            object_file = command[command.index("-o") + 1]
            self.commands[object_file] = command
            self.sources[object_file] = os.path.relpath(entry["file"], self.root)

    def _read_programs(self, rooms):
        """Those in the tests' folders of the rooms that link something of the chosen ones."""
        archives = {}
        programs = []
        for line in (self.folder / "build.ninja").read_text().splitlines():
            match = re.match(r"build (\S+)[^:]*: CXX_(STATIC_LIBRARY|EXECUTABLE)_LINKER\S* (.*)", line)
            if not match:
                continue
            target, kind, rest = match.groups()
            explicit, _, others = rest.partition("|")
            if kind == "STATIC_LIBRARY":
                archives[target] = explicit.split()
            elif re.fullmatch(rf"tests/({'|'.join(KIT_FOLDERS)})/(\w+/)*\w+_tests", target):
                programs.append(TestProgram(target, explicit.split(), others.split()))
        self.library_objects = {
            program.name: {o for a in program.archives for o in archives.get(a, [])}
            for program in programs
        }
        wanted = {
            object_file for object_file, source in self.sources.items()
            if source.split("/")[0] in {folder for room in rooms for folder in ROOMS[room]}
        }
        self.programs = [p for p in programs if self.library_objects[p.name] & wanted]
        if not self.programs:
            raise BuildError(f"no test program links anything of {', '.join(sorted(rooms))}")

    def _read_users(self):
        """Objects by the files that they include, those of the tests too."""
        self.users = {}
        linked = {o for p in self.programs for o in [*p.own_objects, *self.library_objects[p.name]]}
        object_file = ""
        for line in run(["ninja", "-t", "deps"], self.folder).splitlines():
            if line and not line.startswith(" "):
                object_file = line.split(":")[0]
            elif line and object_file in linked:
                used = os.path.relpath(os.path.join(self.folder, line.strip()), self.root)
                self.users.setdefault(used, []).append(object_file)

    def nearest_suites(self, file):
        """Of the test files that begin with the file's name: they notice most mutants."""
        stem = os.path.basename(file).split(".")[0]
        suites = set()
        for folder in KIT_FOLDERS:
            for path in (self.root / "tests" / folder).rglob(f"{stem}*Test.cpp"):
                suites.update(re.findall(r"^TEST(?:_F|_P)?\((\w+),", path.read_text(), re.MULTILINE))
        return sorted(suites)


class RoomWorkshop:
    """A worker's copy of the rooms, in which one file at a time is changed."""

    def __init__(self, base, number, timeout):
        self.base = base
        self.timeout = timeout
        self.folder = base.work / f"roomWorker{number}"
        shutil.rmtree(self.folder, ignore_errors=True)
        for name in KIT_FOLDERS:
            shutil.copytree(base.root / name, self.folder / name)
        self.program_file = self.folder / "tests"

    def result_unchanged(self):
        """As result_of()."""
        for program in self.base.programs:
            if not self._link(program, {}):
                return "not linked", program.name
            status, noticed = self._run_tests(program, [])
            if status != "survived":
                return status, noticed
        return "survived", ""

    def result_of(self, mutant):
        """(status, what noticed it); status is killed, survived, timed out or not compiled."""
        file = self.folder / mutant.file
        source = file.read_text()
        file.write_text(mutant.applied_to(source))
        try:
            changed = self._compile(self.base.users.get(mutant.file, []))
        finally:
            file.write_text(source)
        if changed is None:
            return "not compiled", ""
        suites = self.base.nearest_suites(mutant.file)
        for program in self._programs_of(mutant.file, changed):
            if not self._link(program, changed):
                return "not compiled", ""
            status, noticed = self._run_tests(program, suites)
            if status != "survived":
                return status, noticed
        return "survived", ""

    def _programs_of(self, file, changed):
        """Those of the file's own room first."""
        linking = [
            program for program in self.base.programs
            if self.base.library_objects[program.name] & changed.keys()
        ]
        return sorted(linking, key=lambda program: program.folder != file.split("/")[0])

    def _compile(self, touched):
        """The changed objects by the unchanged ones; none when one does not compile."""
        changed = {}
        for number, object_file in enumerate(touched):
            changed[object_file] = self.folder / f"changed{number}.o"
            command = [self._in_this_copy(word) for word in self.base.commands[object_file]]
            if not succeeds(with_output(command, changed[object_file]), self.base.folder):
                return None
        return changed

    def _in_this_copy(self, word):
        return re.sub(
            rf"{re.escape(str(self.base.root))}/(?=({'|'.join(KIT_FOLDERS)})(/|$))",
            f"{self.folder}/", word,
        )

    def _link(self, program, changed):
        # The changed objects come first, so that their libraries' own are not taken.
        own = [changed.get(object_file, object_file) for object_file in program.own_objects]
        if own == program.own_objects:
            own = [program.joined_object]
        others = [
            changed[object_file]
            for object_file in self.base.library_objects[program.name]
            if object_file in changed
        ]
        return succeeds(
            [program.compiler, "-fuse-ld=gold", "-o", self.program_file, *others, *own,
             *program.libraries],
            self.base.folder,
        )

    def _run_tests(self, program, suites):
        """The nearest tests first, then the quick ones."""
        near = ":".join(f"*{suite}.*" for suite in suites)
        slow = ":".join(program.slow_tests)
        choices = [near, "*-" + ":".join(filter(None, [near, slow])), slow]
        seconds = self.timeout or SPARE_PROCESSOR_SECONDS + int(SLOWNESS * program.processor_seconds)
        for choice in filter(None, choices):
            status, noticed = judge_tests(
                self.program_file, choice, self.folder, seconds,
                SPARE_CLOCK_SECONDS + SLOWNESS * program.clock_seconds,
            )
            if status != "survived":
                return status, noticed
        return "survived", ""
