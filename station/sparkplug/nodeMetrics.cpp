#include "sparkplug/nodeMetrics.h"

#include "sparkplug/edgeBirths.h"
#include "sparkplug/edgeNames.h"

#include <utility>

// Their aliases are 1 to 4; those of tags begin at FIRST_TAG_ALIAS.
NodeMetrics::NodeMetrics(bool takesCommands, qint64 now)
{
    for (const char* const name : {"Buffer/Dropped", "Buffer/Behind", "Commands/Refused"}) {
        NodeMetric metric;
        metric.name = QLatin1String(name);
        metric.alias = m_metrics.size() + 1;
        metric.value = qint64(0);
        metric.time = now;
        m_metrics.push_back(metric);
    }
    if (!takesCommands) return;
    NodeMetric outcome;
    outcome.name = QLatin1String(OUTCOME_METRIC);
    outcome.alias = m_metrics.size() + 1;
    outcome.type = MetricType::STRING;
    m_metrics.push_back(outcome);
}

void NodeMetrics::set(Id id, const MetricValue& value, qint64 now)
{
    if (size_t(id) >= m_metrics.size()) return;
    if (!isSameValue(m_metrics[size_t(id)].value, value)) tell(id, value, now);
}

void NodeMetrics::tell(Id id, const MetricValue& value, qint64 now)
{
    if (size_t(id) >= m_metrics.size()) return;
    NodeMetric& metric = m_metrics[size_t(id)];
    metric.value = value;
    metric.time = now;
    metric.isNews = true;
}

std::vector<Metric> NodeMetrics::takeNews()
{
    std::vector<Metric> news;
    for (NodeMetric& metric : m_metrics) {
        if (!metric.isNews) continue;
        metric.isNews = false;
        news.push_back(
            dataEntry(metric.alias, metric.type, metric.value, QualityCode::GOOD, metric.time));
    }
    return sortedByTime(std::move(news));
}

void NodeMetrics::wasBorn()
{
    for (NodeMetric& metric : m_metrics)
        metric.isNews = false;
}
