#ifndef PLC_STATIONS_H
#define PLC_STATIONS_H

#include "plcMemory.h"
#include "signals.h"

#include <map>
#include <ostream>
#include <vector>

/// The stations on the line, each with its own memory.
class PlcStations
{
public:
    explicit PlcStations(const std::vector<int>& numbers);

    /// Null when there is no such station.
    PlcMemory* find(int station);

    std::map<int, PlcMemory>& all()
    {
        return m_memories;
    }

    /// Stores a signal's value at its place. Ignores a station that is not served.
    void apply(const SignalValue& value);

    /// A line "STATION AREA NUMBER VALUE" for every word that is not 0: QW, MW and IW, numbered as
    /// on the wire.
    void dump(std::ostream& out) const;

private:
    std::map<int, PlcMemory> m_memories;
};

#endif
