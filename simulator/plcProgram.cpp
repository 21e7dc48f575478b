#include "plcProgram.h"

#include "plcStations.h"

PlcProgram::PlcProgram(const std::vector<Signal>& signals, unsigned seed,
                       const std::vector<int>& tankStations)
    : m_signals(signals, seed)
{
    for (const int station : tankStations)
        m_tanks[station];
}

void PlcProgram::start(PlcStations& stations) const
{
    for (const auto& [station, tank] : m_tanks) {
        if (PlcMemory* const memory = stations.find(station)) tank.start(*memory);
    }
}

void PlcProgram::runUntil(std::int64_t timeMs, PlcStations& stations)
{
    for (const PlaceValue& value : m_signals.changes(timeMs))
        stations.apply(value);
    for (auto& [station, tank] : m_tanks) {
        if (PlcMemory* const memory = stations.find(station)) tank.runUntil(timeMs, *memory);
    }
}
