"""Checks the listings of a document: sources, tables, build files and changes."""

import re
import subprocess

from session import Failure

BUILDS = "builds the driver"
PANEL = """cmake_minimum_required(VERSION 3.25)
project(panel LANGUAGES CXX)
set(CMAKE_CXX_STANDARD 17)
add_executable(panel {source})
"""


def _done(command, **options):
    done = subprocess.run([str(word) for word in command], text=True, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False, **options)
    if done.returncode:
        raise Failure(f"{' '.join(map(str, command))}\n{done.stdout}")


def _setting(session, name):
    """What the build was configured with."""
    cache = (session.build / "CMakeCache.txt").read_text(encoding="utf-8")
    return re.search(rf"^{name}:\w+=(.*)$", cache, re.M).group(1)


def check_source(block, session):
    """The listing is a file, or stands in one. The files are built with the tests."""
    kind, _, name = block.marker.partition(": ")
    if kind not in ("the file", "part of"):
        raise Failure("a listing needs a comment above it that names its file")
    text = (session.source / name).read_text(encoding="utf-8")
    listed = block.text
    if kind == "the file":
        if listed != text:
            raise Failure(f"the listing is not {name}")
        return
    lines = [line.strip() for line in text.splitlines()]
    part = [line.strip() for line in block.lines]
    if not any(lines[n:n + len(part)] == part for n in range(len(lines))):
        raise Failure(f"the listing does not stand in {name}")


def check_configuration(block, session):
    """kakb-station finds no mistake in it. The page's commands find it as a file."""
    kind, _, name = block.marker.partition(": ")
    if kind != "file":
        raise Failure("a configuration needs a comment above it that names its file")
    (session.folder / name).write_text(block.text, encoding="utf-8")
    _done(["kakb-station", "--config", name, "--check"], cwd=session.folder,
          env=session.environment)


def check_build_file(block, session):
    """The lines build a host against what is installed."""
    folder = session.folder / f"panel{block.line}"
    folder.mkdir()
    source = session.source / "docs" / "examples" / "tinyHost.cpp"
    (folder / "CMakeLists.txt").write_text(PANEL.format(source=source) + block.text)
    root = folder / "root"
    _done(["cmake", "--install", session.build, "--prefix", root])
    sanitizers = _setting(session, "KAKB_SANITIZE")
    _done(["cmake", "-S", folder, "-B", folder / "build", "-G", "Ninja",
           f"-DCMAKE_PREFIX_PATH={root}",
           f"-DCMAKE_CXX_FLAGS={'-fsanitize=' + sanitizers if sanitizers else ''}"])
    _done(["cmake", "--build", folder / "build"])


def check_table(block, session):
    """The lines are a tag file that kakb-host takes."""
    (session.folder / "shown.csv").write_text(block.text)
    session.run("kakb-host plan --tags shown.csv", None)
    session.ended_well("kakb-host plan --tags shown.csv")


def check_change(block, session):
    """The change fits the sources; the driver with it is built where the marker says."""
    changed = session.folder / "changed-sources"
    changed.mkdir()
    for part in ("CMakeLists.txt", "include", "device", "service", "line", "cmake"):
        _done(["cp", "-r", session.source / part, changed])
    _done(["patch", "--batch", "--forward", "--fuzz=0", "-p1", "-d", changed], input=block.text)
    if not block.marker.startswith(BUILDS):
        raise Failure("a change needs a comment above it that says where it is built")
    build = session.folder / block.marker.rpartition("/tmp/")[2]
    _done(["cmake", "-S", changed, "-B", build, "-G", "Ninja", f"-DQT_MAJOR={_setting(session, 'QT_MAJOR')}",
           "-DKAKB_BUILD_KIT=OFF", "-DKAKB_BUILD_TESTS=OFF", "-DCMAKE_CXX_FLAGS=-O0"])
    _done(["cmake", "--build", build, "--target", "driver"])
