#include "session/writeJobs.h"

#include "session/exchangeVerdict.h"

#include <algorithm>
#include <limits>
#include <utility>

/// A newer write of a waiting element takes the older write's turn.
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
            wait(element, {job, ++m_lastTurn, write});
            continue;
        }
        const Pending replaced =
            std::exchange(older->second, Pending{job, older->second.turn, write});
        endElement(replaced.job, replaced.write.label, replacedWriteEnd());
    }
}

void WriteJobs::wait(const Element& element, const Pending& pending)
{
    m_order[pending.turn] = element;
    m_waiting[element] = pending;
}

std::optional<ElementWrite> WriteJobs::takeNext(const IsHeld& isHeld)
{
    if (outstanding() >= MOST_OUTSTANDING) return std::nullopt;
    for (auto at = m_order.begin(); at != m_order.end(); ++at) {
        const Element element = at->second;
        const int station = std::get<0>(element);
        if (m_outstanding.count(element) != 0) continue;
        if ((isHeld && isHeld(station)) || isComingBack(station)) continue;
        m_comingBack.erase(station);
        const auto waiting = m_waiting.find(element);
        const Pending& taken = m_outstanding[element] = std::move(waiting->second);
        m_waiting.erase(waiting);
        m_order.erase(at);
        return taken.write;
    }
    return std::nullopt;
}

bool WriteJobs::ended(int station, const QString& area, int number, const JobEnd& end)
{
    const auto found = m_outstanding.find(Element(station, area, number));
    if (found == m_outstanding.end()) return false;
    const Pending write = found->second;
    m_outstanding.erase(found);
    endElement(write.job, write.write.label, end);
    return true;
}

void WriteJobs::putBack(int station, const QString& area, int number)
{
    const Element element(station, area, number);
    const auto found = m_outstanding.find(element);
    if (found == m_outstanding.end()) return;
    const Pending unsent = found->second;
    m_outstanding.erase(found);
    m_comingBack.insert(station);
    if (m_waiting.count(element) != 0)
        endElement(unsent.job, unsent.write.label, replacedWriteEnd());
    else
        wait(element, unsent);
}

bool WriteJobs::hasStation(const std::map<Element, Pending>& elements, int station)
{
    const auto first =
        elements.lower_bound(Element(station, QString(), std::numeric_limits<int>::min()));
    return first != elements.end() && std::get<0>(first->first) == station;
}

bool WriteJobs::isComingBack(int station) const
{
    return m_comingBack.count(station) != 0 && hasStation(m_outstanding, station);
}

bool WriteJobs::hasWaiting(int station) const
{
    return hasStation(m_waiting, station);
}

void WriteJobs::failWaiting(int station, const JobEnd& end)
{
    for (auto at = m_order.begin(); at != m_order.end();) {
        if (std::get<0>(at->second) != station) {
            ++at;
            continue;
        }
        const auto waiting = m_waiting.find(at->second);
        const Pending failed = waiting->second;
        m_waiting.erase(waiting);
        at = m_order.erase(at);
        endElement(failed.job, failed.write.label, end);
    }
}

/// The elements that went out come first: a job tells its first failure, and that the PLC may have
/// executed a write matters more than that another write was not sent.
void WriteJobs::dropAll(const QString& why, const TimesSent& timesSent)
{
    const auto timesSentOf = [&](const Element& element) {
        return timesSent(std::get<0>(element), std::get<1>(element), std::get<2>(element));
    };
    const auto outstanding = std::exchange(m_outstanding, {});
    for (const bool isOfSent : {true, false}) {
        for (const auto& entry : outstanding) {
            const int times = timesSentOf(entry.first);
            if ((times > 0) != isOfSent) continue;
            endElement(entry.second.job, entry.second.write.label, droppedWriteEnd(times, why));
        }
    }
    const auto waiting = std::exchange(m_waiting, {});
    m_order.clear();
    for (const auto& [element, write] : waiting)
        endElement(write.job, write.write.label, droppedWriteEnd(0, why));
}

void WriteJobs::endElement(int job, const QString& label, const JobEnd& end)
{
    const auto found = m_jobs.find(job);
    JobEnd& jobs = found->second.end;
    if (end.outcome != JobEnd::DONE && jobs.outcome == JobEnd::DONE) {
        jobs.outcome = end.outcome;
        jobs.execution = end.execution;
        jobs.reason = end.reason;
        jobs.trouble = label + QLatin1String(": ") + end.reason;
    }
    if (--found->second.elementsLeft > 0) return;
    m_ended.push_back(jobs);
    m_jobs.erase(found);
}

std::vector<ElementWrite> WriteJobs::outstandingWrites() const
{
    std::vector<ElementWrite> writes;
    for (const auto& entry : m_outstanding)
        writes.push_back(entry.second.write);
    return writes;
}

std::vector<JobEnd> WriteJobs::takeEnded()
{
    return std::exchange(m_ended, {});
}
