#include "writeLedger.h"

#include <algorithm>

void WriteLedger::handedIn(int job, const std::vector<ElementWrite>& elements)
{
    m_open.insert(job);
    m_elements[job] = elements.size();
    for (const ElementWrite& write : elements)
        m_written[Element(write.station, write.area, write.number)].push_back({job, write.bytes});
}

void WriteLedger::ended(const JobEnd& end)
{
    if (m_open.erase(end.job) == 0) ++m_surplusEnds;
    m_outcomes[end.job] = end.outcome;
}

int WriteLedger::count(JobEnd::Outcome outcome) const
{
    return int(std::count_if(m_outcomes.begin(), m_outcomes.end(),
                             [outcome](const auto& entry) { return entry.second == outcome; }));
}

/// A failed job with several elements reports only its first failure, so each of its elements may
/// have been written.
std::set<QByteArray> WriteLedger::possibleValues(int station, const QString& area, int number) const
{
    std::set<QByteArray> possible;
    const auto found = m_written.find(Element(station, area, number));
    if (found == m_written.end()) return possible;
    const std::vector<Written>& written = found->second;
    for (auto at = written.rbegin(); at != written.rend(); ++at) {
        const JobEnd::Outcome outcome = m_outcomes.at(at->job);
        if (outcome == JobEnd::DONE || outcome == JobEnd::TIMED_OUT || m_elements.at(at->job) > 1)
            possible.insert(at->bytes);
        if (outcome == JobEnd::DONE) return possible;
    }
    possible.insert(QByteArray(written.front().bytes.size(), '\0'));
    return possible;
}
