#ifndef PLANT_COMMANDS_H
#define PLANT_COMMANDS_H

#include "machine/writeEnd.h"
#include "plan/tag.h"
#include "sparkplug/payload.h"

#include <functional>

/// Writes that came from a broker. Each has one end, told on the thread that takes it.
class PlantCommands
{
public:
    virtual ~PlantCommands() = default;

    using Ended = std::function<void(const WriteEnd&)>;

    /// Writes a tag. A tag that must not be written, and a value that does not fit, end as refused,
    /// unsent. `ended` is called once, by turn() of the thread that called, never from here.
    /// @param from  for the audit: "mqtt://HOST:PORT spBv1.0/G/DCMD/N/D"
    virtual void write(const QString& link, const QString& tag, const MetricValue& value,
                       const QString& from, Ended ended) = 0;

    /// A command that names nothing that can be written, or does not fit, for the audit.
    virtual void refused(const QString& what, const QString& reason, const QString& from) = 0;
};

#endif
