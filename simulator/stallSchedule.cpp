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

std::int64_t StallSchedule::goesOnAt(std::int64_t at) const
{
    if (m_length == 0 || !m_firstRequest) return at;
    const std::int64_t passed = at - *m_firstRequest;
    const std::int64_t first = m_every > 0 ? m_every : SINGLE_STALL_AFTER_NS;
    if (passed < first) return at;
    const std::int64_t start = m_every > 0 ? passed / m_every * m_every : first;
    return std::max(at, *m_firstRequest + start + m_length);
}
