#ifndef PLC_PROGRAM_H
#define PLC_PROGRAM_H

#include "signals.h"
#include "tankProgram.h"

#include <map>

class PlcStations;

/// What the PLC's own program does in its memory: signals that move by themselves, and tanks.
class PlcProgram
{
public:
    /// @param tankStations  each of these stations has a tank
    PlcProgram(const std::vector<Signal>& signals, unsigned seed,
               const std::vector<int>& tankStations);

    /// Writes the tanks' first values. Call it once, before the first runUntil(); values that are
    /// set afterwards stay.
    void start(PlcStations& stations) const;

    /// Does all that is due.
    /// @param timeMs  milliseconds since the start; never goes back
    void runUntil(std::int64_t timeMs, PlcStations& stations);

private:
    SignalSet m_signals;
    std::map<int, TankProgram> m_tanks; ///< by station
};

#endif
