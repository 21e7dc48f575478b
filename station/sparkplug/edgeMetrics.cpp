#include "sparkplug/edgeMetrics.h"

#include "sparkplug/edgeNames.h"

#include <utility>

namespace {

/// Names come from the station's own files; this bounds what a long row of reloads leaves behind.
enum { MOST_STRANGE = 200000 };

bool isSameBirth(const EdgeStation& a, const EdgeStation& b)
{
    if (a.id != b.id || a.link != b.link || a.station != b.station) return false;
    if (a.takesCommands != b.takesCommands || a.metrics.size() != b.metrics.size()) return false;
    for (size_t i = 0; i < a.metrics.size(); ++i) {
        const EdgeMetric &left = a.metrics[i], &right = b.metrics[i];
        if (left.alias != right.alias || left.type != right.type) return false;
    }
    return true;
}

void takeShadow(EdgeMetric& metric, const EdgeMetric& from)
{
    if (from.type != metric.type) return;
    metric.isInBirth = from.isInBirth;
    metric.value = from.value;
    metric.quality = from.quality;
    metric.time = from.time;
    metric.held = from.held;
}

/// Aliases are in the order of neither tags nor devices once tags came and went.
void takeShadows(EdgeStation& station, const EdgeStation& from)
{
    QHash<quint64, const EdgeMetric*> known;
    for (const EdgeMetric& metric : from.metrics)
        known.insert(metric.alias, &metric);
    for (EdgeMetric& metric : station.metrics) {
        const auto old = known.constFind(metric.alias);
        if (old != known.constEnd()) takeShadow(metric, **old);
    }
    station.outcome = from.outcome;
    station.outcomeTime = from.outcomeTime;
    station.answers = from.answers;
    station.isBorn = from.isBorn && from.id == station.id; // hosts know it by its old id
}

} // namespace

EdgeMetrics::EdgeMetrics(bool takesCommands)
    : m_takesCommands(takesCommands), m_nextAlias(FIRST_TAG_ALIAS)
{
}

quint64 EdgeMetrics::aliasOf(const EdgeDevice& device, const QString& metric)
{
    quint64& alias = m_aliases[qMakePair(StationKey(device.link, device.station), metric)];
    if (alias == 0) alias = m_nextAlias++;
    return alias;
}

EdgeStation EdgeMetrics::made(const EdgeDevice& device, const QString& id)
{
    EdgeStation station;
    station.link = device.link;
    station.station = device.station;
    station.id = id;
    for (const Tag& tag : device.tags) {
        EdgeMetric metric;
        metric.tag = tag;
        metric.alias = aliasOf(device, tag.name);
        metric.type = metricType(tag);
        station.metrics.push_back(std::move(metric));
        if (m_takesCommands && tag.access == Tag::READ_WRITE) station.takesCommands = true;
    }
    // The name is none of a tag's, see metricNameProblems().
    if (station.takesCommands)
        station.outcomeAlias = aliasOf(device, QLatin1String(OUTCOME_METRIC));
    return station;
}

/// Takes over what came ahead of the configuration.
void EdgeMetrics::adopt(EdgeStation& station)
{
    const auto standing = m_strangeStations.find(StationKey(station.link, station.station));
    if (standing != m_strangeStations.end()) {
        station.answers = *standing;
        m_strangeStations.erase(standing);
    }
    for (EdgeMetric& metric : station.metrics) {
        const auto reading = m_strangeReadings.find(TagKey(station.link, metric.tag.name));
        if (reading == m_strangeReadings.end()) continue;
        if (isFit(metric, *reading)) moveShadow(metric, *reading);
        m_strangeReadings.erase(reading);
    }
}

bool EdgeMetrics::setDevices(const std::vector<EdgeDevice>& devices)
{
    const std::vector<QString> ids = deviceIds(devices);
    const std::vector<EdgeStation> old = std::exchange(m_devices, {});
    const QHash<StationKey, int> oldStations = std::exchange(m_stations, {});
    m_places.clear();
    m_ids.clear();
    m_ofAliases.clear();
    bool isChanged = old.size() != devices.size();
    for (size_t i = 0; i < devices.size(); ++i) {
        EdgeStation station = made(devices[i], ids[i]);
        const StationKey key(station.link, station.station);
        const int before = oldStations.value(key, -1);
        if (before >= 0) takeShadows(station, old[size_t(before)]);
        adopt(station);
        isChanged = isChanged || !isSameBirth(old[i], station); // the sizes are equal
        m_stations.insert(key, int(i));
        m_ids.insert(station.id, int(i));
        for (size_t tag = 0; tag < station.metrics.size(); ++tag) {
            const Place place = {int(i), int(tag)};
            m_places.insert(TagKey(station.link, station.metrics[tag].tag.name), place);
            m_ofAliases.insert(station.metrics[tag].alias, place);
        }
        m_devices.push_back(std::move(station));
    }
    return isChanged;
}

EdgeMetrics::Place EdgeMetrics::find(const QString& link, const QString& tag) const
{
    return m_places.value(TagKey(link, tag));
}

int EdgeMetrics::findStation(const QString& link, int station) const
{
    return m_stations.value(StationKey(link, station), -1);
}

int EdgeMetrics::findDevice(const QString& id) const
{
    return m_ids.value(id, -1);
}

EdgeMetrics::Place EdgeMetrics::findAlias(quint64 alias) const
{
    return m_ofAliases.value(alias);
}

void EdgeMetrics::keepStrange(const Sample& sample)
{
    if (sample.kind == Sample::STANDING && m_strangeStations.size() < MOST_STRANGE)
        m_strangeStations.insert(StationKey(sample.link, sample.station), sample.answers);
    if (sample.kind == Sample::READING && m_strangeReadings.size() < MOST_STRANGE)
        m_strangeReadings.insert(TagKey(sample.link, sample.tag), sample);
}

bool EdgeMetrics::isFit(const EdgeMetric& metric, const Sample& sample)
{
    return !sample.hasValue || metricValue(metric.type, sample.value);
}

/// A reading without a value leaves the last value, which grew bad.
bool EdgeMetrics::moveShadow(EdgeMetric& metric, const Sample& sample) const
{
    MetricValue value = metric.value;
    if (sample.hasValue) value = metricValue(metric.type, sample.value).value_or(metric.value);
    const QualityCode quality = qualityCode(sample.quality);
    if (quality == metric.quality && isSameValue(value, metric.value)) return false;
    metric.value = std::move(value);
    metric.quality = quality;
    metric.time = sample.time;
    return true;
}
