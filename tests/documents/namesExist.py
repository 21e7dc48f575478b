#!/usr/bin/env python3
"""Looks up what the documents name: links, files, functions, presets, options and tests.

usage: namesExist.py SOURCE
"""

import re
import sys
from pathlib import Path

LINK = re.compile(r"\[[^\]]*\]\(([^)#]+)(?:#[^)]*)?\)")
CODE = re.compile(r"(?<!`)`([^`\n]+)`(?!`)")
FILE = re.compile(r"[\w.-]+(?:/[\w.*-]+)+/?|[\w-]+\.(?:md|sh|py|cpp|h|csv|txt)")
FOLDERS = ("", "docs", "tests", "tests/unit", "scripts", "simulator", "include", "line/wire", "line/exchange")
# Not of this tree: what a build makes, what an installed tree has, what is on other machines, what
# stands for something else, and topics and metrics of MQTT.
ELSEWHERE = re.compile(
    r"build/|(lib/)?quorvane-ka-kb/|/|RECORD|tags\.csv$|recipe\.csv$|history\.csv$|application/|"
    r"spBv1[./]0|kakb/|kakb-mark/|Buffer/|Commands/")


class Tree:
    """The project's files and what can be asked of them."""

    def __init__(self, source):
        self.source = Path(source)
        self.exports = set(re.findall(r"intf_\w+", self.read("include/quorvane_ka_kb_plc.h")))
        self.presets = set(re.findall(r'"name": "(\w+)"', self.read("CMakePresets.json")))
        self.switches = set(re.findall(r"^(--\w+)\)", self.read("test.sh"), re.M))
        self.tests = "".join(
            "".join(re.findall(r"TEST\w*\(.*|INSTANTIATE\w+\(.*", file.read_text(encoding="utf-8")))
            for file in self.source.glob("tests/**/*.cpp"))

    def read(self, name):
        """A file's text."""
        return (self.source / name).read_text(encoding="utf-8")

    def has(self, name, beside):
        """A file, a folder, a pattern of them, or a class: its header and source."""
        for folder in [beside, *(self.source / folder for folder in FOLDERS)]:
            if any(folder.glob(name.rstrip("/"))) or (folder / f"{name}.h").exists() or any(
                    folder.glob(f"{name}.cpp")):
                return True
        return False


def troubles_of_code(code, tree, beside):
    """What a piece of inline code names that is not there."""
    for function in re.findall(r"\bintf_\w+", code):
        if function not in tree.exports:
            yield f"{function} is not exported"
    for preset in re.findall(r"--preset (\w+)", code):
        if preset not in tree.presets:
            yield f"there is no preset {preset}"
    for switch in re.findall(r"test\.sh (--\w+)", code):
        if switch not in tree.switches:
            yield f"test.sh has no {switch}"
    for test in re.findall(r"--gtest_filter=\*?(\w+)", code):
        if test not in tree.tests:
            yield f"no test is called {test}"
    word = code.split()[0].removeprefix("./")
    if FILE.fullmatch(word) and not ELSEWHERE.match(word) and not tree.has(word, beside):
        yield f"there is no {word}"


def without_blocks(text):
    """The prose: fenced blocks are other tests' matter."""
    return re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)


def troubles_of(document, tree):
    """Everything that a document names and the tree does not have."""
    text = document.read_text(encoding="utf-8")
    for target in LINK.findall(without_blocks(text)):
        if "://" not in target and not (document.parent / target).exists():
            yield f"the link {target} leads nowhere"
    for code in CODE.findall(without_blocks(text)):
        yield from troubles_of_code(code, tree, document.parent)


def main(source):
    """All documents; every one is in the index."""
    tree = Tree(source)
    documents = [tree.source / "README.md", tree.source / "CHANGELOG.md",
                 tree.source / "bench" / "README.md", *sorted((tree.source / "docs").glob("*.md"))]
    failed, names = 0, 0
    index = tree.read("docs/README.md")
    for document in documents:
        names += len(CODE.findall(document.read_text(encoding="utf-8")))
        troubles = list(troubles_of(document, tree))
        if document.parent.name == "docs" and document.name not in index:
            troubles.append("docs/README.md does not list it")
        for trouble in troubles:
            print(f"FAILED: {document.relative_to(tree.source)}: {trouble}", file=sys.stderr)
        failed += len(troubles)
    print(f"{names} names in {len(documents)} documents")
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1]))
