#ifndef EDGE_METRICS_H
#define EDGE_METRICS_H

#include "plant/edgeDevice.h"
#include "samples/sample.h"
#include "sparkplug/payload.h"

#include <QHash>
#include <QPair>

/// A tag as a metric, with its shadow: what the last sample said.
struct EdgeMetric
{
    Tag tag;
    quint64 alias = 0;
    MetricType type = MetricType::UINT16;
    bool isInBirth = false; ///< of its device, in the MQTT session

    MetricValue value; ///< monostate: never read
    QualityCode quality = QualityCode::BAD;
    qint64 time = 0;             ///< of the last change of value or quality
    std::optional<quint64> held; ///< row of the shadow, which was in no message yet

    bool isKnown() const
    {
        return !std::holds_alternative<std::monostate>(value);
    }
};

/// A station as a device.
struct EdgeStation
{
    QString link;
    int station = 1;
    QString id; ///< in topics
    std::vector<EdgeMetric> metrics;

    bool takesCommands = false; ///< one of its tags can be written
    quint64 outcomeAlias = 0;   ///< of the metric that tells the ends of commands
    MetricValue outcome;        ///< monostate: there was none yet
    qint64 outcomeTime = 0;

    bool answers = false;
    bool isBorn = false; ///< its DBIRTH went out and no DDEATH since
};

/// The metrics of all devices.
///
/// Invariants:
/// - An alias stands for one metric as long as the process lives, whatever devices and tags come
///   and go.
/// - A metric's value fits its type, so that it can be encoded.
/// - The shadow of a metric of a born device is what its hosts were told last.
class EdgeMetrics
{
public:
    /// Where a metric stands: indexes. device -1: nowhere.
    struct Place
    {
        int device = -1, metric = -1;
    };

    explicit EdgeMetrics(bool takesCommands);

    /// Keeps the shadows of metrics that stay with their type.
    /// @return whether the births differ
    bool setDevices(const std::vector<EdgeDevice>& devices);

    std::vector<EdgeStation>& devices()
    {
        return m_devices;
    }
    const std::vector<EdgeStation>& devices() const
    {
        return m_devices;
    }
    EdgeMetric& metric(const Place& place)
    {
        return m_devices[size_t(place.device)].metrics[size_t(place.metric)];
    }

    Place find(const QString& link, const QString& tag) const;
    int findStation(const QString& link, int station) const; ///< -1: none
    int findDevice(const QString& id) const;                 ///< -1: none
    Place findAlias(quint64 alias) const;                    ///< of a tag

    /// Samples of tags and stations that are not configured yet: the threads of a link may be ahead
    /// of a new configuration.
    void keepStrange(const Sample& sample);

    /// Moves the shadow. Only for READING.
    /// @return whether value or quality are new to the hosts
    bool moveShadow(EdgeMetric& metric, const Sample& sample) const;

    /// Whether the sample's value fits the metric's type.
    static bool isFit(const EdgeMetric& metric, const Sample& sample);

private:
    using TagKey = QPair<QString, QString>;
    using StationKey = QPair<QString, int>;

    EdgeStation made(const EdgeDevice& device, const QString& id);
    void adopt(EdgeStation& station);
    quint64 aliasOf(const EdgeDevice& device, const QString& metric);

    const bool m_takesCommands;
    std::vector<EdgeStation> m_devices;
    QHash<TagKey, Place> m_places;
    QHash<StationKey, int> m_stations;
    QHash<QString, int> m_ids;
    QHash<quint64, Place> m_ofAliases;
    QHash<QPair<StationKey, QString>, quint64> m_aliases;
    QHash<TagKey, Sample> m_strangeReadings;
    QHash<StationKey, bool> m_strangeStations;
    quint64 m_nextAlias;
};

/// Aliases of the node's own metrics are below it.
enum { FIRST_TAG_ALIAS = 16 };

MetricType metricType(const Tag& tag);
QualityCode qualityCode(Quality quality);

/// Empty: the number is no value of the type.
std::optional<MetricValue> metricValue(MetricType type, double number);

/// Whether a host could tell the two apart. One nan is like another.
bool isSameValue(const MetricValue& a, const MetricValue& b);

#endif
