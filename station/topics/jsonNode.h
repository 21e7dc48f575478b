#ifndef JSON_NODE_H
#define JSON_NODE_H

#include "plant/plantCommands.h"
#include "plant/plantDialect.h"
#include "values/stationClock.h"

#include <memory>

struct JsonNodeSettings
{
    QString node;                       ///< as configured; topic levels are made of it
    std::vector<BrokerAddress> servers; ///< at least one, tried in turn
    bool takesCommands = false;
    QString topicFile = QString(); ///< for TopicFile
};

/// The values as retained JSON texts, for programs that do not speak Sparkplug. It has a connection
/// of its own, because a connection has one will.
///
///     kakb/NODE/status                     online | offline     retained, the will
///     kakb/NODE/LINK/STATION/availability  online | offline     retained
///     kakb/NODE/LINK/TAG                   {"v","q","t"}        retained
///     kakb/NODE/LINK/TAG/set               {"v","id","expires"} taken, never when retained
///     kakb/NODE/LINK/TAG/result            {"id","outcome","reason","v"}
///
/// The last state of a tag wins. The state goes out first, then the availability, which is online
/// only behind the first good answer.
class JsonNode : public PlantDialect
{
public:
    JsonNode(const JsonNodeSettings& settings, BrokerSession& session, PlantCommands& commands,
             const StationClock& clock);
    ~JsonNode() override;

    void setDevices(const std::vector<EdgeDevice>& devices) override;
    void take(const std::vector<Sample>& samples) override;
    qint64 turn() override;
    void leave() override;
    bool isOver() const override;
    PlantStanding standing() const override;

    void connected() override;
    void ended(const QString& reason, bool connectSent) override;
    void subscribed(int request, bool isGranted) override;
    void delivered(int request) override;
    void received(const BrokerMessage& message) override;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

#endif
