#include "place.h"

namespace {

const AreaRow AREAS[] = {
    {"IW", AREA_IW, false, true, 0, 255},      {"QW", AREA_QW, false, false, 0, 255},
    {"MW", AREA_MW, false, false, 3000, 7095}, {"IX", AREA_IX, true, true, 0, 4095},
    {"QX", AREA_QX, true, false, 0, 4095},     {"MX", AREA_MX, true, false, 3000, 65535},
};

} // namespace

const AreaRow& rowOf(Area area)
{
    return AREAS[area];
}

const AreaRow* areaNamed(const std::string& name)
{
    for (const AreaRow& row : AREAS) {
        if (name == row.name) return &row;
    }
    return nullptr;
}

MemorySpan spanOf(const Place& place)
{
    const AreaRow& row = rowOf(place.area);
    if (!row.isBits) return {row.isInput, place.number * WORD_BITS, WORD_BITS};
    return {row.isInput, row.first * WORD_BITS + place.number - row.first, 1};
}

bool doOverlap(const MemorySpan& one, const MemorySpan& other)
{
    return one.isInput == other.isInput && one.first < other.first + other.count &&
           other.first < one.first + one.count;
}
