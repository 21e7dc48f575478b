#include "topics/retainedStates.h"

#include "sparkplug/edgeMetrics.h"
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

void RetainedStates::take(const Sample& sample)
{
    if (sample.kind == Sample::READING) takeReading(sample);
    if (sample.kind == Sample::STANDING) takeStanding(sample);
}

void RetainedStates::takeReading(const Sample& sample)
{
    TagPointer& tag = m_tags[{sample.link, sample.tag}];
    if (!tag) tag = std::make_shared<TagState>();
    const bool isConfigured = !tag->stated.topic.isEmpty();
    if (isConfigured && !isFit(tag->stated.tag, sample)) return;
    const bool isTold = !isNews(tag->last, sample);
    if (!isTold) tag->last = sample;
    if (!isConfigured) return; // its configuration is still to come
    if (!isTold) putTag(tag);
    if (sample.quality == GOOD) noteGood(tag->station);
}

/// A link that a reload replaces still tells values of the types before.
bool RetainedStates::isFit(const Tag& tag, const Sample& reading)
{
    return !reading.hasValue || metricValue(metricType(tag), reading.value);
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
    if (!std::exchange(tag->isDue, true)) put({tag, nullptr});
}

void RetainedStates::putStation(const StationPointer& station)
{
    if (!std::exchange(station->isDue, true)) put({nullptr, station});
}

void RetainedStates::sendAll()
{
    m_queue.clear();
    m_clearings.clear();
    m_isStatusOut = false;
    m_toClear.assign(m_unused.begin(), m_unused.end());
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
    const std::optional<BrokerMessage> clearing = nextClearing();
    if (clearing) return clearing;
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
    m_isStatusOut = true;
    return status(true);
}

/// Empty also while too many clearings wait for their acknowledgements.
std::optional<BrokerMessage> RetainedStates::nextClearing()
{
    while (!m_toClear.empty() && m_clearings.size() < MOST_CLEARINGS) {
        const QString topic = std::move(m_toClear.front());
        m_toClear.pop_front();
        const bool isUsedAgain = m_unused.count(topic) == 0;
        if (!isUsedAgain) return BrokerMessage{topic, QByteArray(), 1, true};
    }
    return std::nullopt;
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
