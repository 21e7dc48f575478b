#include "plcMemory.h"

#include <new>

namespace {

enum { WORD_BITS = 16 };

struct BitPlace
{
    int word;
    int bit;
};

BitPlace placeOfCoil(int coil)
{
    const int base = coil < PlcMemory::MARKER_BASE ? 0 : PlcMemory::MARKER_BASE;
    return {base + (coil - base) / WORD_BITS, (coil - base) % WORD_BITS};
}

uint16_t withBit(uint16_t word, int bit, bool on)
{
    const int mask = 1 << bit;
    return static_cast<uint16_t>(on ? word | mask : word & ~mask);
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
        uint16_t& word = m_mapping->tab_registers[place.word];
        word = withBit(word, place.bit, m_mapping->tab_bits[coil] != 0);
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

uint16_t PlcMemory::holdingRegister(int number) const
{
    return m_mapping->tab_registers[number];
}

void PlcMemory::setHoldingRegister(int number, uint16_t value)
{
    m_mapping->tab_registers[number] = value;
    coilsFromRegisters(number, 1);
}

bool PlcMemory::coil(int number) const
{
    return m_mapping->tab_bits[number] != 0;
}

void PlcMemory::setCoil(int number, bool on)
{
    m_mapping->tab_bits[number] = on ? 1 : 0;
    registersFromCoils(number, 1);
}

uint16_t PlcMemory::inputRegister(int number) const
{
    return m_mapping->tab_input_registers[number];
}

void PlcMemory::setInputRegister(int number, uint16_t value)
{
    m_mapping->tab_input_registers[number] = value;
}

void PlcMemory::setInputBit(int number, bool on)
{
    uint16_t& word = m_mapping->tab_input_registers[number / WORD_BITS];
    word = withBit(word, number % WORD_BITS, on);
}
