#ifndef STATION_CLOCK_H
#define STATION_CLOCK_H

#include <QtGlobal>

/// The two clocks of the station. Tests hand in a clock of their own. Any thread calls it.
class StationClock
{
public:
    virtual ~StationClock() = default;

    /// Microseconds. Never goes back, and goes on while the process or the machine is stopped, so
    /// that a value grows old in that time, too.
    virtual qint64 steady() const = 0;

    /// Milliseconds since 1970 UTC. May jump when somebody sets the clock: only for times that are
    /// shown or kept, never for a difference.
    virtual qint64 wall() const = 0;
};

/// The clocks of the system.
class SystemClock : public StationClock
{
public:
    qint64 steady() const override;
    qint64 wall() const override;
};

#endif
