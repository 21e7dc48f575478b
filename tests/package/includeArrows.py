#!/usr/bin/env python3
"""Includes point one way: a room includes only the rooms below it.

usage: includeArrows.py PROJECT
Exit status: 0 no arrow runs back, 1 else; each such include is printed with its file and line.

    host/verbs -> host/program -> host/output            the command line
        |
        v
    station/program -> station/events -> station/api -> station/machine, history, http
        |                                                   -> station/values   the resident station
        +------------> station/plant, sparkplug, topics -> station/machine, samples, broker
        v
    line/session -> line/exchange, line/links, line/plan -> line/driver, line/wire
        |
        v
    include/quorvane_ka_kb_plc.h                          the host header, nothing else of the driver

    service -> device -> include                          the driver
    simulator                                             shares no code with them
"""

import pathlib
import re
import sys

HOST_HEADER = "quorvane_ka_kb_plc.h"
DRIVER = {"include", "device", "service", "service/otherWidths"}
LINE_BASE = {"line/wire", "line/driver"}
LINE = LINE_BASE | {"line/exchange", "line/links", "line/plan", "line/session"}
STATION_BASE = LINE | {"station/values", "station/machine", "station/history", "station/http"}
# What speaks MQTT. The last three are one storey: the rooms of the dialects, and what they share.
NEWS = {"station/samples", "station/broker"}
PLANT = NEWS | {"station/plant", "station/sparkplug", "station/topics"}
STATION = (STATION_BASE | PLANT
           | {"station/page", "station/api", "station/events", "station/program"})

# A room and the rooms that it may include, beside itself.
MAY_INCLUDE = {
    "include": set(),
    "device": {"include"},
    "service": DRIVER,
    "service/otherWidths": DRIVER,
    "line/wire": set(),
    "line/driver": set(),
    "line/exchange": {"line/wire"},
    "line/links": LINE_BASE,
    "line/plan": LINE_BASE,
    "line/session": LINE,
    "host/output": LINE,
    "host/program": LINE | {"host/output"},
    "host/verbs": LINE | {"host/output", "host/program"},
    "host": LINE | {"host/output", "host/program", "host/verbs"},
    "station/values": LINE,
    "station/machine": LINE | {"station/values"},
    "station/samples": LINE | {"station/values"},
    "station/broker": {"station/values", "station/http"},
    "station/plant": LINE | PLANT | {"station/values", "station/machine", "station/http"},
    "station/sparkplug": LINE | PLANT | {"station/values", "station/machine"},
    "station/topics": LINE | PLANT | {"station/values", "station/machine"},
    "station/history": LINE | {"station/values", "station/machine", "station/samples",
                               "station/plant"},
    "station/http": LINE_BASE | {"line/links", "station/values"},
    "station/page": {"station/http"},
    "station/api": STATION_BASE | {"station/plant"},
    "station/events": STATION_BASE | {"station/api"},
    "station/program": STATION,
    "station": STATION,
    "simulator": set(),
}
WITH_HOST_HEADER = (LINE - {"line/wire", "line/exchange"} | STATION - LINE
                    | {"host/output", "host/program", "host/verbs", "host"})
INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def room_of(path, project):
    """The folder of a file, as the rooms are named."""
    return str(path.parent.relative_to(project))


def target_of(name, path, project):
    """The file that an include names; None when the project has none."""
    room = room_of(path, project)
    top = room.split("/", maxsplit=1)[0]
    for base in (path.parent, project / top, project / "line", project / "include",
                 project / "device", project / "service", project):
        if (base / name).is_file():
            return (base / name).resolve()
    return None


def may_include(room, target, project):
    """Whether a file of the room may include the target."""
    if target == project / "include" / HOST_HEADER and room in WITH_HOST_HEADER:
        return True
    target_room = room_of(target, project)
    return target_room == room or target_room in MAY_INCLUDE.get(room, set())


def arrows_back(path, text, project):
    """The includes of one file that break the rule, and how many were looked at."""
    room = room_of(path, project)
    name_in_project = path.relative_to(project)
    found = [] if room in MAY_INCLUDE else [f"{name_in_project}: the room {room} has no rule"]
    includes = list(INCLUDE.finditer(text))
    for match in includes:
        target = target_of(match.group(1), path, project)
        if target is None or not may_include(room, target, project):
            line = text.count("\n", 0, match.start()) + 1
            found.append(f"{name_in_project}:{line}: {match.group(1)}")
    return found, len(includes)


def sources(project):
    """Every source file of the product."""
    for top in ("include", "device", "service", "line", "host", "station", "simulator"):
        for path in sorted((project / top).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path


# Each of them has to be found, or the rules above let everything pass.
PLANTED = (
    ("line/wire/frameShape.h", "exchange/exchangeMachine.h"),
    ("line/exchange/answerOrder.h", "session/sessionSink.h"),
    ("line/links/link.h", "plan/tag.h"),
    ("line/plan/tag.h", "session/sharedValues.h"),
    ("line/session/linkRun.h", "output/outputStream.h"),
    ("line/session/linkRun.h", "driverState.h"),
    ("line/exchange/answerOrder.h", HOST_HEADER),
    ("host/output/columnText.h", "program/exitStatus.h"),
    ("host/program/exitStatus.h", "verbs/readVerb.h"),
    ("station/values/linkValues.h", "machine/machineLink.h"),
    ("station/http/httpServer.h", "api/stationParts.h"),
    ("station/machine/machineLink.h", "output/outputStream.h"),
    ("station/broker/brokerSession.h", "sparkplug/payload.h"),
    ("station/sparkplug/payload.h", "history/history.h"),
    ("host/verbs/readVerb.h", "values/linkValues.h"),
    ("include/driverState.h", "device/checksum.h"),
    ("device/checksum.h", "service/recipes.h"),
    ("service/recipes.h", "wire/frameShape.h"),
)


def main():
    """Looks at the project, then at the project with each planted arrow."""
    project = pathlib.Path(sys.argv[1]).resolve()
    found, looked_at = [], 0
    for path in sources(project):
        wrong, includes = arrows_back(path, path.read_text(encoding="utf-8"), project)
        found += wrong
        looked_at += includes
    for at, name in PLANTED:
        if not arrows_back(project / at, f'#include "{name}"\n', project)[0]:
            found.append(f"an include of {name} in {at} would pass")
    print("\n".join(found))
    print(f"{looked_at} includes read, {len(found)} of them wrong")
    return 1 if found or looked_at == 0 else 0


if __name__ == "__main__":
    sys.exit(main())
