"""An independent Modbus RTU server, as the host's peer.

usage: pymodbusServer.py DEVICE

Serves station 1 on a terminal until standard input ends. Then it prints the registers and coils
that are not 0, as lines "hr NUMBER VALUE" and "co NUMBER VALUE". The first line is printed when it
serves.
"""

import asyncio
import sys

from pymodbus.datastore import (
    ModbusSequentialDataBlock,
    ModbusServerContext,
    ModbusSlaveContext,
)
from pymodbus.server import async_io
from pymodbus.transaction import ModbusRtuFramer

UNITS = 65536
INPUT_REGISTERS = {0: 4711, 1: 0x8001, 5: 0x0204}
HOLDING_REGISTERS = {4: 0x8008, 20: 65535, 3050: 1234, 3051: 0xFFFE}


def block(values):
    """All units 0 but some."""
    return ModbusSequentialDataBlock(0, [values.get(n, 0) for n in range(UNITS)])


def dump(station):
    """What a host has written."""
    for name, function in (("hr", 3), ("co", 1)):
        values = station.getValues(function, 0, UNITS)
        for number, value in enumerate(values):
            if value:
                print(name, number, int(value))


async def main(device):
    """Serves until standard input ends."""
    station = ModbusSlaveContext(
        di=block({}),
        co=block({}),
        ir=block(INPUT_REGISTERS),
        hr=block(HOLDING_REGISTERS),
        zero_mode=True,
    )
    server = async_io.ModbusSerialServer(
        ModbusServerContext(slaves={1: station}, single=False),
        ModbusRtuFramer,
        port=device,
        baudrate=38400,
        ignore_missing_slaves=True,
    )
    await server.start()
    print("serving", flush=True)
    await asyncio.get_running_loop().run_in_executor(None, sys.stdin.read)
    await server.shutdown()
    dump(station)


asyncio.run(main(sys.argv[1]))
