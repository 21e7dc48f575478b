#include "stallSchedule.h"

#include <algorithm>

namespace {

const std::int64_t SINGLE_STALL_AFTER_NS = 1000000000;

} // namespace

StallSchedule::StallSchedule(const StallSettings& settings)
    : m_length(settings.lengthNs), m_every(settings.everyNs)
{
}

void StallSchedule::requestSeen(std::int64_t at)
{
    if (!m_firstRequest) m_firstRequest = at;
}

void StallSchedule::stall(std::int64_t at, std::int64_t length)
{
    // Requests that the stall before has held are not served in the past.
    if (at >= m_orderedUntil) m_orderedFrom = at;
    m_orderedUntil = at + length;
}

/// Stalls may overlap: one ends inside the other.
std::int64_t StallSchedule::goesOnAt(std::int64_t at) const
{
    const auto orderedEnd = [this](std::int64_t time) {
        return time >= m_orderedFrom && time < m_orderedUntil ? m_orderedUntil : time;
    };
    const std::int64_t end = scheduledEnd(orderedEnd(at));
    const std::int64_t last = orderedEnd(end);
    return last == end ? end : scheduledEnd(last);
}

std::int64_t StallSchedule::scheduledEnd(std::int64_t at) const
{
    if (m_length == 0 || !m_firstRequest) return at;
    const std::int64_t passed = at - *m_firstRequest;
    const std::int64_t first = m_every > 0 ? m_every : SINGLE_STALL_AFTER_NS;
    if (passed < first) return at;
    const std::int64_t start = m_every > 0 ? passed / m_every * m_every : first;
    return std::max(at, *m_firstRequest + start + m_length);
}
