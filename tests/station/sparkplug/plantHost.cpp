#include "plantHost.h"

namespace {

PlantHost::Value valueOf(const ReceivedMetric& metric, quint64 type)
{
    PlantHost::Value value;
    value.isNull = metric.isNull;
    value.number = metric.number(type);
    value.quality = metric.quality.value_or(-1);
    return value;
}

bool isCounted(const Told& told)
{
    return told.isBirth() || told.isData() || told.is("DDEATH");
}

} // namespace

void PlantHost::expect(bool isKept, const char* rule, const QString& where)
{
    if (!isKept) broken.push_back(std::string(rule) + ": " + where.toStdString());
}

void PlantHost::take(const Told& told)
{
    switch (told.what) {
    case Told::CONNECT:
        return connected(told);
    case Told::PUBLISH:
        return published(told);
    case Told::SUBSCRIBE:
        return expect(!m_isDying, "nothing follows an NDEATH", QLatin1String("SUBSCRIBE"));
    case Told::LEAVE:
        return expect(!isNodeAlive, "an NDEATH precedes the DISCONNECT", QLatin1String("LEAVE"));
    case Told::DROP:
        return;
    }
}

void PlantHost::connected(const Told& told)
{
    m_session = told.session;
    m_isDying = false;
    m_isFirst = true;
    isNodeAlive = false; // its will was published, or its NDEATH
    for (auto& device : devices)
        device.second.isAlive = false;
    const ReceivedMetric* const number = told.payload.named("bdSeq");
    expect(number != nullptr, "the will tells bdSeq", told.message.topic);
    m_will = number != nullptr ? number->bits : 999;
}

void PlantHost::published(const Told& told)
{
    expect(!m_isDying, "nothing follows an NDEATH", told.message.topic);
    expect(!m_isFirst || told.is("NBIRTH"), "the NBIRTH is the first message", told.message.topic);
    expect(told.isGranted, "subscriptions are granted first", told.message.topic);
    expect(!told.message.isRetained, "nothing is retained", told.message.topic);
    m_isFirst = false;
    count(told);
    if (told.is("NBIRTH")) return nodeBorn(told);
    if (told.is("DBIRTH")) return deviceBorn(told);
    if (told.is("DDATA")) return deviceTold(told);
    if (told.is("NDATA")) return nodeTold(told);
    if (told.is("DDEATH")) {
        expect(devices[told.device].isAlive, "only what lives dies", told.message.topic);
        devices[told.device].isAlive = false;
    }
    if (!told.is("NDEATH")) return;
    m_isDying = true;
    isNodeAlive = false;
    expect(told.payload.named("bdSeq") != nullptr && told.payload.named("bdSeq")->bits == m_will,
           "the NDEATH has the number of the will", told.message.topic);
}

void PlantHost::count(const Told& told)
{
    if (!isCounted(told)) return;
    expect(told.payload.isReadable && told.payload.seq.has_value(), "seq is there",
           told.message.topic);
    const quint64 seq = told.payload.seq.value_or(999);
    const quint64 next = told.is("NBIRTH") ? 0 : (m_lastSeq + 1) % 256;
    expect(seq == next, "seq has no gap", told.message.topic);
    m_lastSeq = seq;
}

void PlantHost::nodeBorn(const Told& told)
{
    const ReceivedMetric* const number = told.payload.named("bdSeq");
    expect(number != nullptr && number->bits == m_will, "bdSeq of NBIRTH is that of the will",
           told.message.topic);
    isNodeAlive = true;
    m_aliases.clear();
    m_nodeMetrics.clear();
    for (auto& device : devices)
        device.second.isAlive = false;
    for (const ReceivedMetric& metric : told.payload.metrics) {
        if (metric.alias) m_nodeMetrics[*metric.alias] = metric.bits;
    }
    for (const auto& metric : m_nodeMetrics)
        m_aliases.insert(metric.first);
}

void PlantHost::deviceBorn(const Told& told)
{
    expect(isNodeAlive, "the node is born ahead of its devices", told.message.topic);
    DeviceState& device = devices[told.device];
    expect(!device.isAlive, "what lives is not born", told.message.topic);
    for (const auto& metric : device.metrics)
        m_aliases.erase(metric.first);
    device.metrics.clear();
    device.isAlive = true;
    for (const ReceivedMetric& metric : told.payload.metrics) {
        const quint64 alias = metric.alias.value_or(0);
        expect(m_aliases.insert(alias).second, "an alias is unique", told.message.topic);
        MetricState& state = device.metrics[alias];
        state.name = metric.name.value_or(QString());
        state.type = metric.type.value_or(0);
        state.value = valueOf(metric, state.type);
        note(told.device, state, state.value, Row::BIRTH);
    }
}

void PlantHost::deviceTold(const Told& told)
{
    expect(isNodeAlive && devices[told.device].isAlive, "data is of a device that lives",
           told.message.topic);
    qint64 last = 0;
    for (const ReceivedMetric& metric : told.payload.metrics) {
        entry(told.device, metric, told.payload.time.value_or(0));
        if (metric.isHistorical) continue;
        expect(metric.time.value_or(0) >= last, "live entries are in the order of time",
               told.message.topic);
        last = metric.time.value_or(0);
    }
}

void PlantHost::entry(const QString& device, const ReceivedMetric& metric, qint64 sent)
{
    const auto known = devices[device].metrics.find(metric.alias.value_or(0));
    expect(!metric.name, "data has aliases alone", device);
    expect(known != devices[device].metrics.end(), "data names metrics of the birth", device);
    if (known == devices[device].metrics.end()) return;
    MetricState& state = known->second;
    expect(!metric.isNull && metric.valueFields == 1, "data has a value", state.name);
    expect(metric.time.value_or(sent + 1) <= sent, "no time lies in the future", state.name);
    const Value value = valueOf(metric, state.type);
    note(device, state, value, metric.isHistorical ? Row::HISTORY : Row::LIVE);
    if (metric.isHistorical || state.type == 12) return;
    expect(!(value == state.value), "what did not change is not told", state.name);
    state.value = value;
}

void PlantHost::note(const QString& device, const MetricState& metric, const Value& value,
                     Row::Way way)
{
    if (value.isNull || metric.type == 12) return;
    rows.push_back({device, metric.name, value.number, value.quality, way, m_session});
}

/// A text tells of a command that has ended: two may end alike.
void PlantHost::nodeTold(const Told& told)
{
    expect(isNodeAlive, "the node is born ahead of its data", told.message.topic);
    for (const ReceivedMetric& metric : told.payload.metrics) {
        const auto known = m_nodeMetrics.find(metric.alias.value_or(0));
        expect(known != m_nodeMetrics.end(), "data names metrics of the birth", told.message.topic);
        if (known == m_nodeMetrics.end()) continue;
        const bool isText = metric.valueField == 15;
        expect(isText || metric.bits != known->second, "what did not change is not told",
               told.message.topic);
        known->second = metric.bits;
    }
}
