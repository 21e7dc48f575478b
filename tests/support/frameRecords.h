#ifndef FRAME_RECORDS_H
#define FRAME_RECORDS_H

#include "session/frameRecord.h"

// Frames of the MODBUS Application Protocol V1.1b3 (6.3, 6.6, 7); checksums by pymodbus'
// computeCRC.
const QByteArray READ_REQUEST = QByteArray::fromHex("01030BB80002460A");
const QByteArray READ_REPLY = QByteArray::fromHex("010304123456788107");
const QByteArray WRITE_REQUEST = QByteArray::fromHex("01060BB904D2D896");
const QByteArray REFUSAL = QByteArray::fromHex("018302C0F1");
const QByteArray BROADCAST = QByteArray::fromHex("00060BB904D2D947");

inline FrameRecord sent(qint64 time, const QByteArray& bytes)
{
    return {time, FrameRecord::SENT, bytes};
}

inline FrameRecord fence(qint64 time, const QByteArray& bytes)
{
    return {time, FrameRecord::SENT_FENCE, bytes};
}

inline FrameRecord received(qint64 time, const QByteArray& bytes)
{
    return {time, FrameRecord::RECEIVED, bytes};
}

inline FrameRecord noAnswer(qint64 time)
{
    return {time, FrameRecord::NO_ANSWER, QByteArray()};
}

#endif
