#ifndef EDGE_BIRTHS_H
#define EDGE_BIRTHS_H

#include "sparkplug/edgeMetrics.h"
#include "sparkplug/nodeMetrics.h"

/// The metrics of a birth, in the order of their times: each with its name, its datatype and its
/// value of this moment, or null. DATA never holds a metric that is not among them.
/// @param now  ms since 1970
std::vector<Metric> nodeBirth(const NodeMetrics& node, quint8 birthSequence, qint64 now);
std::vector<Metric> deviceBirth(const EdgeStation& station, qint64 now);

/// What DATA says of a metric whose alias the birth told.
Metric dataEntry(quint64 alias, MetricType type, const MetricValue& value, QualityCode quality,
                 qint64 time);

/// Live entries stand in the order of their times. Entries of one time keep their order.
std::vector<Metric> sortedByTime(std::vector<Metric> metrics);

/// The name of the metric by which a host asks for the births.
extern const char REBIRTH_METRIC[];

#endif
