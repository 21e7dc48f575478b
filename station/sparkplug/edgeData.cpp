#include "sparkplug/edgeData.h"

#include "sparkplug/edgeBirths.h"

#include <algorithm>
#include <utility>

namespace {

/// So many samples are looked through before the socket is looked at again.
enum { MOST_IN_A_STEP = 5000 };

} // namespace

EdgeData::EdgeData(EdgeMetrics& metrics, EdgePublisher& publisher, DeliveryLedger& ledger,
                   const StationClock& clock)
    : m_metrics(metrics),
      m_publisher(publisher),
      m_ledger(ledger),
      m_clock(clock),
      m_groups(metrics, publisher, DataGroups::BY_TIME)
{
}

void EdgeData::lookOn(const Sample& sample)
{
    if (sample.kind == Sample::READING && sample.number == 0) ++m_lost;
    if (sample.kind == Sample::STANDING) {
        const int device = m_metrics.findStation(sample.link, sample.station);
        if (device < 0) return m_metrics.keepStrange(sample);
        m_metrics.devices()[size_t(device)].answers = sample.answers;
        return;
    }
    const EdgeMetrics::Place place = m_metrics.find(sample.link, sample.tag);
    if (place.device < 0) return m_metrics.keepStrange(sample);
    EdgeMetric& metric = m_metrics.metric(place);
    if (EdgeMetrics::isFit(metric, sample)) m_metrics.moveShadow(metric, sample);
}

// A born session.

void EdgeData::push(const Sample& sample)
{
    m_waiting.push_back(sample);
    if (m_waiting.size() > m_mostWaiting) thinOut();
}

/// Keeps the last sample of each tag and station; the rows between are owed.
void EdgeData::thinOut()
{
    std::set<std::pair<int, int>> seen; // device and metric; metric -1: the station
    std::deque<Sample> kept, strange;
    for (auto sample = m_waiting.rbegin(); sample != m_waiting.rend(); ++sample) {
        const bool isReading = sample->kind == Sample::READING;
        const EdgeMetrics::Place place =
            isReading
                ? m_metrics.find(sample->link, sample->tag)
                : EdgeMetrics::Place{m_metrics.findStation(sample->link, sample->station), -1};
        if (place.device < 0)
            strange.push_front(std::move(*sample));
        else if (seen.insert({place.device, place.metric}).second)
            kept.push_front(std::move(*sample));
        else if (isReading)
            miss(sample->number);
    }
    for (const Sample& sample : strange)
        m_metrics.keepStrange(sample);
    m_waiting = std::move(kept);
    m_mostWaiting = std::max<size_t>(MOST_WAITING, 2 * m_waiting.size());
}

void EdgeData::sendSome()
{
    for (int i = 0; i < MOST_IN_A_STEP && !m_waiting.empty(); ++i) {
        const Sample sample = std::move(m_waiting.front());
        m_waiting.pop_front();
        take(sample);
        m_lastTaken = std::max(m_lastTaken, sample.number);
    }
    m_groups.sendAll();
}

void EdgeData::take(const Sample& sample)
{
    if (sample.kind == Sample::STANDING) {
        const int device = m_metrics.findStation(sample.link, sample.station);
        if (device < 0) return m_metrics.keepStrange(sample);
        return takeStanding(device, sample.answers);
    }
    const EdgeMetrics::Place place = m_metrics.find(sample.link, sample.tag);
    if (place.device < 0) return m_metrics.keepStrange(sample);
    if (EdgeMetrics::isFit(m_metrics.metric(place), sample)) takeReading(place, sample);
}

/// A message sorts its entries by time. When the clock was set back, an older time follows a newer
/// one of the same metric: then the message ends there, or the older value would be the last.
void EdgeData::takeReading(const EdgeMetrics::Place& place, const Sample& sample)
{
    const EdgeStation& station = m_metrics.devices()[size_t(place.device)];
    EdgeMetric& metric = m_metrics.metric(place);
    if (!station.isBorn) return hold(place, sample);
    if (sample.time < metric.time) m_groups.send(place.device);
    if (!m_metrics.moveShadow(metric, sample) || !metric.isKnown()) return;
    m_groups.add(place.device,
                 dataEntry(metric.alias, metric.type, metric.value, metric.quality, metric.time));
}

