#include "plcModel.h"

#include "modbusFrames.h"

namespace {

enum {
    MARKERS = 3000,
    WORD_BITS = 16,
    SHORTEST_REQUEST = 8,
    WITHOUT_DATA = 9, ///< a write of several
    ECHOED_BYTES = 6,
    CHECKSUM_BYTES = 2,
    MOST_READ = 125,
    READ_HOLDING = 3,
    COIL_ON = 0xFF00
};

enum { ACCEPTED = 0, ILLEGAL_FUNCTION = 1, ILLEGAL_ADDRESS = 2, ILLEGAL_VALUE = 3 };

/// Register and bit in which a coil or a bit of an area is kept.
struct Place
{
    int word;
    int bit;
};

Place placeOfBit(int number, int base)
{
    return {base + (number - base) / WORD_BITS, (number - base) % WORD_BITS};
}

Place placeOfCoil(int coil)
{
    return placeOfBit(coil, coil < MARKERS ? 0 : int(MARKERS));
}

Place placeOfBit(const std::string& area, int number)
{
    return placeOfBit(number, area[0] == 'M' ? int(MARKERS) : 0);
}

bool isWord(const std::string& area)
{
    return area[1] == 'W';
}

int valueOf(const PlcModel::Registers& registers, int number)
{
    const auto found = registers.find(number);
    return found == registers.end() ? 0 : found->second;
}

bool bitOf(const PlcModel::Registers& registers, const Place& place)
{
    return (valueOf(registers, place.word) >> place.bit & 1) != 0;
}

void putBit(PlcModel::Registers& registers, const Place& place, bool on)
{
    int& word = registers[place.word];
    const int mask = 1 << place.bit;
    word = on ? word | mask : word & ~mask;
}

/// Whether a write of several carries so many bytes of data; their length field wraps around.
bool carries(const QByteArray& request, int dataBytes)
{
    return request.size() == WITHOUT_DATA + dataBytes;
}

QByteArray echoOf(const QByteArray& request)
{
    return frameWith(request.left(ECHOED_BYTES));
}

QByteArray readReply(const PlcModel::Registers& registers, const QByteArray& request)
{
    const int count = wordOf(request, 4);
    if (count < 1 || count > MOST_READ) return refusalOf(request, ILLEGAL_VALUE);
    return readReplyOf(request, [&](int number) { return valueOf(registers, number); });
}

} // namespace

PlcModel::PlcModel(int stations)
{
    for (int number = 1; number <= stations; ++number)
        station(number);
}

QByteArray PlcModel::answer(const QByteArray& request)
{
    if (request.size() < SHORTEST_REQUEST) return QByteArray();
    if (frameWith(request.left(int(request.size()) - CHECKSUM_BYTES)) != request)
        return QByteArray();
    const auto found = m_stations.find(byteOf(request, 0));
    if (found == m_stations.end() || found->second.silent) return QByteArray();
    const int code = refusalOf(found->second, request);
    return code != ACCEPTED ? ::refusalOf(request, code) : obey(found->second, request);
}

int PlcModel::refusalOf(Station& station, const QByteArray& request)
{
    const int first = wordOf(request, 2);
    if (byteOf(request, 1) == READ_HOLDING && first + wordOf(request, 4) - 1 > station.lastHolding)
        return ILLEGAL_ADDRESS;
    const auto refused = station.refusals.find(first);
    if (refused == station.refusals.end()) return ACCEPTED;
    const auto due = station.refusalsDue.find(first);
    if (due != station.refusalsDue.end() && due->second-- <= 0) return ACCEPTED;
    return refused->second;
}

QByteArray PlcModel::obey(Station& station, const QByteArray& request)
{
    const int first = wordOf(request, 2);
    const int field = wordOf(request, 4);
    station.seen.insert(first);
    switch (byteOf(request, 1)) { // MODBUS Application Protocol V1.1b3, 6
    case READ_HOLDING:
        return readReply(station.holding, request);
    case 4:
        return readReply(station.inputs, request);
    case 5:
        if (field != COIL_ON && field != 0) return ::refusalOf(request, ILLEGAL_VALUE);
        putBit(station.holding, placeOfCoil(first), field != 0);
        return echoOf(request);
    case 6:
        station.holding[first] = field;
        return echoOf(request);
    case 15:
        if (!carries(request, (field + 7) / 8)) return ::refusalOf(request, ILLEGAL_VALUE);
        for (int i = 0; i < field; ++i)
            putBit(station.holding, placeOfCoil(first + i),
                   (byteOf(request, 7 + i / 8) >> i % 8 & 1) != 0);
        return echoOf(request);
    case 16:
        if (!carries(request, 2 * field)) return ::refusalOf(request, ILLEGAL_VALUE);
        for (int i = 0; i < field; ++i)
            station.holding[first + i] = wordOf(request, 7 + 2 * i);
        return echoOf(request);
    default:
        return ::refusalOf(request, ILLEGAL_FUNCTION);
    }
}

int PlcModel::element(int station, const std::string& area, int number) const
{
    const Station& memory = m_stations.at(station);
    const Registers& registers = area[0] == 'I' ? memory.inputs : memory.holding;
    return isWord(area) ? valueOf(registers, number)
                        : int(bitOf(registers, placeOfBit(area, number)));
}

void PlcModel::setElement(int station, const std::string& area, int number, int value)
{
    Station& memory = m_stations.at(station);
    Registers& registers = area[0] == 'I' ? memory.inputs : memory.holding;
    if (isWord(area))
        registers[number] = value;
    else
        putBit(registers, placeOfBit(area, number), value != 0);
}

bool PlcModel::coil(int station, int number) const
{
    return bitOf(m_stations.at(station).holding, placeOfCoil(number));
}

void PlcModel::setCoil(int station, int number, bool on)
{
    putBit(m_stations.at(station).holding, placeOfCoil(number), on);
}
