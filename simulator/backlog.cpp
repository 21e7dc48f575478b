#include "backlog.h"

#include <algorithm>

Backlog::Backlog(const StallSettings& settings) : m_settings(settings), m_schedule(settings) {}

bool Backlog::holds(int station, std::int64_t at) const
{
    if (!concerns(station)) return false;
    return !m_held.empty() || m_busyUntil > at || m_schedule.goesOnAt(at) > at;
}

void Backlog::add(const Exchange& exchange)
{
    m_held.push_back(exchange);
}

std::optional<std::int64_t> Backlog::nextServiceAt() const
{
    if (m_held.empty()) return std::nullopt;
    return m_schedule.goesOnAt(std::max(m_held.front().requestEnd, m_busyUntil));
}

Exchange Backlog::take()
{
    const std::int64_t at = *nextServiceAt();
    Exchange first = std::move(m_held.front());
    m_held.pop_front();
    // A broadcast is not answered, so that it takes no service time.
    if (first.request[STATION_AT] != BROADCAST_STATION) m_busyUntil = at + m_settings.serviceNs;
    return first;
}

std::int64_t Backlog::replyStart(int station, std::int64_t start) const
{
    return concerns(station) ? m_schedule.goesOnAt(start) : start;
}

void Backlog::audienceLeft()
{
    for (Exchange& exchange : m_held)
        exchange.audience = AUDIENCE_NONE;
}

bool Backlog::concerns(int station) const
{
    return !m_settings.station || *m_settings.station == station;
}
