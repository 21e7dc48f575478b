#include "sparkplug/edgeHistory.h"

#include "sparkplug/edgeBirths.h"
#include "wire/timeUnits.h"

#include <algorithm>

namespace {

enum {
    ROW_TIME = SECOND / EdgeHistory::MOST_A_SECOND,
    LOOK_AGAIN = 100 * MILLISECOND, ///< nothing was owed
    MOST_LATE = 50 * MILLISECOND    ///< steps that a busy thread missed are made good up to here
};

} // namespace

EdgeHistory::EdgeHistory(EdgeMetrics& metrics, EdgePublisher& publisher, DeliveryLedger& ledger)
    : m_metrics(metrics), m_ledger(ledger), m_groups(metrics, publisher, DataGroups::AS_ADDED)
{
}

void EdgeHistory::sendSome(qint64 now)
{
    if (now < m_nextAt) return;
    // Rows of tags that are gone would be held for ever: they are taken, and counted as lost.
    const std::vector<LoggedRow> rows = m_ledger.owed(MOST_IN_A_STEP, [this](const Sample& sample) {
        const int device = m_metrics.find(sample.link, sample.tag).device;
        return device < 0 || m_metrics.devices()[size_t(device)].isBorn;
    });
    if (rows.empty()) {
        m_nextAt = now + LOOK_AGAIN;
        return;
    }
    for (const LoggedRow& row : rows)
        add(row.sample);
    m_groups.sendAll();
    m_ledger.owedSent();
    m_nextAt = std::max(m_nextAt, now - MOST_LATE) + qint64(rows.size()) * ROW_TIME;
}

/// A row without a value is older than the first answer: it tells nothing.
void EdgeHistory::add(const Sample& sample)
{
    if (!sample.hasValue) return;
    const EdgeMetrics::Place place = m_metrics.find(sample.link, sample.tag);
    if (place.device < 0 || !EdgeMetrics::isFit(m_metrics.metric(place), sample)) {
        ++m_lost;
        return;
    }
    const EdgeMetric& metric = m_metrics.metric(place);
    const MetricValue value =
        metricValue(metric.type, sample.value).value_or(MetricValue()); // it is fit
    Metric entry =
        dataEntry(metric.alias, metric.type, value, qualityCode(sample.quality), sample.time);
    entry.isHistorical = true;
    m_groups.add(place.device, entry);
}
