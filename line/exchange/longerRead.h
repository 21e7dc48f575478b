#ifndef LONGER_READ_H
#define LONGER_READ_H

#include <QByteArray>

// Two reads of one length that follow each other can be mistaken for one another. One of them then
// asks for a register more, and its reply is cut to what was wanted.

/// The same read with one register more behind it, or ahead of it at the end of its area; empty
/// when it is no read, or has all that one request may ask for.
QByteArray longerRead(const QByteArray& request);

/// The reply to `request` within the one to the longer read that was sent in its place.
QByteArray cutReply(const QByteArray& reply, const QByteArray& sent, const QByteArray& request);

/// First register of the area that a register lies in.
int areaStart(int function, int reg);

#endif
