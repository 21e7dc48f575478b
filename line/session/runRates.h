#ifndef RUN_RATES_H
#define RUN_RATES_H

#include "session/linkFigures.h"
#include "session/replyTimes.h"
#include "session/wireUse.h"

/// A link's rates over the whole run, in the same memory however long it is. Times are microseconds
/// of one clock.
class RunRates
{
public:
    RunRates() : m_wire(0) {}

    /// Exchanges are counted from here on; the wire from 0.
    void start(qint64 now);

    /// @param replyTime  negative: none came
    void exchanged(qint64 replyTime);

    void wireTaken(qint64 from, qint64 until);

    LinkRates at(qint64 now) const;

private:
    qint64 m_since = 0;
    qint64 m_exchanges = 0;
    ReplyTimes m_replyTimes;
    bool m_hasWire = false;
    WireUse m_wire;
};

#endif
