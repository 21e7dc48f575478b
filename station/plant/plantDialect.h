#ifndef PLANT_DIALECT_H
#define PLANT_DIALECT_H

#include "broker/mosquittoSession.h"
#include "plant/plantStanding.h"
#include "samples/sample.h"
#include "sparkplug/edgeNode.h"

/// A dialect of MQTT that the station speaks, with its session. The thread of MQTT uses it.
class PlantDialect
{
public:
    PlantDialect(ClientSettings settings, const StationClock& clock)
        : session(std::move(settings), clock)
    {
    }
    virtual ~PlantDialect() = default;

    virtual void setDevices(const std::vector<EdgeDevice>& devices) = 0;
    virtual void take(const std::vector<Sample>& samples) = 0;

    /// As of EdgeNode.
    virtual qint64 turn() = 0;
    virtual void leave() = 0;
    virtual bool isOver() const = 0;
    virtual PlantStanding standing() const = 0;

    MosquittoSession session;
};

/// A dialect by an EdgeNode or a JsonNode.
template <class Node> class SpokenDialect : public PlantDialect
{
public:
    /// @param others  what the node wants between its session and the clock
    template <class Settings, class... Others>
    SpokenDialect(const ClientSettings& client, const StationClock& clock, const Settings& settings,
                  Others&... others)
        : PlantDialect(client, clock), m_node(settings, session, others..., clock)
    {
        session.setListener(m_node);
    }

    void setDevices(const std::vector<EdgeDevice>& devices) override
    {
        m_node.setDevices(devices);
    }
    void take(const std::vector<Sample>& samples) override
    {
        m_node.take(samples);
    }
    qint64 turn() override
    {
        return m_node.turn();
    }
    void leave() override
    {
        m_node.leave();
    }
    bool isOver() const override
    {
        return m_node.isOver();
    }
    PlantStanding standing() const override
    {
        return m_node.standing();
    }

private:
    Node m_node;
};

#endif
