#include "silenceMeter.h"

#include <algorithm>
#include <cmath>

void Durations::add(std::int64_t duration)
{
    if (m_all.size() < MOST_KEPT) {
        m_all.push_back(duration);
        return;
    }
    m_all[m_oldest] = duration;
    m_oldest = (m_oldest + 1) % MOST_KEPT;
}

std::int64_t Durations::quantile(double share) const
{
    if (m_all.empty()) return 0;
    std::vector<std::int64_t> sorted = m_all;
    std::sort(sorted.begin(), sorted.end());
    const double rank = std::ceil(share * double(sorted.size()));
    const std::size_t index = rank < 1 ? 0 : std::size_t(rank) - 1;
    return sorted[std::min(index, sorted.size() - 1)];
}

void SilenceMeter::frameEnded(std::int64_t at)
{
    // A request that overlaps a pending reply ends before the reply does.
    m_lastEnd = m_lastEnd ? std::max(*m_lastEnd, at) : at;
}

void SilenceMeter::requestBegan(std::int64_t at)
{
    if (m_lastEnd) m_silences.add(at - *m_lastEnd);
}

void SilenceMeter::lineReset()
{
    m_lastEnd.reset();
}
