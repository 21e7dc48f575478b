#include "events/streamTimes.h"

#include <algorithm>

void StreamTimes::begin(qint64 now)
{
    m_nextBeat = now + BEAT;
}

bool StreamTimes::isLookDue(qint64 now, bool isWanted) const
{
    return now >= m_windowEnd && (isWanted || now >= m_lastLook + WINDOW);
}

void StreamTimes::looked(qint64 now, bool hasSent)
{
    m_lastLook = now;
    if (hasSent) m_windowEnd = now + WINDOW;
}

bool StreamTimes::isBeatDue(qint64 now) const
{
    return now >= m_nextBeat;
}

void StreamTimes::beaten(qint64 now)
{
    m_nextBeat += BEAT;
    if (m_nextBeat <= now) m_nextBeat = now + BEAT; // the process was stopped: no beats in a row
}

qint64 StreamTimes::next(bool isWanted) const
{
    const qint64 look = isWanted ? m_windowEnd : std::max(m_windowEnd, m_lastLook + WINDOW);
    return std::min(look, m_nextBeat);
}
