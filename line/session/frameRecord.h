#ifndef FRAME_RECORD_H
#define FRAME_RECORD_H

#include <QByteArray>

/// Bytes that went over the link at one time, for traces and captures.
struct FrameRecord
{
    enum Direction {
        SENT,
        SENT_FENCE, ///< a read of the host's own, which brings the link into step
        RECEIVED
    };

    qint64 time = 0; ///< microseconds since the host started
    Direction direction = SENT;
    QByteArray bytes;
};

#endif
