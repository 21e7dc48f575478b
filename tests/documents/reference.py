#!/usr/bin/env python3
"""Makes the API reference and sees whether every export and everything in the records is described.

usage: reference.py SOURCE DRIVER_LIBRARY
"""

import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ElementTree
from pathlib import Path


def exports_of(library):
    """The library's own functions, as the linker knows them."""
    lines = subprocess.run(["nm", "-D", "--defined-only", library], check=True, text=True,
                           stdout=subprocess.PIPE).stdout.splitlines()
    return {line.split()[2] for line in lines if " T " in line}


def described(member):
    """Whether a member has a description of its own."""
    return any("".join(part.itertext()).strip() for name in ("briefdescription",
               "detaileddescription") for part in member.findall(name))


def main(source, library):
    """A warning of doxygen is an error of its own, by docs/Doxyfile."""
    with tempfile.TemporaryDirectory() as folder:
        made = subprocess.run([Path(source) / "scripts" / "reference.sh", folder], check=False)
        if made.returncode:
            return 1
        documents = [ElementTree.parse(file) for file in Path(folder, "xml").glob("*8h.xml")]
        documents += [ElementTree.parse(file) for file in Path(folder, "xml").glob("struct*.xml")]
        page = Path(folder, "html", "quorvane__ka__kb__plc_8h.html").read_text(encoding="utf-8")
    functions, undescribed = set(), []
    for document in documents:
        for member in [*document.iter("memberdef"), *document.iter("enumvalue")]:
            name = member.findtext("name")
            if member.get("kind") == "function" and name.startswith("intf_"):
                functions.add(name)
            constructor = member.get("kind") == "function" and not name.startswith("intf_")
            # An enumeration without a name is its values.
            if not name.startswith("@") and not constructor and not described(member):
                undescribed.append(name)
    missing = exports_of(library) ^ functions
    for name in undescribed:
        print(f"FAILED: {name} is not described", file=sys.stderr)
    for name in missing:
        print(f"FAILED: {name} is exported or described, not both", file=sys.stderr)
    unseen = [name for name in [*functions, "Address numbers."] if name not in page]
    for name in unseen:
        print(f"FAILED: {name} is not on the page", file=sys.stderr)
    print(f"{len(functions)} functions")
    return 1 if undescribed or missing or unseen else 0


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    sys.exit(main(*sys.argv[1:]))
