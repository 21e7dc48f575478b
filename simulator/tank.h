#ifndef TANK_H
#define TANK_H

#include <cstdint>

/// A water tank with a pump, a valve and two alarms, as a machine to look at. It has no clock of
/// its own: the caller says how much time has passed.
///
///        pump                         level (l)      alarms, in percent of the capacity
///          |  6 l/s                     100 +-----   high: on at 90, off below 85
///          v                                |
///      +-------+                            |        low:  on at 10, off above 15
///      |~~~~~~~|---> valve                0 +-----
///      +-------+     8 l/s when full, in proportion to the root of the level
///
/// In automatic mode the tank's controller switches the pump on when the level falls 2 % below the
/// setpoint, and off when it rises 2 % above the setpoint.
///
/// Invariants: 0 <= level <= CAPACITY_L; after each step the level has changed by the water that
/// came in minus the water that went out. What does not fit overflows and is no inflow.
class Tank
{
public:
    enum { CAPACITY_L = 100, PUMP_L_PER_S = 6, VALVE_L_PER_S = 8, STEP_MS = 10 };

    /// What the operator and the controller set.
    struct Controls
    {
        bool pump = false;
        bool valve = false;
        bool automatic = false;
        double setpoint = 60; ///< percent; outside 0 to 100 it counts as the nearer limit, and a
                              ///< value that is no number leaves the setpoint as it was
    };

    /// Lets time pass in steps of STEP_MS. The rest of a step is kept for the next call.
    /// @param ms  0 or more. Beyond an hour the tank has reached its end: more is not worked out.
    /// @return the pump after it, which the controller may have switched
    bool run(std::int64_t ms, const Controls& controls);

    /// @name The present state
    /// @{
    double level() const ///< percent
    {
        return m_litres * 100 / CAPACITY_L;
    }
    double inflow() const ///< litres a second
    {
        return m_inflow;
    }
    double outflow() const ///< litres a second
    {
        return m_outflow;
    }
    bool isHigh() const
    {
        return m_isHigh;
    }
    bool isLow() const
    {
        return m_isLow;
    }
    /// @}

private:
    void step();
    void control();
    void watchLevel();

    Controls m_controls;
    double m_litres = 40;
    double m_inflow = 0;
    double m_outflow = 0;
    bool m_isHigh = false;
    bool m_isLow = false;
    std::int64_t m_restMs = 0; ///< time that is no whole step yet
};

#endif
