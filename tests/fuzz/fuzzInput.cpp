#include "fuzzInput.h"

namespace {

enum { KNOWN_AREAS = 6, ODD_NAMES = 8, PLACES = 20, NEIGHBOURS = 40 };

const char* const AREAS[KNOWN_AREAS] = {"MW", "IW", "QW", "MX", "IX", "QX"};
const char* const NEAR_NAMES[ODD_NAMES] = {"",     "mw",   "MW_bit", "QX_bit",
                                           "MW_B", "IW_D", "_",      "MWX"};

/// First, last and past-the-last numbers of the areas.
const int EDGES[PLACES] = {0,    15,   16,   255,  256,   2999,  3000, 3007, 3008,  4095,
                           4096, 7095, 7096, 8191, 65535, 65536, -1,   -16,  -3000, 32767};

} // namespace

bool isWordName(const std::string& area)
{
    return area == "MW" || area == "IW" || area == "QW";
}

std::string FuzzInput::areaName()
{
    const int choice = number(0, 15);
    if (choice < 13) return AREAS[number(0, KNOWN_AREAS - 1)];
    if (choice < 15) return NEAR_NAMES[number(0, ODD_NAMES - 1)];
    return anyText(12);
}

std::string FuzzInput::anyText(size_t most)
{
    enum { ASCII_END = 0x80, LEAD_BYTE = 0xC4 };
    std::string text;
    for (const char c : m_data.ConsumeRandomLengthString(most)) {
        const auto byte = static_cast<unsigned char>(c);
        // From U+0100 on are letters: a blank past ASCII would be trimmed by Qt alone.
        if (byte >= ASCII_END) text += static_cast<char>(LEAD_BYTE);
        if (byte != 0) text += static_cast<char>(byte < ASCII_END ? byte : 0x80 | (byte & 0x3F));
    }
    return text;
}

std::string FuzzInput::cText(size_t most)
{
    const std::string raw = m_data.ConsumeRandomLengthString(most);
    std::string text = raw.substr(0, raw.find('\0'));
    for (char& c : text) {
        if (c == '\x85' || c == '\xA0') c = '\xFF';
    }
    return text;
}

int FuzzInput::addressNumber()
{
    switch (number(0, 7)) {
    case 0:
        return anyNumber();
    case 1:
        return EDGES[number(0, PLACES - 1)];
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
    if (choice < 13) return number(1, 2);
    return choice < 15 ? 0 : anyNumber();
}

int FuzzInput::count(int most)
{
    const int choice = number(0, 15);
    if (choice < 8) return number(1, 4);
    if (choice < 14) return number(1, most);
    return choice < 15 ? 0 : -number(1, most);
}

model::Bytes FuzzInput::bytes(int length)
{
    model::Bytes all = m_data.ConsumeBytes<unsigned char>(static_cast<size_t>(length));
    all.resize(static_cast<size_t>(length));
    return all;
}
