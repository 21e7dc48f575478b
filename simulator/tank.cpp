#include "tank.h"

#include <algorithm>
#include <cmath>

namespace {

const std::int64_t LONGEST_RUN_MS = 3600000;
const double FULL = 100;    // percent
const double DEAD_BAND = 2; // percent, on both sides of the setpoint
const double HIGH_ON = 90;  // percent
const double HIGH_OFF = 85; // percent
const double LOW_ON = 10;   // percent
const double LOW_OFF = 15;  // percent
const double STEP_S = double(Tank::STEP_MS) / 1000;

} // namespace

bool Tank::run(std::int64_t ms, const Controls& controls)
{
    const double oldSetpoint = m_controls.setpoint;
    m_controls = controls;
    m_controls.setpoint =
        std::isnan(controls.setpoint) ? oldSetpoint : std::clamp(controls.setpoint, 0.0, FULL);
    m_restMs += std::min(ms, LONGEST_RUN_MS);
    for (; m_restMs >= STEP_MS; m_restMs -= STEP_MS)
        step();
    return m_controls.pump;
}

void Tank::step()
{
    if (m_controls.automatic) control();
    const double share = m_litres / CAPACITY_L;
    const double drawn = m_controls.valve ? VALVE_L_PER_S * std::sqrt(share) : 0;
    m_outflow = std::min(drawn, m_litres / STEP_S);
    const double room = (CAPACITY_L - m_litres) / STEP_S + m_outflow;
    m_inflow = m_controls.pump ? std::min(double(PUMP_L_PER_S), room) : 0;
    m_litres = std::clamp(m_litres + (m_inflow - m_outflow) * STEP_S, 0.0, double(CAPACITY_L));
    watchLevel();
}

void Tank::control()
{
    if (level() < m_controls.setpoint - DEAD_BAND) m_controls.pump = true;
    if (level() > m_controls.setpoint + DEAD_BAND) m_controls.pump = false;
}

/// Each alarm goes off at another level than it comes on, so that it does not flicker.
void Tank::watchLevel()
{
    m_isHigh = level() >= (m_isHigh ? HIGH_OFF : HIGH_ON);
    m_isLow = level() <= (m_isLow ? LOW_OFF : LOW_ON);
}
