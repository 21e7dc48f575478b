#include "placeText.h"

#include "numberText.h"

namespace {

enum {
    LAST_STATION = 247,
    AREA_LETTERS = 2,
    BYTE_BITS = 8,
    LOWEST_WORD = -32768,
    HIGHEST_WORD = 65535
};

const char* const DIGITS = "0123456789";

std::string lastAddress(const AreaRow& row)
{
    const int steps = row.last - row.first;
    if (!row.isBits) return std::to_string(2 * steps);
    return std::to_string(steps / BYTE_BITS) + "." + std::to_string(steps % BYTE_BITS);
}

std::string pastTheEnd(const std::string& text, const AreaRow& row)
{
    return "'" + text + "' is past the end of " + row.name + ", whose last address is " +
           lastAddress(row);
}

/// A number without a sign, however long. The result is LARGEST when it is larger.
bool readAddress(const std::string& digits, int& number)
{
    const int largest = 1000000;
    if (digits.empty() || digits.find_first_not_of(DIGITS) != std::string::npos) return false;
    if (!readNumber(digits, 0, largest, number)) number = largest;
    return true;
}

std::string parseWordAddress(const std::string& text, const AreaRow& row, int& number)
{
    int byte = 0;
    if (!readAddress(text.substr(AREA_LETTERS), byte))
        return "'" + text + "' is not an address such as " + row.name + "100";
    if (byte % 2 != 0) return "'" + text + "' is odd: a word starts at an even number";
    number = row.first + byte / 2;
    return number > row.last ? pastTheEnd(text, row) : std::string();
}

std::string parseBitAddress(const std::string& text, const AreaRow& row, int& number)
{
    const std::size_t point = text.find('.');
    int byte = 0;
    int bit = 0;
    if (point == std::string::npos || text.size() != point + 2 ||
        !readAddress(text.substr(AREA_LETTERS, point - AREA_LETTERS), byte) ||
        !readNumber(text.substr(point + 1), 0, BYTE_BITS - 1, bit))
        return "'" + text + "' is not an address such as " + row.name +
               "12.3, with a bit from 0 to 7";
    number = row.first + byte * BYTE_BITS + bit;
    return number > row.last ? pastTheEnd(text, row) : std::string();
}

/// The text without a leading %, with a large area name: %mw100 is MW100.
std::string usualSpelling(std::string text)
{
    if (text.rfind('%', 0) == 0) text.erase(0, 1);
    for (std::size_t i = 0; i < text.size() && i < AREA_LETTERS; ++i) {
        if (text[i] >= 'a' && text[i] <= 'z') text[i] = static_cast<char>(text[i] - 'a' + 'A');
    }
    return text;
}

/// @param written  without a station
std::string parseAddress(const std::string& written, Place& place)
{
    const std::string text = usualSpelling(written);
    const AreaRow* const row = areaNamed(text.substr(0, AREA_LETTERS));
    if (!row) return "'" + text + "' does not begin with IW QW MW IX QX or MX";
    place.area = row->area;
    return row->isBits ? parseBitAddress(text, *row, place.number)
                       : parseWordAddress(text, *row, place.number);
}

/// Takes "STATION:" off the text; without it the station is 1.
std::string takeStation(std::string& text, int& station)
{
    station = 1;
    const std::size_t colon = text.find(':');
    if (colon == std::string::npos) return {};
    const std::string digits = text.substr(0, colon);
    if (!readNumber(digits, 1, LAST_STATION, station))
        return outside("station", digits, 1, LAST_STATION);
    text.erase(0, colon + 1);
    return {};
}

} // namespace

std::string parsePlace(const std::string& text, Place& place)
{
    std::string address = text;
    std::string trouble = takeStation(address, place.station);
    return trouble.empty() ? parseAddress(address, place) : trouble;
}

std::string parseRange(const std::string& text, Place& first, Place& last)
{
    std::string range = text;
    std::string trouble = takeStation(range, first.station);
    if (!trouble.empty()) return trouble;
    const std::size_t dots = range.find("..");
    trouble = parseAddress(range.substr(0, dots), first);
    last = first;
    if (!trouble.empty() || dots == std::string::npos) return trouble;
    trouble = parseAddress(range.substr(dots + 2), last);
    if (!trouble.empty()) return trouble;
    if (last.area != first.area) return "'" + range + "' begins and ends in different areas";
    if (last.number < first.number) return "'" + range + "' ends ahead of its begin";
    return {};
}

std::string parseValue(const std::string& text, Area area, std::uint16_t& value)
{
    const bool isBit = rowOf(area).isBits;
    const int lowest = isBit ? 0 : int(LOWEST_WORD);
    const int highest = isBit ? 1 : int(HIGHEST_WORD);
    int number = 0;
    if (!readNumber(text, lowest, highest, number)) return outside("value", text, lowest, highest);
    value = static_cast<std::uint16_t>(number & HIGHEST_WORD);
    return {};
}

std::string parseAssignment(const std::string& text, PlaceValue& assigned)
{
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) return "'" + text + "' is not ADDRESS=VALUE";
    std::string trouble = parsePlace(text.substr(0, equals), assigned.place);
    if (!trouble.empty()) return trouble;
    return parseValue(text.substr(equals + 1), assigned.place.area, assigned.value);
}
