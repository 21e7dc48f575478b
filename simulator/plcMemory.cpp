#include "plcMemory.h"

#include <new>

namespace {

enum { UNITS = 65536, MARKER_BASE = 3000, WORD_BITS = 16 };

struct BitPlace
{
    int word;
    int bit;
};

BitPlace placeOfCoil(int coil)
{
    const int base = coil < MARKER_BASE ? 0 : MARKER_BASE;
    return {base + (coil - base) / WORD_BITS, (coil - base) % WORD_BITS};
}

int bigEndian(const uint8_t* at)
{
    return at[0] * 256 + at[1];
}

} // namespace

PlcMemory::PlcMemory() : m_mapping(modbus_mapping_new(UNITS, 0, UNITS, UNITS))
{
    if (!m_mapping) throw std::bad_alloc();
}

void PlcMemory::registersFromCoils(int firstCoil, int count)
{
    for (int coil = firstCoil; coil < firstCoil + count && coil < UNITS; ++coil) {
        const BitPlace place = placeOfCoil(coil);
        const int mask = 1 << place.bit;
        uint16_t& word = m_mapping->tab_registers[place.word];
        word = static_cast<uint16_t>(m_mapping->tab_bits[coil] ? word | mask : word & ~mask);
    }
}

void PlcMemory::coilsFromRegisters(int firstRegister, int count)
{
    for (int word = firstRegister; word < firstRegister + count && word < UNITS; ++word) {
        const int base = word < MARKER_BASE ? 0 : MARKER_BASE;
        const int end = word < MARKER_BASE ? int(MARKER_BASE) : int(UNITS);
        for (int bit = 0; bit < WORD_BITS; ++bit) {
            const int coil = base + (word - base) * WORD_BITS + bit;
            if (coil >= end) return;
            m_mapping->tab_bits[coil] =
                static_cast<uint8_t>(m_mapping->tab_registers[word] >> bit & 1);
        }
    }
}

void PlcMemory::reflectWrite(const uint8_t* request)
{
    const int first = bigEndian(request + 2);
    switch (request[1]) {
    case MODBUS_FC_WRITE_SINGLE_COIL:
        return registersFromCoils(first, 1);
    case MODBUS_FC_WRITE_MULTIPLE_COILS:
        return registersFromCoils(first, bigEndian(request + 4));
    case MODBUS_FC_WRITE_SINGLE_REGISTER:
        return coilsFromRegisters(first, 1);
    case MODBUS_FC_WRITE_MULTIPLE_REGISTERS:
        return coilsFromRegisters(first, bigEndian(request + 4));
    default:
        return;
    }
}

void PlcMemory::tick()
{
    ++m_mapping->tab_input_registers[0];
}