/// The device's birth may come and tell this value. The bad value of a silent device tells no more
/// than its death.
void EdgeData::hold(const EdgeMetrics::Place& place, const Sample& sample)
{
    EdgeMetric& metric = m_metrics.metric(place);
    if (!m_metrics.moveShadow(metric, sample)) return;
    if (metric.held) miss(*std::exchange(metric.held, std::nullopt));
    const bool answers = m_metrics.devices()[size_t(place.device)].answers;
    if (!sample.hasValue || (sample.quality != GOOD && !answers)) return;
    metric.held = sample.number;
    m_held.push_back(place);
}

void EdgeData::takeStanding(int device, bool answers)
{
    EdgeStation& station = m_metrics.devices()[size_t(device)];
    station.answers = answers;
    if (answers == station.isBorn) return;
    if (answers) return bear(station);
    m_groups.send(device);
    bury(station);
}

void EdgeData::bear(EdgeStation& station)
{
    m_publisher.sendDevice("DBIRTH", station.id, deviceBirth(station, m_clock.wall()));
    station.isBorn = true;
    m_born.insert(station.id);
    for (EdgeMetric& metric : station.metrics) {
        metric.isInBirth = true;
        metric.held.reset();
    }
}

void EdgeData::bury(EdgeStation& station)
{
    m_publisher.sendDevice("DDEATH", station.id, {});
    station.isBorn = false;
    m_born.erase(station.id);
    for (EdgeMetric& metric : station.metrics)
        metric.isInBirth = false;
}

// Births.

void EdgeData::begin()
{
    for (EdgeStation& station : m_metrics.devices()) {
        for (EdgeMetric& metric : station.metrics)
            metric.held.reset();
    }
    m_held.clear();
    m_born.clear();
    m_mostWaiting = MOST_WAITING;
}

/// Moves the shadow over all that waits. The births tell the last value of each metric.
void EdgeData::fold()
{
    for (EdgeStation& station : m_metrics.devices())
        station.isBorn = false;
    for (const Sample& sample : std::exchange(m_waiting, {})) {
        m_lastTaken = std::max(m_lastTaken, sample.number);
        const EdgeMetrics::Place place = m_metrics.find(sample.link, sample.tag);
        const bool isReading = sample.kind == Sample::READING && place.device >= 0;
        if (!isReading)
            lookOn(sample);
        else if (EdgeMetrics::isFit(m_metrics.metric(place), sample))
            hold(place, sample);
    }
}

/// A device that hosts take for alive and that is not born again has to die: it fell silent, or
/// the configuration lost it.
void EdgeData::bear(NodeMetrics& node, quint8 birthSequence)
{
    fold();
    std::set<QString> gone = std::exchange(m_born, {});
    for (const EdgeStation& station : m_metrics.devices()) {
        if (station.answers) gone.erase(station.id);
    }
    for (const QString& device : gone)
        m_publisher.sendDevice("DDEATH", device, {});
    m_publisher.sendNodeBirth(nodeBirth(node, birthSequence, m_clock.wall()));
    node.wasBorn();
    for (EdgeStation& station : m_metrics.devices()) {
        if (station.answers) bear(station);
    }
}

void EdgeData::end()
{
    for (const Sample& sample : std::exchange(m_waiting, {}))
        lookOn(sample);
    for (EdgeStation& station : m_metrics.devices())
        station.isBorn = false;
    m_born.clear();
}

// What is owed.

void EdgeData::miss(quint64 number)
{
    if (number == 0)
        ++m_lost;
    else
        m_ledger.missed(number, number);
}

bool EdgeData::isHolding()
{
    const auto isHeld = [this](const EdgeMetrics::Place& place) {
        return m_metrics.metric(place).held.has_value();
    };
    if (std::any_of(m_held.begin(), m_held.end(), isHeld)) return true;
    m_held.clear();
    return false;
}

void EdgeData::owe()
{
    for (const EdgeMetrics::Place& place : std::exchange(m_held, {})) {
        EdgeMetric& metric = m_metrics.metric(place);
        if (metric.held) miss(*std::exchange(metric.held, std::nullopt));
    }
}
