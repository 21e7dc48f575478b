#include "plcStations.h"

namespace {

std::uint16_t wordAt(const PlcMemory& memory, const MemorySpan& span)
{
    const int word = span.first / WORD_BITS;
    return span.isInput ? memory.inputRegister(word) : memory.holdingRegister(word);
}

std::uint16_t withBit(std::uint16_t word, int bit, bool on)
{
    const int mask = 1 << bit;
    return static_cast<std::uint16_t>(on ? word | mask : word & ~mask);
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

/// A bit is stored in its word: a QX bit from 3000 on has no coil of that number.
void PlcStations::apply(const PlaceValue& value)
{
    PlcMemory* const memory = find(value.place.station);
    if (!memory) return;
    const MemorySpan span = spanOf(value.place);
    const int number = span.first / WORD_BITS;
    const std::uint16_t word =
        span.count == 1 ? withBit(wordAt(*memory, span), span.first % WORD_BITS, value.value != 0)
                        : value.value;
    if (span.isInput) {
        memory->setInputRegister(number, word);
    } else {
        memory->setHoldingRegister(number, word);
    }
}

std::uint16_t PlcStations::valueAt(const Place& place) const
{
    const auto found = m_memories.find(place.station);
    if (found == m_memories.end()) return 0;
    const MemorySpan span = spanOf(place);
    const std::uint16_t word = wordAt(found->second, span);
    if (span.count > 1) return word;
    return static_cast<std::uint16_t>(word >> span.first % WORD_BITS & 1);
}
