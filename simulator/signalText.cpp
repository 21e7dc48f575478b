#include "signals.h"

#include <charconv>

namespace {

enum {
    STATION_FIELD,
    AREA_FIELD,
    NUMBER_FIELD,
    KIND_FIELD,
    PERIOD_FIELD,
    AMPLITUDE_FIELD,
    MOST_FIELDS,
    FEWEST_FIELDS = PERIOD_FIELD
};

const int LAST_STATION = 247;
const int LAST_NUMBER = 65535;
const int LONGEST_PERIOD_MS = 86400000;

struct AreaRow
{
    const char* name;
    Area area;
    int first;
    int last; ///< on the wire
};

const AreaRow AREAS[] = {
    {"IW", AREA_IW, 0, LAST_NUMBER}, {"QW", AREA_QW, 0, 2999}, {"MW", AREA_MW, 3000, LAST_NUMBER},
    {"IX", AREA_IX, 0, LAST_NUMBER}, {"QX", AREA_QX, 0, 2999}, {"MX", AREA_MX, 3000, LAST_NUMBER},
};

struct KindRow
{
    const char* name;
    SignalKind kind;
    int periodMs;
    int amplitude;
    int mostAmplitude;
};

const KindRow KINDS[] = {
    {"ramp", SIGNAL_RAMP, 10000, 1000, 65535},       {"sine", SIGNAL_SINE, 10000, 1000, 32767},
    {"toggle", SIGNAL_TOGGLE, 1000, 1, 65535},       {"square", SIGNAL_TOGGLE, 10000, 1000, 65535},
    {"counter", SIGNAL_COUNTER, 1000, 65535, 65535}, {"walk", SIGNAL_WALK, 200, 1000, 65535},
};

std::vector<std::string> fieldsOf(const std::string& text)
{
    std::vector<std::string> fields(1);
    for (const char letter : text) {
        if (letter == ':') {
            fields.emplace_back();
        } else {
            fields.back() += letter;
        }
    }
    return fields;
}

bool readNumber(const std::string& text, int first, int last, int& number)
{
    const char* const end = text.data() + text.size();
    const std::from_chars_result read = std::from_chars(text.data(), end, number);
    return read.ec == std::errc() && read.ptr == end && number >= first && number <= last;
}

std::string outside(const std::string& what, const std::string& text, int first, int last)
{
    return what + " '" + text + "' is not in " + std::to_string(first) + " to " +
           std::to_string(last);
}

template <typename Row, std::size_t COUNT>
const Row* rowNamed(const Row (&rows)[COUNT], const std::string& name)
{
    for (const Row& row : rows) {
        if (name == row.name) return &row;
    }
    return nullptr;
}

std::string parsePlace(const std::vector<std::string>& fields, SignalPlace& place)
{
    if (!readNumber(fields[STATION_FIELD], 1, LAST_STATION, place.station))
        return outside("station", fields[STATION_FIELD], 1, LAST_STATION);
    const AreaRow* const area = rowNamed(AREAS, fields[AREA_FIELD]);
    if (!area) return "area '" + fields[AREA_FIELD] + "' is none of IW QW MW IX QX MX";
    place.area = area->area;
    if (!readNumber(fields[NUMBER_FIELD], area->first, area->last, place.number))
        return outside(std::string(area->name) + " number", fields[NUMBER_FIELD], area->first,
                       area->last);
    return {};
}

bool isBit(Area area)
{
    return area == AREA_IX || area == AREA_QX || area == AREA_MX;
}

std::string parseMovement(const std::vector<std::string>& fields, Signal& signal)
{
    const KindRow* const kind = rowNamed(KINDS, fields[KIND_FIELD]);
    if (!kind)
        return "kind '" + fields[KIND_FIELD] + "' is none of ramp sine toggle square counter walk";
    signal.kind = kind->kind;
    if (isBit(signal.place.area) && signal.kind != SIGNAL_TOGGLE) return "a bit can only toggle";
    int periodMs = kind->periodMs;
    if (fields.size() > PERIOD_FIELD &&
        !readNumber(fields[PERIOD_FIELD], 1, LONGEST_PERIOD_MS, periodMs))
        return outside("period", fields[PERIOD_FIELD], 1, LONGEST_PERIOD_MS);
    signal.periodMs = periodMs;
    signal.amplitude = kind->amplitude;
    if (fields.size() > AMPLITUDE_FIELD &&
        !readNumber(fields[AMPLITUDE_FIELD], 1, kind->mostAmplitude, signal.amplitude))
        return outside("amplitude", fields[AMPLITUDE_FIELD], 1, kind->mostAmplitude);
    return {};
}

} // namespace

std::string parseSignal(const std::string& text, Signal& signal)
{
    const std::vector<std::string> fields = fieldsOf(text);
    if (fields.size() < FEWEST_FIELDS || fields.size() > MOST_FIELDS)
        return "'" + text + "' is not STATION:AREA:NUMBER:KIND[:PERIOD_MS[:AMPLITUDE]]";
    Signal parsed;
    std::string trouble = parsePlace(fields, parsed.place);
    if (trouble.empty()) trouble = parseMovement(fields, parsed);
    if (trouble.empty()) signal = parsed;
    return trouble;
}
