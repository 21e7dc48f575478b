#include "numberText.h"
#include "signals.h"

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
const int LONGEST_PERIOD_MS = 86400000;

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

const KindRow* kindNamed(const std::string& name)
{
    for (const KindRow& row : KINDS) {
        if (name == row.name) return &row;
    }
    return nullptr;
}

std::string parseFields(const std::vector<std::string>& fields, Place& place)
{
    if (!readNumber(fields[STATION_FIELD], 1, LAST_STATION, place.station))
        return outside("station", fields[STATION_FIELD], 1, LAST_STATION);
    const AreaRow* const area = areaNamed(fields[AREA_FIELD]);
    if (!area) return "area '" + fields[AREA_FIELD] + "' is none of IW QW MW IX QX MX";
    place.area = area->area;
    if (!readNumber(fields[NUMBER_FIELD], area->first, area->last, place.number))
        return outside(std::string(area->name) + " number", fields[NUMBER_FIELD], area->first,
                       area->last);
    return {};
}

std::string parseMovement(const std::vector<std::string>& fields, Signal& signal)
{
    const KindRow* const kind = kindNamed(fields[KIND_FIELD]);
    if (!kind)
        return "kind '" + fields[KIND_FIELD] + "' is none of ramp sine toggle square counter walk";
    signal.kind = kind->kind;
    if (rowOf(signal.place.area).isBits && signal.kind != SIGNAL_TOGGLE)
        return "a bit can only toggle";
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
    const std::vector<std::string> fields = fieldsOf(text, ':');
    if (fields.size() < FEWEST_FIELDS || fields.size() > MOST_FIELDS)
        return "'" + text + "' is not STATION:AREA:NUMBER:KIND[:PERIOD_MS[:AMPLITUDE]]";
    Signal parsed;
    std::string trouble = parseFields(fields, parsed.place);
    if (trouble.empty()) trouble = parseMovement(fields, parsed);
    if (trouble.empty()) signal = parsed;
    return trouble;
}
