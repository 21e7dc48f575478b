#include "wire/frameShape.h"

namespace {

/// The checksum of the first `count` bytes (MODBUS over Serial Line V1.02, 6.2.2).
unsigned checksumOf(const QByteArray& bytes, int count)
{
    unsigned remainder = 0xFFFF;
    for (int i = 0; i < count; ++i) {
        remainder ^= unsigned(frameByte(bytes, i));
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder & 1u) != 0 ? (remainder >> 1) ^ 0xA001u : remainder >> 1;
    }
    return remainder;
}

void appendWord(QByteArray& bytes, int word)
{
    bytes.append(static_cast<char>(word >> 8 & 0xFF));
    bytes.append(static_cast<char>(word & 0xFF));
}

} // namespace

int frameByte(const QByteArray& frame, int at)
{
    return static_cast<unsigned char>(frame.at(at));
}

int frameWord(const QByteArray& frame, int at)
{
    return frameByte(frame, at) * 256 + frameByte(frame, at + 1);
}

bool hasRightChecksum(const QByteArray& frame)
{
    if (frame.size() < SHORTEST_FRAME) return false;
    const int at = int(frame.size()) - 2;
    return unsigned(frameByte(frame, at) + 256 * frameByte(frame, at + 1)) == checksumOf(frame, at);
}

QByteArray withChecksum(const QByteArray& bytes)
{
    const unsigned checksum = checksumOf(bytes, int(bytes.size()));
    QByteArray frame = bytes;
    frame.append(static_cast<char>(checksum & 0xFFu));
    frame.append(static_cast<char>(checksum >> 8));
    return frame;
}

QByteArray readRequest(int station, int function, int first, int count)
{
    QByteArray bytes;
    bytes.append(static_cast<char>(station));
    bytes.append(static_cast<char>(function));
    appendWord(bytes, first);
    appendWord(bytes, count);
    return withChecksum(bytes);
}

bool isRead(const QByteArray& frame)
{
    const int function = frameByte(frame, 1);
    return function == READ_HOLDING || function == READ_INPUT;
}

bool isAnsweredByItself(const QByteArray& request)
{
    return !isRead(request) && request.size() == FIXED_REQUEST_BYTES;
}

int dueReplyLength(const QByteArray& request)
{
    if (request.size() < FIXED_REQUEST_BYTES || frameByte(request, 0) == BROADCAST_STATION)
        return 0;
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
