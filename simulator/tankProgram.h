#ifndef TANK_PROGRAM_H
#define TANK_PROGRAM_H

#include "tank.h"

class PlcMemory;

/// The PLC's program for the tank: it reads the operator's orders from the memory, lets the tank
/// run, and writes the tank's state into the memory. Addresses as kakb-host takes them:
///
///   QX0.0  pump on         the operator; in automatic mode the program
///   QX0.1  valve open      the operator
///   MX0.0  automatic       the operator
///   MW100  setpoint        the operator; float32:high, percent
///   MW104  level           float32:high, percent with two decimals
///   IW0    level           uint16, tenths of a percent
///   IW2    inflow          uint16, hundredths of a litre a second
///   IW4    outflow         uint16, hundredths of a litre a second
///   IX8.0  level is high   from 90 %, until below 85 %
///   IX8.1  level is low    from 10 %, until above 15 %
class TankProgram
{
public:
    /// Writes the first setpoint, and the state of the tank before its first step.
    void start(PlcMemory& memory) const;

    /// Runs the program up to a time.
    /// @param timeMs  milliseconds since the start; never goes back
    void runUntil(std::int64_t timeMs, PlcMemory& memory);

private:
    void show(PlcMemory& memory) const;

    Tank m_tank;
    std::int64_t m_timeMs = 0;
};

#endif
