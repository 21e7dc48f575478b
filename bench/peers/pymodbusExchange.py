"""pymodbus for orientation: a read request is built and its reply taken apart, without a line.

usage: pymodbusExchange.py
Prints a line each: words and nanoseconds of processor time, the fastest of several runs.
"""

import time

from pymodbus.factory import ClientDecoder
from pymodbus.framer.rtu_framer import ModbusRtuFramer
from pymodbus.register_read_message import (
    ReadHoldingRegistersRequest,
    ReadHoldingRegistersResponse,
)

STATION = 1
FIRST_WORD = 3000
EXCHANGES = 500
RUNS = 7


def nanoseconds_of_exchange(words):
    framer = ModbusRtuFramer(ClientDecoder())
    answer = ReadHoldingRegistersResponse([0] * words)
    answer.unit_id = STATION
    reply = framer.buildPacket(answer)
    answers = []
    start = time.process_time_ns()
    for _ in range(EXCHANGES):
        request = ReadHoldingRegistersRequest(FIRST_WORD, words, STATION)
        framer.buildPacket(request)
        framer.processIncomingPacket(reply, answers.append, STATION)
    taken = time.process_time_ns() - start
    assert len(answers) == EXCHANGES and len(answers[0].registers) == words
    return taken / EXCHANGES


for count in (1, 125):
    print(count, round(min(nanoseconds_of_exchange(count) for _ in range(RUNS))))
