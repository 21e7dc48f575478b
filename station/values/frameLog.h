#ifndef FRAME_LOG_H
#define FRAME_LOG_H

#include "session/frameRecord.h"

#include <deque>
#include <mutex>
#include <vector>

/// A frame of a link with its place in the link's row of frames.
struct LoggedFrame
{
    quint64 number = 0; ///< counts up from 1
    qint64 time = 0;    ///< ms since 1970
    FrameRecord::Direction direction = FrameRecord::SENT;
    QByteArray bytes;
};

/// The last frames of a link. The link's thread adds; any thread reads.
class FrameLog
{
public:
    enum { MOST_FRAMES = 1000 };

    void add(qint64 time, FrameRecord::Direction direction, const QByteArray& bytes);

    /// The frames behind `number`, oldest first.
    std::vector<LoggedFrame> since(quint64 number) const;

    quint64 lastNumber() const;

private:
    mutable std::mutex m_mutex;
    std::deque<LoggedFrame> m_frames; ///< guarded by m_mutex
    quint64 m_lastNumber = 0;         ///< guarded by m_mutex
};

#endif
