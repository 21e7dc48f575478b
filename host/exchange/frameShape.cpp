#include "exchange/frameShape.h"

namespace {

enum { QUANTITY_AT = 4 };

} // namespace

int frameByte(const QByteArray& frame, int at)
{
    return static_cast<unsigned char>(frame.at(at));
}

int frameWord(const QByteArray& frame, int at)
{
    return frameByte(frame, at) * 256 + frameByte(frame, at + 1);
}

/// MODBUS over Serial Line V1.02, 6.2.2.
bool hasRightChecksum(const QByteArray& frame)
{
    if (frame.size() < SHORTEST_FRAME) return false;
    const int checksumAt = int(frame.size()) - 2;
    unsigned remainder = 0xFFFF;
    for (int i = 0; i < checksumAt; ++i) {
        remainder ^= unsigned(frameByte(frame, i));
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) != 0 ? (remainder >> 1) ^ 0xA001u : remainder >> 1;
    }
    return unsigned(frameByte(frame, checksumAt) + 256 * frameByte(frame, checksumAt + 1)) ==
           remainder;
}

int dueReplyLength(const QByteArray& request)
{
    if (request.size() < FIXED_REQUEST_BYTES || frameByte(request, 0) == 0) return 0;
    switch (frameByte(request, 1)) {
    case READ_HOLDING:
    case READ_INPUT:
        return READ_OVERHEAD + 2 * frameWord(request, QUANTITY_AT);
    case WRITE_COIL:
    case WRITE_REGISTER:
    case WRITE_COILS:
    case WRITE_REGISTERS:
        return FIXED_REQUEST_BYTES;
    default:
        return 0;
    }
}
