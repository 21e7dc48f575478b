#ifndef EDGE_PUBLISHER_H
#define EDGE_PUBLISHER_H

#include "broker/brokerSession.h"
#include "sparkplug/edgeNames.h"
#include "sparkplug/payload.h"
#include "values/stationClock.h"

/// Puts the messages of a session into the socket's queue, numbered in that same step.
///
///     NBIRTH DBIRTH DDATA ... DDATA NDATA DDEATH ... DBIRTH        NBIRTH ...       NDEATH
///     seq  0      1     2       255     0      1          2             0           none
class EdgePublisher
{
public:
    EdgePublisher(const EdgeTopics& topics, BrokerSession& session, const StationClock& clock);

    /// NBIRTH, which begins the count anew, and NDATA.
    void sendNodeBirth(std::vector<Metric> metrics);
    void sendNodeData(std::vector<Metric> metrics);

    /// DBIRTH, DDATA and DDEATH.
    void sendDevice(const char* kind, const QString& device, std::vector<Metric> metrics);

    /// @return the request's number
    int sendNodeDeath(quint8 birthSequence);

    /// The NDEATH of this sequence: the will, or what the node says before it leaves.
    BrokerMessage nodeDeath(quint8 birthSequence) const;

private:
    void send(const QString& topic, std::vector<Metric> metrics);

    const EdgeTopics& m_topics;
    BrokerSession& m_session;
    const StationClock& m_clock;
    quint8 m_seq = 0; ///< of the next message; 255 is followed by 0
};

#endif
