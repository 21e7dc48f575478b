#include "modelPlc.h"

namespace {

enum {
    MARKERS = 3000,
    WORD_BITS = 16,
    ILLEGAL_FUNCTION = 1,
    ILLEGAL_ADDRESS = 2,
    ILLEGAL_VALUE = 3,
    READ_HOLDING = 3
};

int byteOf(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at));
}

int wordOf(const QByteArray& bytes, int at)
{
    return byteOf(bytes, at) << 8 | byteOf(bytes, at + 1);
}

int& wordOfCoil(ModelPlc::Station& station, int coil)
{
    return coil < MARKERS ? station.holding[coil / WORD_BITS]
                          : station.holding[MARKERS + (coil - MARKERS) / WORD_BITS];
}

int bitOfCoil(int coil)
{
    return (coil < MARKERS ? coil : coil - MARKERS) % WORD_BITS;
}

void putCoil(ModelPlc::Station& station, int coil, bool on)
{
    int& word = wordOfCoil(station, coil);
    const int mask = 1 << bitOfCoil(coil);
    word = on ? word | mask : word & ~mask;
}

QByteArray refusal(const QByteArray& request, int code)
{
    QByteArray bytes = request.left(2);
    bytes[1] = static_cast<char>(byteOf(request, 1) + 128);
    bytes.append(static_cast<char>(code));
    return bytes;
}

QByteArray readReply(const std::map<int, int>& words, const QByteArray& request)
{
    const int count = wordOf(request, 4);
    if (count < 1 || count > 125) return refusal(request, ILLEGAL_VALUE);
    QByteArray reply = request.left(2);
    reply.append(static_cast<char>(2 * count));
    for (int i = 0; i < count; ++i) {
        const auto found = words.find(wordOf(request, 2) + i);
        const int word = found == words.end() ? 0 : found->second;
        reply.append(static_cast<char>(word >> 8));
        reply.append(static_cast<char>(word & 255));
    }
    return reply;
}

} // namespace

/// The generator polynomial x^16 + x^15 + x^2 + 1, a bit at a time, lowest first.
QByteArray ModelPlc::withChecksum(QByteArray bytes)
{
    int crc = 65535;
    for (const char byte : bytes) {
        for (int bit = 0; bit < 8; ++bit) {
            const bool in = (static_cast<unsigned char>(byte) >> bit & 1) != (crc & 1);
            crc = crc / 2;
            if (in) crc ^= 40961;
        }
    }
    bytes.append(static_cast<char>(crc % 256));
    bytes.append(static_cast<char>(crc / 256));
    return bytes;
}

QByteArray ModelPlc::answer(const QByteArray& request)
{
    if (request.size() < 8 || withChecksum(request.left(request.size() - 2)) != request)
        return QByteArray();
    const auto found = m_stations.find(byteOf(request, 0));
    if (found == m_stations.end() || found->second.silent) return QByteArray();
    const bool isBehindTheEnd =
        byteOf(request, 1) == READ_HOLDING &&
        wordOf(request, 2) + wordOf(request, 4) - 1 > found->second.lastHolding;
    const int code =
        isBehindTheEnd ? int(ILLEGAL_ADDRESS) : refusalOf(found->second, wordOf(request, 2));
    return withChecksum(code != 0 ? refusal(request, code) : obey(found->second, request));
}

int ModelPlc::refusalOf(Station& station, int first)
{
    const auto refused = station.refusals.find(first);
    if (refused == station.refusals.end()) return 0;
    const auto due = station.refusalsDue.find(first);
    if (due != station.refusalsDue.end() && due->second-- <= 0) return 0;
    return refused->second;
}

QByteArray ModelPlc::obey(Station& station, const QByteArray& request)
{
    const int first = wordOf(request, 2);
    const int field = wordOf(request, 4);
    station.seen.insert(first);
    switch (byteOf(request, 1)) {
    case 3:
        return readReply(station.holding, request);
    case 4:
        return readReply(station.inputs, request);
    case 5:
        if (field != 0xFF00 && field != 0) return refusal(request, ILLEGAL_VALUE);
        putCoil(station, first, field != 0);
        return request.left(6);
    case 6:
        station.holding[first] = field;
        return request.left(6);
    case 15:
        for (int i = 0; i < field; ++i)
            putCoil(station, first + i, (byteOf(request, 7 + i / 8) >> i % 8 & 1) != 0);
        return request.left(6);
    case 16:
        for (int i = 0; i < field; ++i)
            station.holding[first + i] = wordOf(request, 7 + 2 * i);
        return request.left(6);
    default:
        return refusal(request, ILLEGAL_FUNCTION);
    }
}

int ModelPlc::word(int station, int number)
{
    return m_stations[station].holding[number];
}

bool ModelPlc::coil(int station, int number)
{
    return (wordOfCoil(m_stations[station], number) >> bitOfCoil(number) & 1) != 0;
}

void ModelPlc::setCoil(int station, int number, bool on)
{
    putCoil(m_stations[station], number, on);
}
