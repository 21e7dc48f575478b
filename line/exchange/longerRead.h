#ifndef LONGER_READ_H
#define LONGER_READ_H

#include <QByteArray>

// The answer to a read passes for the answer to the next read when both have the same length. So
// the machine sends the next read with one register more, and cuts the reply to the wanted
// registers.

/// The same read with one register more. The register lies behind the read, or ahead of the read at
/// the end of its area. Empty when the request is no read, or no longer read is possible.
QByteArray longerRead(const QByteArray& request);

/// The reply to `request`, cut out of the reply to the longer read. A refusal is returned
/// unchanged.
/// @param reply  the reply to `sent`
/// @param sent   the read that went out in place of `request`; may be `request` itself
QByteArray cutReply(const QByteArray& reply, const QByteArray& sent, const QByteArray& request);

/// First register of the area that the register lies in.
/// @param function  READ_HOLDING or READ_INPUT
int areaStart(int function, int reg);

/// Last register of the area that the register lies in.
/// @param function  READ_HOLDING or READ_INPUT
int areaEnd(int function, int reg);

#endif
