#include "fuzzInput.h"

namespace {

enum { KNOWN_AREAS = 6, WORD_AREAS = 3, ODD_NAMES = 8 };

const char* const AREAS[KNOWN_AREAS] = {"MW", "IW", "QW", "MX", "IX", "QX"};
const char* const NEAR_NAMES[ODD_NAMES] = {"",     "mw",   "MW_bit", "QX_bit",
                                           "MW_B", "IW_D", "_",      "MWX"};

/// First, last and past-the-last numbers of the areas, and where 32 bits end.
const int EDGES[] = {0,     15,   16,   255,   256,   2999,       3000,
                     3007,  3008, 4095, 4096,  7095,  7096,       65535,
                     65536, -1,   -16,  -3000, 32767, 2147483647, -2147483647 - 1};

enum { EDGE_COUNT = sizeof EDGES / sizeof EDGES[0], NEIGHBOURS = 40 };

} // namespace

QString FuzzInput::knownArea()
{
    return QLatin1String(AREAS[number(0, KNOWN_AREAS - 1)]);
}

QString FuzzInput::wordArea()
{
    return QLatin1String(AREAS[number(0, WORD_AREAS - 1)]);
}

QString FuzzInput::areaName()
{
    const int choice = number(0, 15);
    if (choice < 13) return knownArea();
    if (choice < 15) return QLatin1String(NEAR_NAMES[number(0, ODD_NAMES - 1)]);
    return anyText(12);
}

QString FuzzInput::anyText(size_t most)
{
    const std::string raw = m_data.ConsumeRandomLengthString(most);
    if (yes()) return QString::fromLatin1(raw.data(), int(raw.size()));
    QString text;
    for (size_t i = 0; i + 1 < raw.size(); i += 2)
        text.append(QChar(ushort(uint8_t(raw[i]) | uint8_t(raw[i + 1]) << 8)));
    return text;
}

std::string FuzzInput::cText(size_t most)
{
    const std::string raw = m_data.ConsumeRandomLengthString(most);
    return raw.substr(0, raw.find('\0'));
}

int FuzzInput::addressNumber()
{
    switch (number(0, 7)) {
    case 0:
        return anyNumber();
    case 1:
        return EDGES[number(0, EDGE_COUNT - 1)];
    case 2:
    case 3:
    case 4:
        return number(0, NEIGHBOURS);
    default:
        return 3000 + number(0, NEIGHBOURS);
    }
}

int FuzzInput::station()
{
    const int choice = number(0, 15);
    if (choice < 13) return usualStation();
    return choice < 15 ? 0 : anyNumber();
}

int FuzzInput::count(int most)
{
    const int choice = number(0, 15);
    if (choice < 8) return number(1, 4);
    if (choice < 14) return number(1, most);
    return choice < 15 ? 0 : -number(1, most);
}

QByteArray FuzzInput::bytes(int length)
{
    QByteArray all(length, '\0');
    const std::vector<char> some = m_data.ConsumeBytes<char>(size_t(length));
    std::copy(some.begin(), some.end(), all.begin());
    return all;
}
