#ifndef STATION_EVENTS_H
#define STATION_EVENTS_H

#include <QByteArray>
#include <QString>

#include <deque>
#include <functional>
#include <mutex>
#include <vector>

/// Something that happened once on a link, for the page, the audit and other programs.
struct StationEvent
{
    enum Kind { LINK, WRITE, RECIPE };

    quint64 id = 0; ///< counts up from 1 over the whole station
    Kind kind = LINK;
    qint64 time = 0;     ///< ms since 1970
    QByteArray document; ///< a JSON object with keys; what it holds is said where the event is made
};

/// The last events of the station. Any thread calls it.
class StationEvents
{
public:
    enum { MOST_EVENTS = 1000 };

    /// @param wake  called after each new event, with no lock held; must note it and return
    explicit StationEvents(std::function<void()> wake = nullptr);

    void add(StationEvent::Kind kind, qint64 time, const QByteArray& document);

    /// The events behind `id`, oldest first. Those that are no longer kept are left out.
    std::vector<StationEvent> since(quint64 id) const;

    /// The id of the newest event; 0: none.
    quint64 lastId() const;

private:
    const std::function<void()> m_wake;
    mutable std::mutex m_mutex;
    std::deque<StationEvent> m_events; ///< guarded by m_mutex
    quint64 m_lastId = 0;              ///< guarded by m_mutex
};

#endif
