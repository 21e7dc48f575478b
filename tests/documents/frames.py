#!/usr/bin/env python3
"""Looks at every frame that a document shows, with pymodbus.

usage: frames.py DOCUMENT...
Each has the checksum that pymodbus computes, and each request is the one that pymodbus builds for what
the words behind it say. An area's example must be there for each of the six areas and functions.
"""

import re
import sys
from pathlib import Path

from pymodbus.bit_write_message import WriteMultipleCoilsRequest, WriteSingleCoilRequest
from pymodbus.framer.rtu_framer import ModbusRtuFramer
from pymodbus.register_read_message import ReadHoldingRegistersRequest, ReadInputRegistersRequest
from pymodbus.register_write_message import WriteMultipleRegistersRequest, WriteSingleRegisterRequest

sys.path.insert(0, str(Path(__file__).resolve().parents[1] / "support"))
from rtuFrames import is_whole

FRAME = re.compile(r"^ +\d+\.\d{6} ([<>]) ((?:[0-9A-F]{2} )+) *station (\d+): (.*)$")
IN_TABLE = re.compile(r"^ *\| [<>] \| `((?:[0-9A-F]{2} )+[0-9A-F]{2})` \|")
MEANINGS = (
    (r"read (\d+) holding registers? from (\d+)(?:, a fence)?", lambda n, a: ReadHoldingRegistersRequest(a, n)),
    (r"read (\d+) input registers? from (\d+)(?:, a fence)?", lambda n, a: ReadInputRegistersRequest(a, n)),
    (r"write register (\d+) = (\d+)", WriteSingleRegisterRequest),
    (r"write coil (\d+) = ([01])", lambda a, on: WriteSingleCoilRequest(a, bool(on))),
    (r"write \d+ registers from (\d+) = ([\d ]+)", WriteMultipleRegistersRequest),
    (r"write \d+ coils from (\d+) = ([\d ]+)",
     lambda a, bits: WriteMultipleCoilsRequest(a, [bool(bit) for bit in bits])),
)
FUNCTIONS_OF_WIRE = {3, 4, 5, 6, 15, 16}


def number_or_list(text):
    """"17 4" is a list, "17" a number."""
    values = [int(word) for word in text.split()]
    return values if len(values) > 1 else values[0]


def built_by_pymodbus(meaning, station):
    """The request that the words stand for."""
    for pattern, build in MEANINGS:
        match = re.fullmatch(pattern, meaning)
        if match:
            request = build(*map(number_or_list, match.groups()))
            request.unit_id = request.slave_id = station
            return ModbusRtuFramer(None).buildPacket(request)
    return None


def trouble_of(direction, frame, station, meaning):
    """What is wrong with one frame; None: nothing."""
    if not is_whole(frame):
        return "checksum"
    if frame[0] != station:
        return "station"
    if direction == ">" and frame != built_by_pymodbus(meaning, station):
        return f"pymodbus builds {built_by_pymodbus(meaning, station)}"
    return None


def main(documents):
    """All frames of all documents."""
    failed, functions, count = 0, set(), 0
    for document in documents:
        for number, line in enumerate(Path(document).read_text(encoding="utf-8").splitlines(), 1):
            in_table = IN_TABLE.match(line)
            if in_table:
                count += 1
                frame = bytes.fromhex(in_table.group(1))
                if not is_whole(frame):
                    print(f"FAILED: {document}:{number}: checksum", file=sys.stderr)
                    failed += 1
            match = FRAME.match(line)
            if not match:
                continue
            count += 1
            frame = bytes.fromhex(match.group(2))
            trouble = trouble_of(match.group(1), frame, int(match.group(3)), match.group(4))
            if Path(document).name == "wire.md":
                functions.add(frame[1] & 0x7F)
            if trouble:
                print(f"FAILED: {document}:{number}: {trouble}", file=sys.stderr)
                failed += 1
    if functions != FUNCTIONS_OF_WIRE:
        print(f"FAILED: wire.md shows functions {sorted(functions)}", file=sys.stderr)
        failed += 1
    print(f"{count} frames")
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1:]))
