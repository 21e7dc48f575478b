"""Builds the driver's unit tests once, and then, for each mutant, only what it touches."""

import json
import os
import shlex
import shutil
from concurrent.futures import ThreadPoolExecutor

from testProgram import (
    MEMORY_MIB, compilation_of, judge_tests, run, slow_tests, succeeds, with_output,
)

FOLDERS = ("include", "device", "service")
TIMEOUT_SECONDS = 4
WAITING_FACTOR = 5

# Of what survives, these find what goes wrong without showing.
SANITIZERS = ["-fsanitize=address,undefined", "-fno-sanitize-recover=all"]
SANITIZER_OPTIONS = f"detect_leaks=0:hard_rss_limit_mb={MEMORY_MIB}"
SANITIZED_SLOWNESS = 5

# Parsing these headers takes most of the time of a compilation.
PRECOMPILED = """\
#include <QByteArray>
#include <QLatin1String>
#include <QList>
#include <QMutex>
#include <QMutexLocker>
#include <QString>
#include <QStringList>
#include <QVector>
#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>
"""


class DriverBuild:
    """The unit tests without any change, and the driver once more with the sanitizers."""

    def __init__(self, root, work, workers):
        self.root = root
        self.work = work
        self.folder = work / "base"
        self.sanitized = work / "sanitized"
        self._configure_and_build()
        self._read_compilations()
        self._read_link()
        self._precompile()
        self._find_slow_tests()
        self._build_sanitized(workers)

    def _configure_and_build(self):
        # Qt's own assertions stay in: they notice an index out of range.
        run(
            ["cmake", "-S", self.root, "-B", self.folder, "-G", "Ninja",
             "-DCMAKE_BUILD_TYPE=Debug", "-DCMAKE_CXX_FLAGS_DEBUG=-O0 -w",
             "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", "-DQT_MAJOR=5", "-DKAKB_BUILD_TESTS=ON",
             "-DKAKB_BUILD_KIT=OFF"],
            self.root,
        )
        run(["ninja", "-C", self.folder, "unit_tests"], self.root)

    def _read_compilations(self):
        """Command and object by source file, in the order in which the objects are linked."""
        self.compilations = {}
        for entry in json.loads((self.folder / "compile_commands.json").read_text()):
            file = os.path.relpath(entry["file"], self.root)
            if file.split("/")[0] in ("device", "service"):
                command = compilation_of(entry)
                self.compilations[file] = (command, command[command.index("-o") + 1])
        self.users = {}  # sources by the files that they include
        for file, (_, object_file) in self.compilations.items():
            for line in run(["ninja", "-t", "deps", object_file], self.folder).splitlines()[1:]:
                used = os.path.relpath(os.path.join(self.folder, line.strip()), self.root)
                self.users.setdefault(used, []).append(file)

    def _read_link(self):
        """The tests' own objects become one, which makes linking a mutant quick."""
        commands = run(["ninja", "-t", "commands", "tests/unit_tests"], self.folder)
        last = commands.strip().splitlines()[-1]
        link = next(part for part in last.split("&&") if " -o tests/unit_tests " in part)
        words = shlex.split(link)
        objects = [word for word in words if word.endswith(".o")]
        driver = {object_file for _, object_file in self.compilations.values()}
        own = [word for word in objects if word not in driver]
        self.tests_object = self.work / "tests.o"
        run(["ld", "-r", "-o", self.tests_object, *own], self.folder)
        output = words.index("-o")
        self.compiler = words[0]
        self.libraries = [word for word in words[output + 2 :] if word not in objects]

    def _precompile(self):
        self.header = self.work / "precompiled.h"
        self.header.write_text(PRECOMPILED)
        command, _ = next(iter(self.compilations.values()))
        source = command.index("-c")
        output = command.index("-o")
        command = command[:output] + command[output + 2 : source]
        run([*command, "-x", "c++-header", self.header, "-o", f"{self.header}.gch"], self.folder)


    def _find_slow_tests(self):
        """By the unchanged tests' times; which tests these are changes no result."""
        report = self.work / "times.json"
        run(["tests/unit_tests", "--gtest_brief=1", f"--gtest_output=json:{report}"], self.folder)
        self.slow_tests = slow_tests(json.loads(report.read_text()))

    def _build_sanitized(self, workers):
        self.sanitized.mkdir(exist_ok=True)

        def build(compilation):
            command, object_file = compilation
            output = self.sanitized_object(object_file)
            command = with_output(command, output)
            run([command[0], *SANITIZERS, *command[1:]], self.folder)

        with ThreadPoolExecutor(workers) as pool:
            list(pool.map(build, self.compilations.values()))

    def sanitized_object(self, object_file):
        return self.sanitized / os.path.basename(object_file)


