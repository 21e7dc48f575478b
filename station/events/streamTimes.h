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
/// - The news that a link is lost waits for no window. The message that goes then has its window
///   behind the one that is open, so that the next message is as late as without it:
///
///   time   ---+-----+-------------------------------------+---------->
///   message   M1    | link lost: M2                       M3
///             |<------ 100 ms ------>|<------ 100 ms ---->|
///
/// - No news comes of a value that grows old, so that a look is due each 100 ms without one.
/// - A full snapshot is a message like each other: no client gets more than 10 in a second,
///   and one more at a loss.
class StreamTimes
{
public:
    enum { WINDOW = 100000, BEAT = 1000000 };

    /// The first client came.
    void begin(qint64 now);

    enum Wanted {
        NOT_WANTED,
        WANTED, ///< there is news, or a client waits for a full snapshot
        URGENT  ///< a link is lost
    };

    bool isLookDue(qint64 now, Wanted wanted) const;
    void looked(qint64 now, bool hasSent);

    bool isBeatDue(qint64 now) const;
    void beaten(qint64 now);

    /// When the next look or beat is due.
    qint64 next(Wanted wanted) const;

private:
    qint64 m_lastLook = 0;
    qint64 m_windowEnd = 0; ///< of the last message; at most two windows ahead
    qint64 m_nextBeat = 0;
};

#endif
