#ifndef PLC_MODEL_H
#define PLC_MODEL_H

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

typedef std::vector<std::uint8_t> Bytes;

/// A Modbus RTU server with the memory of the device. Shares no code with the driver, the host or
/// the simulated PLC.
///
///   holding registers  QW from 0, MW from 3000
///   input registers    IW from 0
///   coils              below 3000 the bits of QW, from 3000 on the bits of MW
/// Bits are the registers' own: bit k of a group of 16 is bit k of its register.
class PlcModel
{
public:
    explicit PlcModel(int stations);

    /// The reply; empty: no station takes the request for its own.
    Bytes answer(const Bytes& request);

    /// An element by the area's name and address number: a word, or a bit as 0 or 1.
    int element(int station, const std::string& area, int number) const;
    void setElement(int station, const std::string& area, int number, int value);

private:
    enum { REGISTERS = 8192 };
    typedef std::array<std::uint16_t, REGISTERS> Registers;
    struct Station
    {
        Registers holding = {};
        Registers inputs = {};
    };

    static void putCoil(Station& station, int coil, bool on);
    static Bytes obey(Station& station, const Bytes& request);

    std::map<int, Station> m_stations;
};

#endif
