#include "events/streamTimes.h"

#include <algorithm>

void StreamTimes::begin(qint64 now)
{
    m_nextBeat = now + BEAT;
}

bool StreamTimes::isLookDue(qint64 now, Wanted wanted) const
{
    if (wanted == URGENT && now >= m_windowEnd - WINDOW) return true;
    return now >= m_windowEnd && (wanted != NOT_WANTED || now >= m_lastLook + WINDOW);
}

void StreamTimes::looked(qint64 now, bool hasSent)
{
    m_lastLook = now;
    if (hasSent) m_windowEnd = std::max(now, m_windowEnd) + WINDOW;
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

qint64 StreamTimes::next(Wanted wanted) const
{
    qint64 look = m_windowEnd;
    if (wanted == URGENT) look -= WINDOW;
    if (wanted == NOT_WANTED) look = std::max(look, m_lastLook + WINDOW);
    return std::min(look, m_nextBeat);
}
