#include "tankProgram.h"

#include "plcMemory.h"

#include <cmath>
#include <cstring>

namespace {

/// Places on the wire.
enum Place {
    PUMP = 0,                               // coil
    VALVE = 1,                              // coil
    AUTOMATIC = PlcMemory::MARKER_BASE,     // coil
    SETPOINT = PlcMemory::MARKER_BASE + 50, // holding registers
    LEVEL = PlcMemory::MARKER_BASE + 52,
    RAW_LEVEL = 0, // input registers
    RAW_INFLOW = 1,
    RAW_OUTFLOW = 2,
    HIGH_ALARM = 64, // input bits
    LOW_ALARM = 65
};

enum { WORD_BITS = 16, TENTHS = 10, HUNDREDTHS = 100, WORD_MASK = 0xFFFF };

float floatAt(const PlcMemory& memory, int number)
{
    const std::uint32_t bits = std::uint32_t(memory.holdingRegister(number)) << WORD_BITS |
                               memory.holdingRegister(number + 1);
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

void setFloat(PlcMemory& memory, int number, float value)
{
    std::uint32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    memory.setHoldingRegister(number, std::uint16_t(bits >> WORD_BITS));
    memory.setHoldingRegister(number + 1, std::uint16_t(bits & WORD_MASK));
}

std::uint16_t scaled(double value, int factor)
{
    return std::uint16_t(std::lround(value * factor));
}

Tank::Controls controlsIn(const PlcMemory& memory)
{
    Tank::Controls controls;
    controls.pump = memory.coil(PUMP);
    controls.valve = memory.coil(VALVE);
    controls.automatic = memory.coil(AUTOMATIC);
    controls.setpoint = double(floatAt(memory, SETPOINT));
    return controls;
}

} // namespace

void TankProgram::start(PlcMemory& memory) const
{
    setFloat(memory, SETPOINT, float(Tank::Controls().setpoint));
    show(memory);
}

void TankProgram::runUntil(std::int64_t timeMs, PlcMemory& memory)
{
    const bool pump = m_tank.run(timeMs - m_timeMs, controlsIn(memory));
    m_timeMs = timeMs;
    memory.setCoil(PUMP, pump);
    show(memory);
}

void TankProgram::show(PlcMemory& memory) const
{
    setFloat(memory, LEVEL, float(scaled(m_tank.level(), HUNDREDTHS)) / HUNDREDTHS);
    memory.setInputRegister(RAW_LEVEL, scaled(m_tank.level(), TENTHS));
    memory.setInputRegister(RAW_INFLOW, scaled(m_tank.inflow(), HUNDREDTHS));
    memory.setInputRegister(RAW_OUTFLOW, scaled(m_tank.outflow(), HUNDREDTHS));
    memory.setInputBit(HIGH_ALARM, m_tank.isHigh());
    memory.setInputBit(LOW_ALARM, m_tank.isLow());
}
