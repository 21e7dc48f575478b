#ifndef PLANT_HOST_H
#define PLANT_HOST_H

#include "edgeBench.h"

#include <set>

/// A host application that believes nothing: it follows what reaches it and notes each rule that is
/// broken. It knows the rules of Sparkplug and nothing of how the node keeps them.
class PlantHost
{
public:
    struct Value
    {
        bool isNull = true;
        double number = 0;
        qint32 quality = 0;

        bool operator==(const Value& other) const
        {
            return isNull == other.isNull && (isNull || number == other.number) &&
                   quality == other.quality;
        }
    };

    struct MetricState
    {
        QString name;
        quint64 type = 0;
        Value value;
    };

    struct DeviceState
    {
        bool isAlive = false;
        std::map<quint64, MetricState> metrics; ///< by alias
    };

    /// A row that reached the host.
    struct Row
    {
        enum Way { BIRTH, LIVE, HISTORY };

        QString device, name;
        double number = 0;
        qint32 quality = 0;
        Way way = LIVE;
        int session = 0;
    };

    std::vector<std::string> broken;
    std::vector<Row> rows;
    std::map<QString, DeviceState> devices;
    bool isNodeAlive = false;

    void take(const Told& told);

private:
    void connected(const Told& told);
    void published(const Told& told);
    void nodeBorn(const Told& told);
    void deviceBorn(const Told& told);
    void deviceTold(const Told& told);
    void entry(const QString& device, const ReceivedMetric& metric, qint64 sent);
    void nodeTold(const Told& told);
    void note(const QString& device, const MetricState& metric, const Value& value, Row::Way way);
    void count(const Told& told);
    void expect(bool isKept, const char* rule, const QString& where);

    int m_session = 0;
    quint64 m_will = 999;
    quint64 m_lastSeq = 0;
    bool m_isDying = false;      ///< its NDEATH came: nothing may follow in the MQTT session
    bool m_isFirst = true;       ///< nothing was published in the MQTT session
    std::set<quint64> m_aliases; ///< of the births since the last NBIRTH
    std::map<quint64, quint64> m_nodeMetrics; ///< the bits of the last value, by alias
};

#endif
