#include "sparkplug/edgeBirths.h"

#include "sparkplug/edgeNames.h"

#include <algorithm>
#include <numeric>
#include <utility>

const char REBIRTH_METRIC[] = "Node Control/Rebirth";

namespace {

/// A host that knows nothing of the node has to understand these two: they have no alias.
Metric controlMetric(const char* name, MetricType type, MetricValue value, qint64 now)
{
    Metric metric;
    metric.name = QLatin1String(name);
    metric.time = now;
    metric.type = type;
    metric.encodedAs = type;
    metric.value = std::move(value);
    return metric;
}

/// What was never read is as old as its birth.
Metric birthEntry(const QString& name, quint64 alias, MetricType type, const MetricValue& value,
                  QualityCode quality, qint64 time, qint64 now)
{
    const bool isKnown = !std::holds_alternative<std::monostate>(value);
    Metric metric = dataEntry(alias, type, value, quality, isKnown ? std::min(time, now) : now);
    metric.name = name;
    metric.type = type;
    return metric;
}

} // namespace

/// In the order of their times; those of one time stay as they were. What is sorted is the order: a
/// metric is large.
std::vector<Metric> sortedByTime(std::vector<Metric> metrics)
{
    std::vector<size_t> order(metrics.size());
    std::iota(order.begin(), order.end(), size_t(0));
    std::stable_sort(order.begin(), order.end(),
                     [&metrics](size_t a, size_t b) { return metrics[a].time < metrics[b].time; });
    std::vector<Metric> sorted;
    sorted.reserve(metrics.size());
    for (const size_t at : order)
        sorted.push_back(std::move(metrics[at]));
    return sorted;
}

Metric dataEntry(quint64 alias, MetricType type, const MetricValue& value, QualityCode quality,
                 qint64 time)
{
    Metric metric;
    metric.alias = alias;
    metric.time = time;
    metric.encodedAs = type;
    metric.value = value;
    metric.quality = quality;
    return metric;
}

std::vector<Metric> nodeBirth(const NodeMetrics& node, quint8 birthSequence, qint64 now)
{
    std::vector<Metric> metrics;
    metrics.push_back(controlMetric("bdSeq", MetricType::INT64, qint64(birthSequence), now));
    metrics.push_back(controlMetric(REBIRTH_METRIC, MetricType::BOOLEAN, false, now));
    for (const NodeMetric& own : node.all()) {
        metrics.push_back(
            birthEntry(own.name, own.alias, own.type, own.value, QualityCode::GOOD, own.time, now));
    }
    return sortedByTime(std::move(metrics));
}

std::vector<Metric> deviceBirth(const EdgeStation& station, qint64 now)
{
    std::vector<Metric> metrics;
    metrics.reserve(station.metrics.size() + 1);
    for (const EdgeMetric& metric : station.metrics) {
        metrics.push_back(birthEntry(metric.tag.name, metric.alias, metric.type, metric.value,
                                     metric.quality, metric.time, now));
    }
    if (station.takesCommands) {
        metrics.push_back(birthEntry(QLatin1String(OUTCOME_METRIC), station.outcomeAlias,
                                     MetricType::STRING, station.outcome, QualityCode::GOOD,
                                     station.outcomeTime, now));
    }
    return sortedByTime(std::move(metrics));
}
