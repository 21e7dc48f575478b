#ifndef STREAM_TIMES_H
#define STREAM_TIMES_H

#include <QtGlobal>

/// When the stream looks at the values, and when it beats. Times are StationClock::steady(),
/// microseconds.
///
///   change    1          2  3        4                       5
///   time   ---+----------+--+--------+---------+-------------+------->
///   look      *                      *         .    .    .   *          . finds no change
///   message   M1         :           M2+3      :             M5
///             |<------ 100 ms ------>|<---- 100 ms --->|
///
/// - The first change after 100 ms without a message goes at once (1, 5). What changes in the
///   100 ms after a message goes in one message at their end, with the last state (2, 3). A change
///   at that end goes with it or 100 ms later, never lost (4).
/// - No news comes of a value that grows old, so that a look is due each 100 ms without one.
/// - A full snapshot is a message like each other: no client gets more than 10 in a second.
class StreamTimes
{
public:
    enum { WINDOW = 100000, BEAT = 1000000 };

    /// The first client came.
    void begin(qint64 now);

    /// @param isWanted  there is news, or a client waits for a full snapshot
    bool isLookDue(qint64 now, bool isWanted) const;
    void looked(qint64 now, bool hasSent);

    bool isBeatDue(qint64 now) const;
    void beaten(qint64 now);

    /// When the next look or beat is due.
    qint64 next(bool isWanted) const;

private:
    qint64 m_lastLook = 0;
    qint64 m_windowEnd = 0; ///< of the last message
    qint64 m_nextBeat = 0;
};

#endif
