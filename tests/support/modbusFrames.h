#ifndef MODBUS_FRAMES_H
#define MODBUS_FRAMES_H

#include "modbusChecksum.h"

#include <QByteArray>

// Fields of Modbus RTU frames: bytes without sign, and words whose high byte comes first.

inline int byteOf(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

inline int wordOf(const QByteArray& bytes, int at)
{
    return byteOf(bytes, at) << 8 | byteOf(bytes, at + 1);
}

inline void putWord(QByteArray& bytes, int word)
{
    bytes.append(static_cast<char>(word >> 8 & 255));
    bytes.append(static_cast<char>(word & 255));
}

/// The reply to a read of registers, each of which holds what valueOf(register) says.
template <typename ValueOf> QByteArray readReplyOf(const QByteArray& request, ValueOf valueOf)
{
    const int first = wordOf(request, 2);
    const int count = wordOf(request, 4);
    QByteArray reply = request.left(2);
    reply.append(static_cast<char>(2 * count));
    for (int i = 0; i < count; ++i)
        putWord(reply, valueOf(first + i));
    return frameWith(reply);
}

/// The exception reply to the request, closed by its checksum.
inline QByteArray refusalOf(const QByteArray& request, int code = 2)
{
    QByteArray reply = request.left(1);
    reply.append(static_cast<char>(byteOf(request, 1) | 128));
    reply.append(static_cast<char>(code));
    return frameWith(reply);
}

#endif
