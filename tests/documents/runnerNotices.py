#!/usr/bin/env python3
"""Whether the runner of the documents notices a document that is wrong.

usage: runnerNotices.py SOURCE BUILD PROGRAM_FOLDER...
"""

import subprocess
import sys
import tempfile
from pathlib import Path

from marks import DEVICES, MARKS

RUNNER = Path(__file__).with_name("runDocument.py")
CHECK = "    $ kakb-host check MX 13.1\n"
VALID = ("    MX 13.1: valid, address number 3105, bit 9 of holding register 3006 (function 3), "
         "written as coil 3105 (function 5)\n")
LISTING = "<!-- the file: LICENSE -->\n```cpp\n{}```\n"

# name: (document, whether it is right)
DOCUMENTS = {
    "output as shown": (CHECK + VALID, True),
    "other output": (CHECK + VALID.replace("3105,", "3106,"), False),
    "output cut short": (CHECK, True),
    "a line more than is printed": (CHECK + VALID + "    and more\n", False),
    "lines left out": (CHECK + "    ...\n", True),
    "a status that is not asked for": ("    $ kakb-host check MW 101\n", False),
    "a status that is asked for": ("    $ kakb-host check MW 101\n    $ echo $?\n    7\n", True),
    "another status": ("    $ kakb-host check MW 101\n    $ echo $?\n    6\n", False),
    "an option that there is not": ("    kakb-host info --yaml\n", False),
    "a command that fails": ("    kakb-host plan --tags missing.csv\n", False),
    "a figure that varies": ("    $ kakb-sim\n    /dev/pts/999\n", True),
    "a figure that does not": (
        "    $ kakb-host write MW200=7\n    MW200 = 8 confirmed\n", False),
    "a block of no kind": ("    what is this\n", False),
    "a program that there is not": ("    kakb-hoster info\n", False),
    "a listing of no file": ("```cpp\nint a;\n```\n", False),
    "a listing unlike its file": (LISTING.format("int a;\n"), False),
    "a tag file": ("    name,station,area,address,type,comment\n    a,1,MW,0,int16,\n", True),
    "a tag file with a wrong type": (
        "    name,station,area,address,type,comment\n    a,1,MW,0,int17,\n", False),
    "a change that does not fit": (
        "<!-- builds the driver in /tmp/x -->\n```diff\n--- a/include/areaRow.h\n"
        "+++ b/include/areaRow.h\n@@ -1,1 +1,1 @@\n-no such line\n+another\n```\n", False),
    "a mark": ("    scripts/mutate.sh\n", True),
    "a script that there is not": ("    scripts/mutation.sh\n", False),
}


def unused_marks(source):
    """Marks and devices that stand in no document."""
    texts = "".join(file.read_text(encoding="utf-8") for file in
                    [source / "README.md", *source.glob("*/*.md")])
    return [mark for mark in [*MARKS, *DEVICES] if mark not in texts]


def main(source, *arguments):
    """Each document by itself."""
    failed = 0
    with tempfile.TemporaryDirectory() as folder:
        document = Path(folder) / "document.md"
        for name, (text, right) in DOCUMENTS.items():
            document.write_text(f"# Document\n\n{text}", encoding="utf-8")
            run = subprocess.run([sys.executable, "-B", RUNNER, document, source, *arguments],
                                 text=True, capture_output=True, check=False)
            if (run.returncode == 0) != right:
                print(f"FAILED: {name}\n{run.stdout}{run.stderr}", file=sys.stderr)
                failed += 1
    for mark in unused_marks(Path(source)):
        print(f"FAILED: no document has: {mark}", file=sys.stderr)
        failed += 1
    print(f"{len(DOCUMENTS)} documents")
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
