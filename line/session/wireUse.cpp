#include "session/wireUse.h"

#include <algorithm>

WireUse::WireUse(qint64 since) : m_since(since), m_lastUntil(since) {}

void WireUse::add(qint64 from, qint64 until)
{
    const qint64 begin = std::max(from, m_lastUntil);
    if (until <= begin) return;
    m_busy += until - begin;
    m_lastUntil = until;
}

/// A frame just handed to the port counts only as far as it is on the wire by now.
double WireUse::share(qint64 now) const
{
    if (now <= m_since) return 0;
    const qint64 ahead = std::max(qint64(0), m_lastUntil - now);
    return std::clamp(double(m_busy - ahead) / double(now - m_since), 0.0, 1.0);
}
