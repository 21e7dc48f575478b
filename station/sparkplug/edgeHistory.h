#ifndef EDGE_HISTORY_H
#define EDGE_HISTORY_H

#include "plant/deliveryLedger.h"
#include "sparkplug/dataGroups.h"

/// Sends the rows that the ledger owes, while no live sample waits: historical entries of devices
/// that are born, with the times of their rows.
class EdgeHistory
{
public:
    /// Rows a second at most, and in a step: no live value waits behind more than one step.
    enum { MOST_A_SECOND = 20000, MOST_IN_A_STEP = 500 };

    EdgeHistory(EdgeMetrics& metrics, EdgePublisher& publisher, DeliveryLedger& ledger);

    /// Sends a step when it is due.
    /// @param now  on the steady clock, microseconds
    void sendSome(qint64 now);

    /// When the next step is due, on the steady clock, microseconds.
    qint64 nextAt() const
    {
        return m_nextAt;
    }

    quint64 sent() const
    {
        return m_groups.sent();
    }

    /// Rows whose tag the configuration does not have any more, or has with another type.
    qint64 lost() const
    {
        return m_lost;
    }

private:
    void add(const Sample& sample);

    EdgeMetrics& m_metrics;
    DeliveryLedger& m_ledger;
    DataGroups m_groups;
    qint64 m_nextAt = 0;
    qint64 m_lost = 0;
};

#endif
