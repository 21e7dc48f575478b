#include "replySlots.h"

#include <algorithm>

std::int64_t ReplySlots::earliest(int station, std::int64_t ready) const
{
    const auto end = m_stationEnds.find(station);
    const std::int64_t ownEnd = end == m_stationEnds.end() ? 0 : end->second;
    return std::max({ready, ownEnd, m_everyoneAfter});
}

std::int64_t ReplySlots::take(int station, std::int64_t ready, std::int64_t duration)
{
    std::int64_t start = earliest(station, ready);
    auto next = m_taken.begin();
    for (; next != m_taken.end() && next->start < start + duration; ++next)
        start = std::max(start, next->end);
    // A frame that takes no time blocks no other frame.
    if (duration > 0) m_taken.insert(next, {start, start + duration});
    m_stationEnds[station] = start + duration;
    return start;
}

void ReplySlots::holdEveryone(std::int64_t until)
{
    m_everyoneAfter = std::max(m_everyoneAfter, until);
}

void ReplySlots::timeIs(std::int64_t now)
{
    const auto isOver = [now](const Slot& slot) { return slot.end <= now; };
    m_taken.erase(std::remove_if(m_taken.begin(), m_taken.end(), isOver), m_taken.end());
}

void ReplySlots::clear()
{
    m_taken.clear();
    m_stationEnds.clear();
    m_everyoneAfter = 0;
}
