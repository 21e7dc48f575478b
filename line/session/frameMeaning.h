#ifndef FRAME_MEANING_H
#define FRAME_MEANING_H

#include "session/frameGatherer.h"

#include <QString>

// The meaning of Modbus RTU frames in words, for whoever shows the frames of a link. Registers and
// coils have their numbers on the wire. A long list of values is cut; an ellipsis follows.

/// "station 1: read 4 holding registers from 3000", "broadcast: write register 3001 = 1234",
/// "checksum wrong", "3 bytes that are no frame".
QString requestMeaning(const QByteArray& bytes);

/// "station 1: 2 registers 0x1234 0x5678", "station 1: echo, written", "station 1: exception 2:
/// illegal address", "7 bytes of a reply of 9". The text of a good frame that does not answer the
/// request ends in ", not the answer".
/// @param request  the last request sent before; empty: none
QString replyMeaning(const QByteArray& bytes, const QByteArray& request);

/// The meaning of a gathered frame; a fence is called one. Of bytes that answer no request it says
/// why they were dropped: "stray: 1 byte, too few for an answer", "echo of the request".
QString frameMeaning(const GatheredFrame& frame);

#endif
