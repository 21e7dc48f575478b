#ifndef DATA_GROUPS_H
#define DATA_GROUPS_H

#include "sparkplug/edgeMetrics.h"
#include "sparkplug/edgePublisher.h"

/// What waits for the DDATA of each device while samples are taken in their order.
class DataGroups
{
public:
    /// More would keep other devices waiting.
    enum { MOST_ENTRIES = 500 };

    /// Whether a message sorts its entries by their times. Historical ones keep their order.
    enum Order { BY_TIME, AS_ADDED };

    DataGroups(EdgeMetrics& metrics, EdgePublisher& publisher, Order order);

    /// Sends the device's entries first when the message is full.
    void add(int device, const Metric& entry);

    void send(int device);
    void sendAll();

    /// Entries that were sent.
    quint64 sent() const
    {
        return m_sent;
    }

private:
    EdgeMetrics& m_metrics;
    EdgePublisher& m_publisher;
    const Order m_order;
    QHash<int, std::vector<Metric>> m_groups;
    std::vector<int> m_devices; ///< in the order of their first entries
    quint64 m_sent = 0;
};

#endif
