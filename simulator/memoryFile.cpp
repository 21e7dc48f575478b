#include "memoryFile.h"

#include "numberText.h"
#include "placeText.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace {

enum Field { STATION_FIELD, AREA_FIELD, NUMBER_FIELD, VALUE_FIELD, FIELDS };

const int LAST_STATION = 247;

void appendArea(std::string& text, int station, Area area, const PlcMemory& memory)
{
    const AreaRow& row = rowOf(area);
    for (int number = row.first; number <= row.last; ++number) {
        const std::uint16_t value =
            row.isInput ? memory.inputRegister(number) : memory.holdingRegister(number);
        if (value == 0) continue;
        text += std::to_string(station) + ' ' + row.name + ' ' + std::to_string(number) + ' ' +
                std::to_string(value) + '\n';
    }
}

/// @return what is wrong with the line; empty when it is right and `named` is set
std::string parseFields(const std::vector<std::string>& fields, PlaceValue& named)
{
    if (fields.size() != FIELDS) return "it is not STATION AREA NUMBER VALUE";
    Place& place = named.place;
    if (!readNumber(fields[STATION_FIELD], 1, LAST_STATION, place.station))
        return outside("station", fields[STATION_FIELD], 1, LAST_STATION);
    const AreaRow* const row = areaNamed(fields[AREA_FIELD]);
    if (!row) return "area '" + fields[AREA_FIELD] + "' is none of IW QW MW IX QX MX";
    place.area = row->area;
    if (!readNumber(fields[NUMBER_FIELD], row->first, row->last, place.number))
        return outside(std::string(row->name) + " number", fields[NUMBER_FIELD], row->first,
                       row->last);
    return parseValue(fields[VALUE_FIELD], place.area, named.value);
}

std::string parseLine(const std::string& line, PlcStations& stations,
                      std::vector<PlaceValue>& values)
{
    const std::vector<std::string> fields = wordsOf(line.substr(0, line.find('#')));
    if (fields.empty()) return {};
    PlaceValue named;
    const std::string trouble = parseFields(fields, named);
    if (!trouble.empty()) return trouble;
    if (!stations.find(named.place.station))
        return "there is no station " + std::to_string(named.place.station);
    values.push_back(named);
    return {};
}

[[noreturn]] void failAt(const std::string& name, int line, const std::string& trouble)
{
    throw MemoryFileError(name + ", line " + std::to_string(line) + ": " + trouble);
}

} // namespace

void loadMemory(std::istream& in, const std::string& name, PlcStations& stations)
{
    std::vector<PlaceValue> values;
    std::string line;
    for (int number = 1; std::getline(in, line); ++number) {
        const std::string trouble = parseLine(line, stations, values);
        if (!trouble.empty()) failAt(name, number, trouble);
    }
    if (in.bad()) throw MemoryFileError(name + ": " + std::strerror(errno));
    for (const PlaceValue& value : values)
        stations.apply(value);
}

void loadMemory(const std::string& path, PlcStations& stations)
{
    std::ifstream file(path);
    if (!file) throw MemoryFileError(path + ": " + std::strerror(errno));
    loadMemory(file, path, stations);
}

std::string memoryText(const PlcStations& stations)
{
    std::string text;
    for (const auto& [station, memory] : stations.all()) {
        for (const Area area : {AREA_QW, AREA_MW, AREA_IW})
            appendArea(text, station, area, memory);
    }
    return text;
}
