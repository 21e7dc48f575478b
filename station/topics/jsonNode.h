#ifndef JSON_NODE_H
#define JSON_NODE_H

#include "broker/brokerSession.h"
#include "plan/tag.h"
#include "plant/plantCommands.h"
#include "plant/plantStanding.h"
#include "samples/sample.h"
#include "sparkplug/edgeNode.h"

#include <memory>

struct JsonNodeSettings
{
    QString node;                       ///< as configured; topic levels are made of it
    std::vector<BrokerAddress> servers; ///< at least one, tried in turn
    bool takesCommands = false;
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
///
/// One thread uses it. Time comes from the clock; no function waits.
class JsonNode : public SessionListener
{
public:
    JsonNode(const JsonNodeSettings& settings, BrokerSession& session, PlantCommands& commands,
             const StationClock& clock);
    ~JsonNode() override;

    void setDevices(const std::vector<EdgeDevice>& devices);
    void take(const std::vector<Sample>& samples);

    /// As of EdgeNode.
    qint64 turn();
    void leave();
    bool isOver() const;
    PlantStanding standing() const;

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
