#include "topics/retainedStates.h"

#include "values/jsonText.h"
#include "values/valueJson.h"

#include <cmath>
#include <utility>

namespace {

BrokerMessage onlineMessage(const QString& topic, bool isOnline)
{
    return {topic, isOnline ? QByteArrayLiteral("online") : QByteArrayLiteral("offline"), 1, true};
}

QByteArray valueText(const Tag& tag, const Sample& last)
{
    return last.hasValue ? valueJson(tag, last.value) : QByteArrayLiteral("null");
}

QByteArray stateDocument(const Tag& tag, const Sample& last)
{
    JsonText json;
    json.beginObject().key("v").raw(valueText(tag, last));
    json.key("q").word(qualityText(last.quality)).key("t");
    if (last.time == 0)
        json.null();
    else
        json.integer(last.time);
    return json.endObject().document();
}

bool isSameValue(const Sample& a, const Sample& b)
{
    if (!a.hasValue || !b.hasValue) return a.hasValue == b.hasValue;
    return a.value == b.value || (std::isnan(a.value) && std::isnan(b.value));
}

bool isNews(const Sample& before, const Sample& now)
{
    return before.time == 0 || before.quality != now.quality || !isSameValue(before, now);
}

bool isGood(const Sample& last)
{
    return last.time != 0 && last.quality == GOOD;
}

/// The object under this key, taken out of the table; a new one where there is none.
template <typename Table>
typename Table::mapped_type takenOrNew(Table& table, const typename Table::key_type& key)
{
    typename Table::mapped_type object = table.take(key);
    if (!object) object = std::make_shared<typename Table::mapped_type::element_type>();
    return object;
}

} // namespace

RetainedStates::RetainedStates(QString node) : m_node(std::move(node)), m_topics(m_node, {}) {}

BrokerMessage RetainedStates::status(bool isOnline) const
{
    return onlineMessage(m_topics.status(), isOnline);
}

const StatedTag* RetainedStates::tagAt(const QString& topic) const
{
    const auto found = m_byTopic.constFind(topic);
    return found == m_byTopic.cend() ? nullptr : &(*found)->stated;
}

QByteArray RetainedStates::valueAt(const QString& topic) const
{
    const auto found = m_byTopic.constFind(topic);
    if (found == m_byTopic.cend()) return QByteArrayLiteral("null");
    return valueText((*found)->stated.tag, (*found)->last);
}

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
    if (before.topic == stated.topic && before.tag.type == tag.type) return;
    putTag(state);
    station->onlineBehind = m_lastEntry;
    if (before.topic.isEmpty() && isGood(state->last)) noteGood(station);
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
        if (now.count(topic) == 0 && m_unused.insert(topic).second) put({nullptr, nullptr, topic});
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

void RetainedStates::take(const Sample& sample)
{
    if (sample.kind == Sample::READING) takeReading(sample);
    if (sample.kind == Sample::STANDING) takeStanding(sample);
}

void RetainedStates::takeReading(const Sample& sample)
{
    TagPointer& tag = m_tags[{sample.link, sample.tag}];
    if (!tag) tag = std::make_shared<TagState>();
    const bool isTold = !isNews(tag->last, sample);
    if (!isTold) tag->last = sample;
    if (tag->stated.topic.isEmpty()) return; // its configuration is still to come
    if (!isTold) putTag(tag);
    if (isGood(sample)) noteGood(tag->station);
}

void RetainedStates::takeStanding(const Sample& sample)
{
    StationPointer& station = m_stations[{sample.link, sample.station}];
    if (!station) station = std::make_shared<Station>();
    const bool wasOnline = station->isOnline();
    station->answers = sample.answers;
    if (!sample.answers) station->wasGood = false;
    noteOnline(station, wasOnline);
}

void RetainedStates::noteGood(const StationPointer& station)
{
    const bool wasOnline = station->isOnline();
    station->wasGood = true;
    noteOnline(station, wasOnline);
}

void RetainedStates::noteOnline(const StationPointer& station, bool wasOnline)
{
    if (station->isOnline() == wasOnline) return;
    if (!wasOnline) station->onlineBehind = m_lastEntry;
    putStation(station);
}

void RetainedStates::put(Entry entry)
{
    entry.number = ++m_lastEntry;
    m_queue.push_back(std::move(entry));
}

void RetainedStates::putTag(const TagPointer& tag)
{
    if (!std::exchange(tag->isDue, true)) put({tag, nullptr, QString()});
}

void RetainedStates::putStation(const StationPointer& station)
{
    if (!std::exchange(station->isDue, true)) put({nullptr, station, QString()});
}

void RetainedStates::sendAll()
{
    m_queue.clear();
    m_clearings.clear();
    m_isStatusOut = false;
    for (const QString& topic : m_unused)
        put({nullptr, nullptr, topic});
    for (const TagPointer& tag : m_tagOrder) {
        tag->isDue = false;
        putTag(tag);
    }
    for (const StationPointer& station : m_stationOrder) {
        station->isDue = false;
        station->said.reset();
        station->onlineBehind = m_lastEntry;
        putStation(station);
    }
    put({});
}

std::optional<BrokerMessage> RetainedStates::next()
{
    while (!m_queue.empty()) {
        const Entry entry = std::move(m_queue.front());
        m_queue.pop_front();
        const std::optional<BrokerMessage> message = messageOf(entry);
        if (message) return message;
    }
    return std::nullopt;
}

std::optional<BrokerMessage> RetainedStates::messageOf(const Entry& entry)
{
    if (entry.tag) return stateOf(*entry.tag);
    if (entry.station) return availabilityOf(entry);
    if (!entry.unused.isEmpty()) return clearing(entry.unused);
    m_isStatusOut = true;
    return status(true);
}

std::optional<BrokerMessage> RetainedStates::clearing(const QString& topic) const
{
    if (m_unused.count(topic) == 0) return std::nullopt; // it is used again
    return BrokerMessage{topic, QByteArray(), 1, true};
}

std::optional<BrokerMessage> RetainedStates::stateOf(TagState& tag)
{
    tag.isDue = false;
    if (tag.stated.topic.isEmpty()) return std::nullopt;
    return BrokerMessage{tag.stated.topic, stateDocument(tag.stated.tag, tag.last), 0, true};
}

/// A station that came to be online behind states which are still due is offline until then.
std::optional<BrokerMessage> RetainedStates::availabilityOf(const Entry& entry)
{
    Station& station = *entry.station;
    station.isDue = false;
    if (station.topic.isEmpty()) return std::nullopt;
    const bool isEarly = station.isOnline() && entry.number <= station.onlineBehind;
    if (isEarly) putStation(entry.station);
    const bool isOnline = station.isOnline() && !isEarly;
    if (std::exchange(station.said, isOnline) == isOnline) return std::nullopt;
    return onlineMessage(station.topic, isOnline);
}

/// What a session has not said yet, the broker may hold from the one before it.
std::vector<BrokerMessage> RetainedStates::farewell()
{
    std::vector<BrokerMessage> last;
    for (const StationPointer& station : m_stationOrder) {
        if (station->said == false) continue;
        station->said = false;
        last.push_back(onlineMessage(station->topic, false));
    }
    last.push_back(status(false));
    return last;
}

void RetainedStates::sent(int request, const BrokerMessage& message)
{
    if (message.qos == 1 && message.payload.isEmpty()) m_clearings[request] = message.topic;
}

bool RetainedStates::delivered(int request)
{
    const auto found = m_clearings.find(request);
    if (found == m_clearings.end()) return false;
    m_unused.erase(found->second);
    m_clearings.erase(found);
    return m_unused.empty();
}
