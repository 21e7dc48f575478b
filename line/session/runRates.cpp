#include "session/runRates.h"

#include "wire/timeUnits.h"

void RunRates::start(qint64 now)
{
    m_since = now;
}

void RunRates::exchanged(qint64 replyTime)
{
    ++m_exchanges;
    m_replyTimes.add(replyTime);
}

void RunRates::wireTaken(qint64 from, qint64 until)
{
    m_hasWire = true;
    m_wire.add(from, until);
}

LinkRates RunRates::at(qint64 now) const
{
    LinkRates rates;
    if (now > m_since)
        rates.exchangesPerSecond = double(m_exchanges) * SECOND / double(now - m_since);
    if (m_replyTimes.count() > 0) {
        rates.replyMedian = m_replyTimes.percentile(50);
        rates.reply99 = m_replyTimes.percentile(99);
    }
    if (m_hasWire) rates.wireShare = m_wire.share(now);
    return rates;
}
