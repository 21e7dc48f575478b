#include "modelAddresses.h"

#include "branches.h"

#include <limits>

namespace model {

namespace {

enum CheckResult { VALID, KIND_MISMATCH, OUT_OF_RANGE, UNKNOWN_AREA, READ_ONLY = 6 };

int counted(CheckResult result)
{
    switch (result) {
    case VALID:
        reach(Branch::CHECK_VALID);
        break;
    case KIND_MISMATCH:
        reach(Branch::CHECK_KIND_MISMATCH);
        break;
    case OUT_OF_RANGE:
        reach(Branch::CHECK_OUT_OF_RANGE);
        break;
    case UNKNOWN_AREA:
        reach(Branch::CHECK_UNKNOWN_AREA);
        break;
    case READ_ONLY:
        reach(Branch::CHECK_READ_ONLY);
        break;
    }
    return result;
}

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

std::string trimmed(const std::string& text)
{
    size_t first = 0;
    size_t last = text.size();
    while (first < last && isBlank(text[first]))
        ++first;
    while (last > first && isBlank(text[last - 1]))
        --last;
    return text.substr(first, last - first);
}

bool wordTextToNumber(const Area& area, const std::string& text, int& addr)
{
    int offset = 0;
    const bool isNumber = decimal(text, offset);
    if (offset % 2 == 1) {
        reach(Branch::TEXT_ODD);
        addr = offset;
        return false;
    }
    addr = offset / 2 + area.shift;
    if (!isNumber) reach(Branch::TEXT_NOT_A_NUMBER);
    return isNumber;
}

bool bitTextToNumber(const Area& area, const std::string& text, int& addr)
{
    const std::vector<std::string> parts = splitAt(text, '.');
    int byte = 0;
    int bit = 0;
    if (parts.size() != 2 || !decimal(parts[0], byte) || !decimal(parts[1], bit)) {
        reach(Branch::TEXT_NOT_BYTE_AND_BIT);
        return false;
    }
    const int number = byte * 8 + bit + area.shift;
    if (number == -1) {
        reach(Branch::TEXT_BIT_MINUS_ONE);
        return false;
    }
    addr = number;
    return true;
}

bool textToNumber(const Area& area, const std::string& text, int& addr)
{
    return area.words ? wordTextToNumber(area, text, addr) : bitTextToNumber(area, text, addr);
}

std::string numberToText(const Area& area, int addr)
{
    const int unshifted = addr - area.shift;
    if (area.words) return std::to_string(static_cast<unsigned>(2 * unshifted));
    return std::to_string(unshifted / 8) + "." + std::to_string(unshifted % 8);
}

} // namespace

const std::vector<Area>& areas()
{
    static const std::vector<Area> table = {
        {"MW", true, false, 3000, 7095, "DDDD", "0", "8190"},
        {"IW", true, true, 0, 255, "DDDD", "0", "510"},
        {"QW", true, false, 0, 255, "DDDD", "0", "510"},
        {"MX", false, false, 3000, 65535, "DDDDO", "0.0", "7816.7"},
        {"IX", false, true, 0, 4095, "DDDDO", "0.0", "511.7"},
        {"QX", false, false, 0, 4095, "DDDDO", "0.0", "511.7"},
    };
    return table;
}

const Area* findArea(const std::string& name)
{
    const int position = areaPosition(name);
    return position < 0 ? nullptr : &areas()[static_cast<size_t>(position)];
}

int areaPosition(const std::string& name)
{
    for (size_t i = 0; i < areas().size(); ++i)
        if (areas()[i].name == name) return static_cast<int>(i);
    return -1;
}

bool decimal(const std::string& text, int& number)
{
    number = 0;
    const std::string digits = trimmed(text);
    const bool hasSign = !digits.empty() && (digits[0] == '-' || digits[0] == '+');
    if (digits.size() == (hasSign ? 1u : 0u)) return false;
    const bool isNegative = digits[0] == '-';
    const long long largest = std::numeric_limits<int>::max() + (isNegative ? 1LL : 0LL);
    long long value = 0;
    for (size_t i = hasSign ? 1 : 0; i < digits.size(); ++i) {
        if (digits[i] < '0' || digits[i] > '9') return false;
        value = value * 10 + (digits[i] - '0');
        if (value > largest) return false;
    }
    number = static_cast<int>(isNegative ? -value : value);
    return true;
}

std::vector<std::string> splitAt(const std::string& text, char separator)
{
    std::vector<std::string> parts(1);
    for (char c : text) {
        if (c == separator)
            parts.emplace_back();
        else
            parts.back() += c;
    }
    return parts;
}

int checkAddress(const std::string& areaName, const std::string& text, int& addr, bool bitVariable,
                 int count, bool writes)
{
    const Area* area = findArea(areaName);
    if (area != nullptr) {
        if (area->words == bitVariable) return counted(KIND_MISMATCH);
        if (area->readOnly && writes) return counted(READ_ONLY);
        if (!textToNumber(*area, text, addr)) return counted(OUT_OF_RANGE);
    }
    const long long lowest = area != nullptr ? area->shift : 0;
    const long long highest = area != nullptr ? area->highest : 0;
    const long long end = static_cast<long long>(addr) + count;
    if (addr < lowest || end > highest + 1) return counted(OUT_OF_RANGE);
    return counted(area != nullptr ? VALID : UNKNOWN_AREA);
}

std::vector<std::string> describeArea(const std::string& areaName)
{
    const Area* area = findArea(areaName);
    if (area == nullptr) return {};
    return {area->format, area->lowestText, area->highestText, area->words ? "1" : "0",
            area->readOnly ? "0" : "1"};
}

std::vector<std::string> areaNames(bool words)
{
    std::vector<std::string> names;
    for (const Area& area : areas())
        if (area.words == words) names.push_back(area.name);
    return names;
}

int addressSeries(const std::string& areaName, int start, int count, int interval,
                  std::vector<std::string>& texts, std::vector<int>& addrs)
{
    const Area* area = findArea(areaName);
    if (area == nullptr) return 0;
    int result = 1;
    for (int k = 0; k < count; ++k) {
        const int addr = start + k * interval;
        if (addr > area->highest) {
            reach(Branch::SERIES_CLIPPED);
            result = 2;
            addrs.push_back(area->highest);
            texts.push_back(area->highestText);
        } else {
            reach(area->words ? Branch::SERIES_WORD : Branch::SERIES_BIT);
            addrs.push_back(addr);
            texts.push_back(numberToText(*area, addr));
        }
    }
    return result;
}

} // namespace model
