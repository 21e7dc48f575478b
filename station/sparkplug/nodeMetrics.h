#ifndef NODE_METRICS_H
#define NODE_METRICS_H

#include "sparkplug/payload.h"

/// A metric of the node itself.
struct NodeMetric
{
    QString name;
    quint64 alias = 0;
    MetricType type = MetricType::INT64;
    MetricValue value; ///< monostate: there is none yet
    qint64 time = 0;   ///< of the last change, ms since 1970
    bool isNews = false;
};

/// The metrics of the node itself, beside bdSeq and the control of rebirth.
class NodeMetrics
{
public:
    enum Id { DROPPED, BEHIND, REFUSED, OUTCOME };

    /// @param takesCommands  whether there is the metric OUTCOME
    NodeMetrics(bool takesCommands, qint64 now);

    /// News only when it differs.
    /// @param now  ms since 1970
    void set(Id id, const MetricValue& value, qint64 now);

    /// News in any case.
    void tell(Id id, const MetricValue& value, qint64 now);

    const std::vector<NodeMetric>& all() const
    {
        return m_metrics;
    }

    /// What DATA has to say: the changes since the last time.
    std::vector<Metric> takeNews();

    /// A birth has told everything.
    void wasBorn();

private:
    std::vector<NodeMetric> m_metrics;
};

#endif
