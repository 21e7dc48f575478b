#include "session/heldStations.h"

#include <algorithm>

std::vector<int> HeldStations::stations() const
{
    std::vector<int> held;
    for (const auto& [station, endsAt] : m_endsAt)
        held.push_back(station);
    return held;
}

std::vector<int> HeldStations::takeOver(qint64 now)
{
    std::vector<int> over;
    for (auto at = m_endsAt.begin(); at != m_endsAt.end();) {
        if (at->second > now) {
            ++at;
            continue;
        }
        over.push_back(at->first);
        at = m_endsAt.erase(at);
    }
    return over;
}

std::optional<qint64> HeldStations::nextEnd() const
{
    const auto next =
        std::min_element(m_endsAt.begin(), m_endsAt.end(),
                         [](const auto& a, const auto& b) { return a.second < b.second; });
    return next == m_endsAt.end() ? std::nullopt : std::make_optional(next->second);
}
