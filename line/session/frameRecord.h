#ifndef FRAME_RECORD_H
#define FRAME_RECORD_H

#include <QByteArray>

/// Bytes that were sent or received at one time, or the end of a wait without an answer, for traces
/// and captures.
struct FrameRecord
{
    enum Direction {
        SENT,
        SENT_FENCE, ///< a read by the host itself: its answer shows that no late reply follows
        RECEIVED,
        NO_ANSWER ///< nothing came within the time-out of the last sent bytes; has no bytes
    };

    qint64 time = 0; ///< microseconds since the host started
    Direction direction = SENT;
    QByteArray bytes;
};

#endif
