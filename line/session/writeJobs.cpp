#include "session/writeJobs.h"

#include <utility>

void WriteJobs::add(int job, const std::vector<ElementWrite>& elements)
{
    if (elements.empty()) {
        m_ended.emplace_back().job = job;
        return;
    }
    m_jobs[job].end.job = job;
    m_jobs[job].elementsLeft += int(elements.size());
    for (const ElementWrite& write : elements) {
        const Element element(write.station, write.area, write.number);
        const auto older = m_waiting.find(element);
        if (older == m_waiting.end()) {
            m_waiting[element] = {job, write};
            m_order.push_back(element);
            continue;
        }
        const Waiting replaced = std::exchange(older->second, Waiting{job, write});
        endElement(replaced.job, replaced.write.label, JobEnd::LOST,
                   QLatin1String("replaced by a newer value"));
    }
}

std::optional<ElementWrite> WriteJobs::takeNext()
{
    if (outstanding() >= MOST_OUTSTANDING) return std::nullopt;
    for (auto at = m_order.begin(); at != m_order.end();) {
        const auto waiting = m_waiting.find(*at);
        if (waiting == m_waiting.end()) {
            at = m_order.erase(at);
            continue;
        }
        if (m_outstanding.count(*at) != 0) {
            ++at;
            continue;
        }
        ElementWrite write = std::move(waiting->second.write);
        m_outstanding[*at] = {waiting->second.job, write.label};
        m_waiting.erase(waiting);
        m_order.erase(at);
        return write;
    }
    return std::nullopt;
}

bool WriteJobs::ended(int station, const QString& area, int number, JobEnd::Outcome outcome,
                      const QString& trouble)
{
    const auto found = m_outstanding.find(Element(station, area, number));
    if (found == m_outstanding.end()) return false;
    const Outstanding write = found->second;
    m_outstanding.erase(found);
    endElement(write.job, write.label, outcome, trouble);
    return true;
}

void WriteJobs::failWaiting(int station, const QString& trouble)
{
    for (auto at = m_waiting.begin(); at != m_waiting.end();) {
        if (std::get<0>(at->first) != station) {
            ++at;
            continue;
        }
        const Waiting failed = at->second;
        at = m_waiting.erase(at);
        endElement(failed.job, failed.write.label, JobEnd::TIMED_OUT, trouble);
    }
}

void WriteJobs::endElement(int job, const QString& label, JobEnd::Outcome outcome,
                           const QString& trouble)
{
    const auto found = m_jobs.find(job);
    JobEnd& end = found->second.end;
    if (outcome != JobEnd::DONE && end.outcome == JobEnd::DONE) {
        end.outcome = outcome;
        end.trouble = label + QLatin1String(": ") + trouble;
    }
    if (--found->second.elementsLeft > 0) return;
    m_ended.push_back(end);
    m_jobs.erase(found);
}

std::vector<JobEnd> WriteJobs::takeEnded()
{
    return std::exchange(m_ended, {});
}
