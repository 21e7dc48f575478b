#include "plcStations.h"

namespace {

void dumpWord(std::ostream& out, int station, const char* area, int number, uint16_t value)
{
    if (value != 0) out << station << ' ' << area << ' ' << number << ' ' << value << '\n';
}

void dumpMemory(std::ostream& out, int station, const PlcMemory& memory)
{
    for (int number = 0; number < PlcMemory::UNITS; ++number)
        dumpWord(out, station, number < PlcMemory::MARKER_BASE ? "QW" : "MW", number,
                 memory.holdingRegister(number));
    for (int number = 0; number < PlcMemory::UNITS; ++number)
        dumpWord(out, station, "IW", number, memory.inputRegister(number));
}

} // namespace

PlcStations::PlcStations(const std::vector<int>& numbers)
{
    for (const int number : numbers)
        m_memories[number];
}

PlcMemory* PlcStations::find(int station)
{
    const auto found = m_memories.find(station);
    return found == m_memories.end() ? nullptr : &found->second;
}

void PlcStations::apply(const SignalValue& value)
{
    PlcMemory* const memory = find(value.place.station);
    if (!memory) return;
    switch (value.place.area) {
    case AREA_IW:
        return memory->setInputRegister(value.place.number, value.value);
    case AREA_QW:
    case AREA_MW:
        return memory->setHoldingRegister(value.place.number, value.value);
    case AREA_IX:
        return memory->setInputBit(value.place.number, value.value != 0);
    case AREA_QX:
    case AREA_MX:
        return memory->setCoil(value.place.number, value.value != 0);
    }
}

void PlcStations::dump(std::ostream& out) const
{
    for (const auto& entry : m_memories)
        dumpMemory(out, entry.first, entry.second);
}
