#include "session/recentRates.h"

#include "wire/timeUnits.h"

#include <algorithm>

void RecentRates::start(qint64 now)
{
    m_since = now;
}

void RecentRates::exchanged(qint64 replyTime, qint64 now)
{
    forgetUntil(now - WINDOW); // nobody may ever ask
    m_exchanges.push_back({now, replyTime});
    m_replyTimes.add(replyTime);
}

void RecentRates::wireTaken(qint64 from, qint64 until)
{
    forgetUntil(from - WINDOW);
    m_hasWire = true;
    const qint64 begin = m_wire.empty() ? from : std::max(from, m_wire.back().until);
    if (until > begin) m_wire.push_back({begin, until});
}

void RecentRates::forgetUntil(qint64 time)
{
    while (!m_exchanges.empty() && m_exchanges.front().time <= time) {
        m_replyTimes.remove(m_exchanges.front().replyTime);
        m_exchanges.pop_front();
    }
    while (!m_wire.empty() && m_wire.front().until <= time)
        m_wire.pop_front();
}

LinkRates RecentRates::at(qint64 now)
{
    forgetUntil(now - WINDOW);
    const qint64 from = std::max(m_since, now - WINDOW);
    LinkRates rates;
    if (now > from)
        rates.exchangesPerSecond = double(m_exchanges.size()) * SECOND / double(now - from);
    if (m_replyTimes.count() > 0) {
        rates.replyMedian = m_replyTimes.percentile(50);
        rates.reply99 = m_replyTimes.percentile(99);
    }
    if (m_hasWire) rates.wireShare = wireShare(from, now);
    return rates;
}

/// A frame just handed to the port counts only as far as it is on the wire by now.
double RecentRates::wireShare(qint64 from, qint64 now) const
{
    if (now <= from) return 0;
    qint64 busy = 0;
    for (const Span& span : m_wire)
        busy += std::max<qint64>(0, std::min(span.until, now) - std::max(span.from, from));
    return double(busy) / double(now - from);
}
