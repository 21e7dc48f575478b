#ifndef PLC_STATIONS_H
#define PLC_STATIONS_H

#include "place.h"
#include "plcMemory.h"

#include <map>
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

    const std::map<int, PlcMemory>& all() const
    {
        return m_memories;
    }

    /// Stores a value at its place. Ignores a station that is not served.
    void apply(const PlaceValue& value);

    /// 0 of a station that is not served.
    std::uint16_t valueAt(const Place& place) const;

private:
    std::map<int, PlcMemory> m_memories;
};

#endif
