#ifndef EDGE_DATA_H
#define EDGE_DATA_H

#include "plant/deliveryLedger.h"
#include "sparkplug/dataGroups.h"
#include "sparkplug/nodeMetrics.h"

#include <deque>
#include <set>

/// Turns samples into the messages of devices, in their order.
///
///     READING   of a born device: shadow, DDATA        of another: shadow alone
///     STANDING  answers: DBIRTH                         silent: DDEATH
///
/// What the socket does not take yet waits. Births fold what waits into themselves, so that no
/// value of the time before them follows them.
///
/// Invariants:
/// - The messages of a device tell its samples in their order.
/// - A row that is in no message of a born session is missed: the ledger owes it. A value that a
///   birth tells is in a message.
/// - At most MOST_WAITING samples wait, or one for each metric where there are more metrics.
class EdgeData
{
public:
    enum { MOST_WAITING = 100000 };

    EdgeData(EdgeMetrics& metrics, EdgePublisher& publisher, DeliveryLedger& ledger,
             const StationClock& clock);

    /// A sample while there are no births: nothing is owed for it. One that no row keeps is lost.
    void lookOn(const Sample& sample);

    /// A sample of a session with births.
    void push(const Sample& sample);

    bool isWaiting() const
    {
        return !m_waiting.empty();
    }

    /// All samples up to this row were taken from those that wait.
    quint64 lastTaken() const
    {
        return m_lastTaken;
    }

    /// Sends a part of what waits.
    void sendSome();

    /// A session begins: the shadow is what the births tell, all rows so far are the ledger's.
    void begin();

    /// The births of this moment: NBIRTH, then the DBIRTH of each device that answers.
    void bear(NodeMetrics& node, quint8 birthSequence);

    /// The session is over: what waits only moves the shadow.
    void end();

    /// Whether a row is held for a birth to come: it is neither sent nor owed.
    bool isHolding();

    /// What is held is owed now.
    void owe();

    quint64 sent() const
    {
        return m_groups.sent();
    }

    /// Values that no message can tell any more and no row keeps.
    qint64 lost() const
    {
        return m_lost;
    }

private:
    void take(const Sample& sample);
    void takeReading(const EdgeMetrics::Place& place, const Sample& sample);
    void takeStanding(int device, bool answers);
    void hold(const EdgeMetrics::Place& place, const Sample& sample);
    void fold();
    void bear(EdgeStation& station);
    void bury(EdgeStation& station);
    void miss(quint64 number);
    void thinOut();

    EdgeMetrics& m_metrics;
    EdgePublisher& m_publisher;
    DeliveryLedger& m_ledger;
    const StationClock& m_clock;
    DataGroups m_groups;
    std::deque<Sample> m_waiting;
    size_t m_mostWaiting = MOST_WAITING;
    quint64 m_lastTaken = 0;
    std::vector<EdgeMetrics::Place> m_held; ///< metrics that hold a row, some twice
    std::set<QString> m_born;               ///< ids of devices that hosts take for alive
    qint64 m_lost = 0;
};

#endif
