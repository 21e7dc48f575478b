// What a configuration changes at the broker: which topics are used, and which have to be cleared.
#include "topics/retainedStates.h"

#include <utility>

namespace {

/// The object under this key, taken out of the table; a new one where there is none.
template <typename Table>
typename Table::mapped_type takenOrNew(Table& table, const typename Table::key_type& key)
{
    typename Table::mapped_type object = table.take(key);
    if (!object) object = std::make_shared<typename Table::mapped_type::element_type>();
    return object;
}

} // namespace

std::set<QString> RetainedStates::usedTopics() const
{
    std::set<QString> topics;
    for (const TagPointer& tag : m_tagOrder)
        topics.insert(tag->stated.topic);
    for (const StationPointer& station : m_stationOrder)
        topics.insert(station->topic);
    return topics;
}

void RetainedStates::wasPublished(const std::set<QString>& topics)
{
    for (const QString& topic : topics)
        if (m_topics.isRetained(topic)) m_published.insert(topic);
}

std::set<QString> RetainedStates::topicsAtBroker() const
{
    std::set<QString> topics = usedTopics();
    topics.insert(m_unused.begin(), m_unused.end());
    return topics;
}

/// What is not configured any more has no topic: the queue may still hold it.
void RetainedStates::setDevices(const std::vector<EdgeDevice>& devices)
{
    std::set<QString> before = usedTopics();
    before.merge(std::exchange(m_published, {}));
    m_topics = JsonTopics(m_node, devices);
    Tags oldTags = std::exchange(m_tags, {});
    Stations oldStations = std::exchange(m_stations, {});
    m_tagOrder.clear();
    m_stationOrder.clear();
    m_byTopic.clear();
    for (const EdgeDevice& device : devices) {
        const StationPointer station = configureStation(device, oldStations);
        for (const Tag& tag : device.tags)
            configureTag(device.link, tag, station, oldTags);
    }
    for (const TagPointer& tag : std::as_const(oldTags))
        tag->stated.topic.clear();
    for (const StationPointer& station : std::as_const(oldStations))
        station->topic.clear();
    clearUnused(before);
}

RetainedStates::StationPointer RetainedStates::configureStation(const EdgeDevice& device,
                                                                Stations& old)
{
    const QPair<QString, int> key(device.link, device.station);
    const StationPointer station = takenOrNew(old, key);
    m_stations.insert(key, station);
    m_stationOrder.push_back(station);
    const QString topic = m_topics.availability(device.link, device.station);
    if (std::exchange(station->topic, topic) != topic) station->said.reset();
    return station;
}

void RetainedStates::configureTag(const QString& link, const Tag& tag,
                                  const StationPointer& station, Tags& old)
{
    const QPair<QString, QString> key(link, tag.name);
    const TagPointer state = takenOrNew(old, key);
    m_tags.insert(key, state);
    m_tagOrder.push_back(state);
    const StatedTag stated = {link, tag, m_topics.state(link, tag.name)};
    const StatedTag before = std::exchange(state->stated, stated);
    state->station = station;
    m_byTopic.insert(stated.topic, state);
    const bool isOfType =
        before.topic.isEmpty() ? isFit(tag, state->last) : before.tag.type == tag.type;
    if (!isOfType) state->last = Sample();
    if (before.topic == stated.topic && before.tag.type == tag.type) return;
    putTag(state);
    station->onlineBehind = m_lastEntry;
    if (before.topic.isEmpty() && state->last.quality == GOOD) noteGood(station);
}

/// Behind all states, those of stations that are new.
void RetainedStates::clearUnused(const std::set<QString>& before)
{
    for (const StationPointer& station : m_stationOrder) {
        if (!station->said) putStation(station);
    }
    const std::set<QString> now = usedTopics();
    for (const QString& topic : now)
        forgetUnused(topic);
    for (const QString& topic : before) {
        if (now.count(topic) == 0 && m_unused.insert(topic).second) m_toClear.push_back(topic);
    }
}

/// An acknowledgement that is still to come must not count for a later clearing of the topic.
void RetainedStates::forgetUnused(const QString& topic)
{
    if (m_unused.erase(topic) == 0) return;
    for (auto clearing = m_clearings.begin(); clearing != m_clearings.end();) {
        const bool isOfTopic = clearing->second == topic;
        clearing = isOfTopic ? m_clearings.erase(clearing) : std::next(clearing);
    }
}
