#ifndef REPLY_HISTOGRAM_H
#define REPLY_HISTOGRAM_H

#include <QtGlobal>

#include <array>

/// Counts reply times at fixed bounds, for monitoring.
struct ReplyHistogram
{
    enum { BOUNDS = 12 };

    /// The upper bounds, in microseconds, ascending: 1 ms to 5 s.
    static const std::array<qint64, BOUNDS>& bounds();

    /// @param replyTime  microseconds; negative: not known, not counted
    void add(qint64 replyTime);

    std::array<quint64, BOUNDS> within = {}; ///< by bound: the replies that took no longer than it
    quint64 count = 0;                       ///< of all replies
    qint64 sum = 0;                          ///< of all reply times, in microseconds
};

#endif
