#ifndef PLANT_DIALECT_H
#define PLANT_DIALECT_H

#include "broker/brokerSession.h"
#include "plant/edgeDevice.h"
#include "plant/plantStanding.h"
#include "samples/sample.h"
#include "wire/timeUnits.h"

/// A dialect of MQTT that the station speaks, on a session of its own: it connects, publishes what
/// it takes, and leaves.
///
/// One thread uses it. Time comes from a clock; no function waits.
class PlantDialect : public SessionListener
{
public:
    enum : qint64 {
        ANSWER_LIMIT = 10 * SECOND, ///< of a broker, to CONNECT and SUBSCRIBE
        FAREWELL_LIMIT = SECOND     ///< of a broker, to the last message
    };

    /// Why there is no session.
    static constexpr char NO_ANSWER[] = "the broker did not answer within 10 s";
    static constexpr char NO_GRANT[] = "the broker did not answer a subscription within 10 s";
    static constexpr char REFUSAL[] = "the broker refused the subscription";

    /// The devices of the configuration. A session goes on with what differs.
    virtual void setDevices(const std::vector<EdgeDevice>& devices) = 0;

    /// Takes samples in their order. They may come before their device.
    virtual void take(const std::vector<Sample>& samples) = 0;

    /// Does what is due: connects, gives up waiting, sends what waits. Call it behind each event,
    /// and at the time that it returns.
    /// @return on the steady clock, microseconds
    virtual qint64 turn() = 0;

    /// Ends the session: the last messages, their acknowledgement or FAREWELL_LIMIT, DISCONNECT. No
    /// session follows.
    virtual void leave() = 0;
    virtual bool isOver() const = 0;

    virtual PlantStanding standing() const = 0;
};

#endif
