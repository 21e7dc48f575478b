#include "sparkplug/dataGroups.h"

#include "sparkplug/edgeBirths.h"

#include <utility>

DataGroups::DataGroups(EdgeMetrics& metrics, EdgePublisher& publisher, Order order)
    : m_metrics(metrics), m_publisher(publisher), m_order(order)
{
}

void DataGroups::add(int device, const Metric& entry)
{
    std::vector<Metric>& group = m_groups[device];
    if (group.size() >= MOST_ENTRIES) send(device);
    if (group.empty()) m_devices.push_back(device);
    group.push_back(entry);
}

void DataGroups::send(int device)
{
    const auto found = m_groups.find(device);
    if (found == m_groups.end() || found->empty()) return;
    std::vector<Metric> entries = std::exchange(*found, {});
    if (m_order == BY_TIME) entries = sortedByTime(std::move(entries));
    m_sent += entries.size();
    m_publisher.sendDevice("DDATA", m_metrics.devices()[size_t(device)].id, std::move(entries));
}

void DataGroups::sendAll()
{
    for (const int device : std::exchange(m_devices, {}))
        send(device);
    m_groups.clear();
}
