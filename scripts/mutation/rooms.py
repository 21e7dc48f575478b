"""The project's rooms and their files that are changed. A room's folders may move inside it."""

DRIVER = "driver"
ROOMS = {
    DRIVER: ("device", "service", "include"),
    "line": ("line",),
    "host": ("host",),
    "simulator": ("simulator",),
}
# No unit test links what starts a program.
PROGRAM_START = "main.cpp"


def files_of(root, room):
    """Sources first, as a header's mutant takes much longer."""
    found = []
    for suffix in (".cpp", ".h"):
        for folder in ROOMS[room]:
            found += sorted(
                str(path.relative_to(root))
                for path in (root / folder).rglob("*" + suffix)
                if path.name != PROGRAM_START
            )
    return found


def room_of(file):
    return next(room for room, folders in ROOMS.items() if file.split("/")[0] in folders)
