#include "plcModel.h"

#include "modbusChecksum.h"

namespace {

enum {
    MARKERS = 3000,
    WORD_BITS = 16,
    CRC_BYTES = 2,
    SHORTEST_REQUEST = 8,
    ECHOED_BYTES = 6,
    MOST_READ = 125,
    COIL_ON = 0xFF00,
    ILLEGAL_FUNCTION = 1,
    ILLEGAL_VALUE = 3
};

int wordAt(const Bytes& bytes, size_t at)
{
    return bytes[at] << 8 | bytes[at + 1];
}

Bytes echo(const Bytes& request)
{
    return Bytes(request.begin(), request.begin() + ECHOED_BYTES);
}

Bytes refusal(const Bytes& request, int code)
{
    return {request[0], static_cast<std::uint8_t>(request[1] | 0x80),
            static_cast<std::uint8_t>(code)};
}

/// Where a bit of an area or a coil is kept.
struct Place
{
    int word;
    int bit;
};

Place placeOfBit(int number, int base)
{
    return {base + (number - base) / WORD_BITS, (number - base) % WORD_BITS};
}

template <typename Registers> Bytes readReply(const Registers& registers, const Bytes& request)
{
    const int first = wordAt(request, 2);
    const int count = wordAt(request, 4);
    if (count < 1 || count > MOST_READ) return refusal(request, ILLEGAL_VALUE);
    Bytes reply = {request[0], request[1], static_cast<std::uint8_t>(2 * count)};
    for (int i = first; i < first + count; ++i) {
        reply.push_back(static_cast<std::uint8_t>(registers.at(static_cast<size_t>(i)) >> 8));
        reply.push_back(static_cast<std::uint8_t>(registers.at(static_cast<size_t>(i)) & 255));
    }
    return reply;
}

} // namespace

PlcModel::PlcModel(int stations)
{
    for (int station = 1; station <= stations; ++station)
        m_stations[station] = Station();
}

Bytes PlcModel::answer(const Bytes& request)
{
    if (request.size() < SHORTEST_REQUEST) return Bytes();
    if (frameWith(Bytes(request.begin(), request.end() - CRC_BYTES)) != request) return Bytes();
    const auto found = m_stations.find(request[0]);
    return found == m_stations.end() ? Bytes() : frameWith(obey(found->second, request));
}

void PlcModel::putCoil(Station& station, int coil, bool on)
{
    const Place place = placeOfBit(coil, coil < MARKERS ? 0 : int(MARKERS));
    std::uint16_t& word = station.holding.at(static_cast<size_t>(place.word));
    const int mask = 1 << place.bit;
    word = static_cast<std::uint16_t>(on ? word | mask : word & ~mask);
}

Bytes PlcModel::obey(Station& station, const Bytes& request)
{
    const int first = wordAt(request, 2);
    const int field = wordAt(request, 4);
    switch (request[1]) { // MODBUS Application Protocol V1.1b3, 6
    case 3:
        return readReply(station.holding, request);
    case 4:
        return readReply(station.inputs, request);
    case 5:
        if (field != COIL_ON && field != 0) return refusal(request, ILLEGAL_VALUE);
        putCoil(station, first, field != 0);
        return echo(request);
    case 6:
        station.holding.at(static_cast<size_t>(first)) = static_cast<std::uint16_t>(field);
        return echo(request);
    case 15:
        for (int i = 0; i < field; ++i)
            putCoil(station, first + i, (request.at(7 + size_t(i) / 8) >> i % 8 & 1) != 0);
        return echo(request);
    case 16:
        for (int i = 0; i < field; ++i)
            station.holding.at(static_cast<size_t>(first) + static_cast<size_t>(i)) =
                static_cast<std::uint16_t>(wordAt(request, 7 + 2 * static_cast<size_t>(i)));
        return echo(request);
    default:
        return refusal(request, ILLEGAL_FUNCTION);
    }
}

int PlcModel::element(int station, const std::string& area, int number) const
{
    const Station& memory = m_stations.at(station);
    const Registers& registers = area[0] == 'I' ? memory.inputs : memory.holding;
    if (area[1] == 'W') return registers.at(static_cast<size_t>(number));
    const Place place = placeOfBit(number, area[0] == 'M' ? int(MARKERS) : 0);
    return registers.at(static_cast<size_t>(place.word)) >> place.bit & 1;
}

void PlcModel::setElement(int station, const std::string& area, int number, int value)
{
    Station& memory = m_stations.at(station);
    Registers& registers = area[0] == 'I' ? memory.inputs : memory.holding;
    if (area[1] == 'W') {
        registers.at(static_cast<size_t>(number)) = static_cast<std::uint16_t>(value);
        return;
    }
    const Place place = placeOfBit(number, area[0] == 'M' ? int(MARKERS) : 0);
    std::uint16_t& word = registers.at(static_cast<size_t>(place.word));
    word = static_cast<std::uint16_t>((word & ~(1 << place.bit)) | (value << place.bit));
}
