#ifndef PLC_MEMORY_H
#define PLC_MEMORY_H

#include <modbus/modbus.h>

#include <cstdint>
#include <memory>

// The memory of one station as libmodbus serves it.
//
//   holding registers   QW from 0, MW from 3000; place.h says where the areas end
//   input registers     IW; their bits are IX: bit k of word w is IX 16 w + k
//   coils               bits of the holding registers: coil n below 3000 is bit n of QW memory,
//                       coil 3000 + m is bit m of MW memory; bit k of word w is bit 16 w + k
//
// libmodbus stores coils and registers separately. After a write to coils or holding registers the
// other view is updated.

class PlcMemory
{
public:
    enum { UNITS = 65536, MARKER_BASE = 3000 }; // so many units of each kind above

    PlcMemory();

    modbus_mapping_t* mapping() const
    {
        return m_mapping.get();
    }

    /// Updates the other view of the same memory after a write request was served.
    /// @param request  the request as received, from the station byte on
    void reflectWrite(const uint8_t* request);

    /// @name The PLC's own program; numbers as on the wire, 0 to UNITS - 1
    /// @{
    uint16_t holdingRegister(int number) const;
    void setHoldingRegister(int number, uint16_t value);
    bool coil(int number) const;
    void setCoil(int number, bool on);
    uint16_t inputRegister(int number) const;
    void setInputRegister(int number, uint16_t value);
    void setInputBit(int number, bool on);
    /// @}

private:
    void registersFromCoils(int firstCoil, int count);
    void coilsFromRegisters(int firstRegister, int count);

    struct FreeMapping
    {
        void operator()(modbus_mapping_t* mapping) const
        {
            modbus_mapping_free(mapping);
        }
    };
    std::unique_ptr<modbus_mapping_t, FreeMapping> m_mapping;
};

#endif
