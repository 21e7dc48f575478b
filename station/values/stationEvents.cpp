#include "values/stationEvents.h"

#include <utility>

StationEvents::StationEvents(std::function<void()> wake) : m_wake(std::move(wake)) {}

void StationEvents::add(StationEvent::Kind kind, qint64 time, const QByteArray& document)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_events.push_back({++m_lastId, kind, time, document});
        if (m_events.size() > MOST_EVENTS) m_events.pop_front();
    }
    if (m_wake) m_wake();
}

std::vector<StationEvent> StationEvents::since(quint64 id) const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<StationEvent> events;
    for (const StationEvent& event : m_events) {
        if (event.id > id) events.push_back(event);
    }
    return events;
}

quint64 StationEvents::lastId() const
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_lastId;
}
