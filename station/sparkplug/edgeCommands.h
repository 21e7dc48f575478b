#ifndef EDGE_COMMANDS_H
#define EDGE_COMMANDS_H

#include "plant/plantCommands.h"
#include "sparkplug/edgeMetrics.h"

#include <deque>
#include <map>
#include <memory>

/// Commands of hosts. They are foreign input: whatever they hold, each of their metrics has one
/// outcome, and none of them ends the session.
///
///     decoded -> named by the last birth -> fits the metric -> PlantCommands -> confirmed, refused
///           |                      |                  |                          or failed
///           +----------------------+------------------+-> refused, counted
class EdgeCommands
{
public:
    /// What became of a command, to be told as a metric.
    struct Outcome
    {
        QString link; ///< empty: the node tells it
        int station = 0;
        QString text; ///< {"id","metric","outcome","reason","value"}
    };

    /// What nobody takes off is bounded: then the oldest outcomes are left out.
    enum { MOST_OUTCOMES = 20000 };

    EdgeCommands(EdgeMetrics& metrics, PlantCommands& plant, bool takesCommands);

    /// @param from  "mqtt://HOST:PORT TOPIC", for the audit
    /// @return whether the births are asked for
    bool takeOfNode(const QByteArray& payload, const QString& from);

    /// @param device  the last level of the topic
    void takeOfDevice(const QString& device, const QByteArray& payload, const QString& from);

    /// A message of which nothing may be executed.
    void refuseMessage(const QString& reason, const QString& from);

    /// Takes the outcomes that are to be told and whose device can tell them, the outcomes of each
    /// device in their order. The others wait: `canTell` is asked once for each device with waiting
    /// ones, and for each new outcome.
    std::vector<Outcome> takeOutcomes(const std::function<bool(const Outcome&)>& canTell);

    /// Commands that came, and those of them that were refused, here or by the PLC.
    quint64 taken() const
    {
        return m_taken;
    }
    quint64 refused() const
    {
        return m_ends->refused;
    }

private:
    using Outcomes = std::deque<Outcome>;
    using Teller = std::pair<QString, int>; ///< link and station

    struct Ends
    {
        Outcomes outcomes; ///< new ones
        quint64 refused = 0;

        void put(const Outcome& outcome);
    };

    const EdgeMetric* namedMetric(const EdgeStation& station, const CommandMetric& command) const;
    void takeMetric(const EdgeStation& station, const CommandMetric& command, const QString& from);
    void refuse(const EdgeStation* station, const CommandMetric* command, const QString& reason,
                const QString& from);
    void write(const EdgeStation& station, const EdgeMetric& metric, const MetricValue& value,
               const QString& from);
    void keep(Outcome outcome);
    static Teller tellerOf(const Outcome& outcome);

    EdgeMetrics& m_metrics;
    PlantCommands& m_plant;
    const bool m_takesCommands;
    const std::shared_ptr<Ends> m_ends;   ///< writes under way outlive this
    std::map<Teller, Outcomes> m_waiting; ///< for a birth; none is empty
    size_t m_waitingCount = 0;            ///< MOST_OUTCOMES at most
    quint64 m_taken = 0;
};

#endif
