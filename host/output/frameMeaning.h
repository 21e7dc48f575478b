#ifndef FRAME_MEANING_H
#define FRAME_MEANING_H

#include <QByteArray>
#include <QString>

// What a Modbus RTU frame says, in words on one line, for whoever reads a trace. Registers and
// coils go by their numbers on the wire. Of many values the first ones are shown, then an ellipsis.

/// "station 1: read 4 holding registers from 3000", "broadcast: write register 3001 = 1234",
/// "checksum wrong", "3 bytes that are no frame".
QString requestMeaning(const QByteArray& bytes);

/// "station 1: 2 registers 0x1234 0x5678", "station 1: echo, written", "station 1: exception 2:
/// illegal address", "7 bytes of a reply of 9"; a good frame that does not answer the request ends
/// in ", not the answer".
/// @param request  what was sent before; empty: nothing was
QString replyMeaning(const QByteArray& bytes, const QByteArray& request);

#endif