class DriverWorkshop:
    """A worker's copy of the driver, in which one file at a time is changed."""

    def __init__(self, base, number, timeout):
        self.base = base
        self.timeout = timeout or TIMEOUT_SECONDS
        self.folder = base.work / f"worker{number}"
        shutil.rmtree(self.folder, ignore_errors=True)
        for name in FOLDERS:
            shutil.copytree(base.root / name, self.folder / name)
        self.program = self.folder / "unit_tests"

    def result_unchanged(self):
        """As result_of()."""
        for sanitized in (False, True):
            if not self.link({}, sanitized):
                return "not linked", ""
            status, noticed = self.run_tests(sanitized)
            if status != "survived":
                return status, noticed
        return "survived", ""

    def result_of(self, mutant):
        """(status, what noticed it); status is killed, survived, timed out or not compiled."""
        file = self.folder / mutant.file
        source = file.read_text()
        file.write_text(mutant.applied_to(source))
        touched = self.base.users.get(mutant.file, [mutant.file])
        try:
            for sanitized in (False, True):
                if not self._build(touched, sanitized):
                    return "not compiled", ""
                status, noticed = self.run_tests(sanitized)
                if status != "survived":
                    break
        finally:
            file.write_text(source)
        return status, noticed

    def _build(self, touched, sanitized):
        changed = {}
        for source in touched:
            command, object_file = self.base.compilations[source]
            changed[object_file] = self.folder / (os.path.basename(source) + ".o")
            if not self._compile(command, changed[object_file], sanitized):
                return False
        return self.link(changed, sanitized)

    def link(self, changed, sanitized):
        # The driver's objects come first, so that its headers' inline functions are the mutant's.
        objects = []
        for _, object_file in self.base.compilations.values():
            same = self.base.sanitized_object(object_file) if sanitized else object_file
            objects.append(changed.get(object_file, same))
        return self._succeeds(
            [self.base.compiler, "-fuse-ld=gold", *(SANITIZERS if sanitized else []),
             "-o", self.program, *objects, self.base.tests_object, *self.base.libraries]
        )

    def _compile(self, command, output, sanitized):
        here = with_output([self._in_this_copy(word) for word in command], output)
        extra = SANITIZERS if sanitized else ["-include", self.base.header]
        return self._succeeds([here[0], *extra, *here[1:]])

    def _in_this_copy(self, word):
        for name in FOLDERS:
            word = word.replace(f"{self.base.root}/{name}", f"{self.folder}/{name}")
        return word

    def _succeeds(self, command):
        return succeeds(command, self.base.folder)

    def run_tests(self, sanitized):
        """The quick tests first: they notice most mutants."""
        slow = ":".join(self.base.slow_tests)
        for choice in ("-" + slow, slow) if slow else ("*",):
            status, noticed = self._run_tests(choice, sanitized)
            if status != "survived":
                return status, noticed
        return "survived", ""

    def _run_tests(self, choice, sanitized):
        seconds = self.timeout * (SANITIZED_SLOWNESS if sanitized else 1)
        return judge_tests(
            self.program, choice, self.folder, seconds, seconds * WAITING_FACTOR,
            SANITIZER_OPTIONS if sanitized else None,
        )
