#include "exchange/unseenLines.h"

#include <algorithm>

qint64 UnseenLines::frame(char station, int bytes) const
{
    const qint64 slowest = m_timing.unseenFrame(bytes);
    const auto found = m_fastest.find(station);
    if (found == m_fastest.end()) return slowest;
    return std::min(slowest, found->second.took * bytes / found->second.bytes);
}

void UnseenLines::note(char station, int bytes, qint64 took)
{
    const auto found = m_fastest.find(station);
    if (found == m_fastest.end())
        m_fastest.emplace(station, Seen{took, bytes});
    else if (took * found->second.bytes < found->second.took * bytes)
        found->second = {took, bytes};
}
