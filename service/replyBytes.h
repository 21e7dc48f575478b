#ifndef REPLY_BYTES_H
#define REPLY_BYTES_H

#include <QByteArray>

/// Byte `at` of a reply. A place outside the reply counts as 0.
inline quint8 replyByte(const QByteArray& reply, qint64 at)
{
    return quint64(at) < quint64(reply.size()) ? quint8(reply.at(int(at))) : quint8(0);
}

#endif
