#include "sparkplug/edgePublisher.h"

#include <algorithm>
#include <utility>

EdgePublisher::EdgePublisher(const EdgeTopics& topics, BrokerSession& session,
                             const StationClock& clock)
    : m_topics(topics), m_session(session), m_clock(clock)
{
}

/// A clock that was set back must not make a live value younger than its message. A historical one
/// has the time of its row, by which what comes twice is known.
void EdgePublisher::send(const QString& topic, std::vector<Metric> metrics)
{
    Payload payload;
    payload.time = m_clock.wall();
    payload.seq = m_seq++;
    payload.metrics = std::move(metrics);
    for (Metric& metric : payload.metrics)
        if (!metric.isHistorical) metric.time = std::min(metric.time, payload.time);
    m_session.publish({topic, encodedPayload(payload), 0, false});
}

void EdgePublisher::sendNodeBirth(std::vector<Metric> metrics)
{
    m_seq = 0;
    send(m_topics.ofNode("NBIRTH"), std::move(metrics));
}

void EdgePublisher::sendNodeData(std::vector<Metric> metrics)
{
    send(m_topics.ofNode("NDATA"), std::move(metrics));
}

void EdgePublisher::sendDevice(const char* kind, const QString& device, std::vector<Metric> metrics)
{
    send(m_topics.ofDevice(kind, device), std::move(metrics));
}

BrokerMessage EdgePublisher::nodeDeath(quint8 birthSequence) const
{
    Metric sequence;
    sequence.name = QLatin1String("bdSeq");
    sequence.type = MetricType::INT64;
    sequence.encodedAs = MetricType::INT64;
    sequence.value = qint64(birthSequence);
    Payload payload;
    payload.time = m_clock.wall();
    sequence.time = payload.time;
    payload.metrics.push_back(sequence);
    return {m_topics.ofNode("NDEATH"), encodedPayload(payload), 1, false};
}

int EdgePublisher::sendNodeDeath(quint8 birthSequence)
{
    return m_session.publish(nodeDeath(birthSequence));
}
