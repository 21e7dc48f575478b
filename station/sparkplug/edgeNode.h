#ifndef EDGE_NODE_H
#define EDGE_NODE_H

#include "plant/deliveryLedger.h"
#include "plant/plantCommands.h"
#include "plant/plantDialect.h"
#include "values/stationClock.h"

#include <memory>

/// The counter of CONNECTs, bdSeq, which outlives restarts.
class BirthSequence
{
public:
    virtual ~BirthSequence() = default;

    /// The next number, stored durably before it returns; 0 without memory, 255 is followed by 0.
    /// Empty: it cannot be stored, so no CONNECT may go out.
    virtual std::optional<quint8> take() = 0;

    /// The last number was in no CONNECT that left this machine: it is given out again.
    virtual void giveBack() = 0;
};

struct EdgeNodeSettings
{
    QString group, node;                ///< as configured; ids are made of them, see edgeNames.h
    std::vector<BrokerAddress> servers; ///< at least one, tried in turn
    QString primaryHost;                ///< empty: none
    bool takesCommands = false;
};

/// A Sparkplug B edge node: one session at a time with one broker of its list.
///
///                 pause over             CONNACK 0            SUBACK, and the primary host is
///                 online
///     PAUSING ----------------> CONNECTING ------> SUBSCRIBING ----------------------------> BORN
///        ^   TCP, CONNACK fail |             refused |    host offline |        host offline,  |
///        +---------------------+---------------------+-----------------+------- lost, leave() -+
///
/// In BORN: NBIRTH, then the DBIRTH of each device that answers, then data. A sample is sent when
/// its value or quality differs from the last one that was sent. History follows when all live
/// samples are out.
///
/// When the devices differ in BORN, the births go out anew, with the same bdSeq. leave() ends a
/// session with NDEATH.
class EdgeNode : public PlantDialect
{
public:
    EdgeNode(const EdgeNodeSettings& settings, BrokerSession& session, BirthSequence& sequence,
             DeliveryLedger& ledger, PlantCommands& commands, const StationClock& clock);
    ~EdgeNode() override;

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
