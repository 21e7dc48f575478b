#include "session/memoryRun.h"

#include "wire/deviceRegisters.h"
#include "wire/frameShape.h"

namespace {

enum {
    BYTE_BITS = 8,
    SINGLE_VALUE_AT = 4,  // of functions 5 and 6
    MULTIPLE_DATA_AT = 7, // of functions 15 and 16
    CHECKSUM_BYTES = 2
};

/// Markers begin at register 3000 and at coil 3000, outputs at 0 and 0.
int placeOfCoil(int coil)
{
    if (coil < FIRST_MARKER) return coil;
    return FIRST_MARKER * MemoryRun::REGISTER_BITS + coil - FIRST_MARKER;
}

/// Sets the run's bits; without the data for all of them the run stays empty.
void hold(MemoryRun& run, int first, int bits, const QByteArray& data)
{
    if (bits > data.size() * BYTE_BITS) return;
    run.from = first;
    run.until = first + bits;
    run.data = data;
}

QByteArray dataOf(const QByteArray& frame, int at)
{
    return frame.mid(at, frame.size() - at - CHECKSUM_BYTES);
}

void holdRead(MemoryRun& run, int function, const QByteArray& request, const QByteArray& reply)
{
    if (reply.size() != dueReplyLength(request) || frameByte(reply, 1) != function) return;
    run.table = function == READ_INPUT ? MemoryRun::INPUT : MemoryRun::HOLDING;
    hold(run, frameWord(request, FIRST_REGISTER_AT) * MemoryRun::REGISTER_BITS,
         frameWord(request, QUANTITY_AT) * MemoryRun::REGISTER_BITS, dataOf(reply, DATA_AT));
}

void holdWrite(MemoryRun& run, int function, const QByteArray& request)
{
    const int first = frameWord(request, FIRST_REGISTER_AT);
    const int quantity = frameWord(request, QUANTITY_AT); // of 5 and 6: the value
    run.isCoils = function == WRITE_COIL || function == WRITE_COILS;
    switch (function) {
    case WRITE_COIL:
        return hold(run, placeOfCoil(first), 1, QByteArray(1, char(quantity != 0 ? 1 : 0)));
    case WRITE_COILS:
        return hold(run, placeOfCoil(first), quantity, dataOf(request, MULTIPLE_DATA_AT));
    case WRITE_REGISTER:
        return hold(run, first * MemoryRun::REGISTER_BITS, MemoryRun::REGISTER_BITS,
                    dataOf(request, SINGLE_VALUE_AT));
    case WRITE_REGISTERS:
        return hold(run, first * MemoryRun::REGISTER_BITS, quantity * MemoryRun::REGISTER_BITS,
                    dataOf(request, MULTIPLE_DATA_AT));
    default:
        return;
    }
}

} // namespace

int MemoryRun::bit(int place) const
{
    if (!isCoils) return word(place / REGISTER_BITS * REGISTER_BITS) >> place % REGISTER_BITS & 1;
    const int at = place - from;
    return static_cast<unsigned char>(data.at(at / BYTE_BITS)) >> at % BYTE_BITS & 1;
}

int MemoryRun::word(int place) const
{
    if (!isCoils) return frameWord(data, (place - from) / BYTE_BITS);
    int bits = 0;
    for (int k = 0; k < REGISTER_BITS; ++k)
        bits |= bit(place + k) << k;
    return bits;
}

MemoryRun memoryShownBy(const QByteArray& request, const QByteArray& reply)
{
    MemoryRun run;
    if (request.size() < FIXED_REQUEST_BYTES) return run;
    run.station = frameByte(request, 0);
    const int function = frameByte(request, 1);
    if (isRead(request))
        holdRead(run, function, request, reply);
    else
        holdWrite(run, function, request);
    return run;
}
