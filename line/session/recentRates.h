#ifndef RECENT_RATES_H
#define RECENT_RATES_H

#include "session/linkFigures.h"
#include "session/replyTimes.h"

#include <deque>

/// A link's rates in the last ten seconds, or since its start while that is not so long ago. What
/// is older is forgotten. Times are microseconds of one clock and never go back.
class RecentRates
{
public:
    enum { WINDOW = 10000000 };

    void start(qint64 now);

    /// @param replyTime  negative: none came
    void exchanged(qint64 replyTime, qint64 now);

    /// The wire is taken up to a time that may lie ahead. What an earlier call covered, and
    /// whatever lies before its end, does not count again.
    void wireTaken(qint64 from, qint64 until);

    LinkRates at(qint64 now);

private:
    struct Exchange
    {
        qint64 time;
        qint64 replyTime;
    };
    struct Span
    {
        qint64 from;
        qint64 until;
    };

    void forgetUntil(qint64 time);
    double wireShare(qint64 from, qint64 now) const;

    qint64 m_since = 0;
    std::deque<Exchange> m_exchanges;
    ReplyTimes m_replyTimes; ///< of m_exchanges
    bool m_hasWire = false;
    std::deque<Span> m_wire; ///< ascending, none overlaps another
};

#endif
