// Read blocks against the keys that they were merged from.

#include "deviceAreas.h"
#include "figures.h"
#include "propertyBench.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>

namespace {

enum { UNKNOWN_AREAS = 2, MOST_UNITS = 40, NEAR = 60, HIGHEST_LIMIT = 126, BLOCK_ID = 4 };

const std::vector<int> STATIONS = {1, 1, 1, 2, 0, 247};

/// A key as drawn: near the start or near the end of an area, where it can meet others.
struct DrawnKey
{
    int station;
    int area; ///< past the areas: a name that is none
    bool atEnd;
    int offset;
    int count;
};

std::string areaName(const DrawnKey& drawn)
{
    const auto& areas = deviceAreas();
    if (drawn.area < static_cast<int>(areas.size()))
        return areas[static_cast<size_t>(drawn.area)].name;
    return drawn.area == static_cast<int>(areas.size()) ? "MW_bit" : "ZZ";
}

int number(const DrawnKey& drawn)
{
    const auto& areas = deviceAreas();
    const size_t row = std::min(static_cast<size_t>(drawn.area), areas.size() - 1);
    return drawn.atEnd ? areas[row].highest - drawn.offset : areas[row].lowest + drawn.offset;
}

std::ostream& operator<<(std::ostream& out, const DrawnKey& drawn)
{
    return out << "station " << drawn.station << " " << areaName(drawn) << " " << number(drawn)
               << " x " << drawn.count;
}

rc::Gen<DrawnKey> drawnKey()
{
    const int areas = static_cast<int>(deviceAreas().size()) + UNKNOWN_AREAS;
    return rc::gen::build<DrawnKey>(
        rc::gen::set(&DrawnKey::station, rc::gen::elementOf(STATIONS)),
        rc::gen::set(&DrawnKey::area,
                     rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, areas))),
        rc::gen::set(&DrawnKey::atEnd, rc::gen::weightedElement<bool>({{3, false}, {1, true}})),
        rc::gen::set(&DrawnKey::offset, rc::gen::inRange(0, int(NEAR))),
        rc::gen::set(&DrawnKey::count, rc::gen::inRange(1, int(MOST_UNITS))));
}

bool isKept(const DrawnKey& drawn)
{
    return drawn.area < static_cast<int>(deviceAreas().size());
}

std::vector<DrawnKey> drawnKeys()
{
    const auto drawn = *rc::gen::container<std::vector<DrawnKey>>(drawnKey());
    tally("keys", static_cast<long long>(drawn.size()));
    return drawn;
}

QList<KEY_ADDRESS> handedIn(const std::vector<DrawnKey>& drawn)
{
    QList<KEY_ADDRESS> keys;
    for (const DrawnKey& one : drawn)
        keys.append(keyOf({one.station, areaName(one), number(one), one.count}));
    return keys;
}

bool sharesArea(const VARIABLE& block, const DrawnKey& drawn)
{
    return block.station == drawn.station && block.regName.toStdString() == areaName(drawn);
}

bool isPolled(const DrawnKey& drawn, int unit)
{
    return std::any_of(driver.readList.cbegin(), driver.readList.cend(),
                       [&](const VARIABLE& block) {
                           return sharesArea(block, drawn) && block.addr <= unit &&
                                  unit < block.addr + block.count;
                       });
}

/// Units of the longest key that this block may have been opened by; -1 when there is none.
int longestOpener(const VARIABLE& block, const std::vector<DrawnKey>& drawn)
{
    int longest = -1;
    for (const DrawnKey& one : drawn)
        if (isKept(one) && sharesArea(block, one) && number(one) == block.addr)
            longest = std::max(longest, one.count);
    return longest;
}

/// Station before area before number. The last marker bit and the first input bit weigh the same.
long weight(const VARIABLE& block)
{
    long area = 0;
    while (block.regName.toStdString() != deviceAreas()[static_cast<size_t>(area)].name)
        ++area;
    return (block.station * 6L + area) * 65535L + block.addr;
}

} // namespace

RC_GTEST_PROP(MergedBlocks, CoverEveryUnitOfEveryKeptKey, ())
{
    countCase({"keys", "covered", "units", "dropped"});
    const auto drawn = drawnKeys();
    PropertyBench bench(1, *rc::gen::inRange(0, int(HIGHEST_LIMIT)));
    QList<KEY_ADDRESS> keys = handedIn(drawn);
    const int blocks = intf_addrMerge(keys);
    RC_ASSERT(blocks == int(driver.readList.size()));
    for (const DrawnKey& one : drawn) {
        tally("dropped", !isKept(one));
        if (!isKept(one)) continue;
        for (int unit = 0; unit < one.count; ++unit)
            if (!isPolled(one, number(one) + unit))
                RC_FAIL("not polled: unit " + std::to_string(unit) + " of " + rc::toString(one));
        tally("covered");
        tally("units", one.count);
    }
}

RC_GTEST_PROP(MergedBlocks, AreNoLongerThanTheLimitOrTheKeyThatOpenedThem, ())
{
    countCase({"keys", "blocks", "longer than their first key"});
    const auto drawn = drawnKeys();
    const int limit = *rc::gen::inRange(0, int(HIGHEST_LIMIT));
    PropertyBench bench(1, limit);
    QList<KEY_ADDRESS> keys = handedIn(drawn);
    intf_addrMerge(keys);
    for (const VARIABLE& block : driver.readList) {
        const int opener = longestOpener(block, drawn);
        RC_ASSERT(opener > 0);
        RC_ASSERT(block.count <= std::max(limit, opener));
        RC_ASSERT(block.varId == int(BLOCK_ID));
        tally("blocks");
        tally("longer than their first key", block.count > opener);
    }
}

RC_GTEST_PROP(MergedBlocks, StandInRegisterOrder, ())
{
    countCase({"keys", "pairs of blocks in order"});
    const auto drawn = drawnKeys();
    PropertyBench bench(1, *rc::gen::inRange(0, int(HIGHEST_LIMIT)));
    QList<KEY_ADDRESS> keys = handedIn(drawn);
    intf_addrMerge(keys);
    for (int i = 1; i < int(driver.readList.size()); ++i) {
        RC_ASSERT(weight(driver.readList.at(i - 1)) <= weight(driver.readList.at(i)));
        tally("pairs of blocks in order");
    }
}

RC_GTEST_PROP(MergedBlocks, OfWordsStartAtDifferentAddressesUnlessTheLimitParts, ())
{
    countCase({"keys", "pairs of blocks"});
    const auto drawn = drawnKeys();
    PropertyBench bench(1, MOST_UNITS);
    QList<KEY_ADDRESS> keys = handedIn(drawn);
    intf_addrMerge(keys);
    for (int i = 1; i < int(driver.readList.size()); ++i) {
        const VARIABLE& before = driver.readList.at(i - 1);
        const VARIABLE& block = driver.readList.at(i);
        if (block.regName.endsWith(QLatin1Char('X'))) continue;
        RC_ASSERT(weight(before) < weight(block));
        tally("pairs of blocks");
    }
}

RC_GTEST_PROP(Merging, LeavesTheHostsListAsItIs, ())
{
    countCase({"keys"});
    const auto drawn = drawnKeys();
    PropertyBench bench(1, *rc::gen::inRange(0, int(HIGHEST_LIMIT)));
    QList<KEY_ADDRESS> keys = handedIn(drawn);
    intf_addrMerge(keys);
    RC_ASSERT(int(keys.size()) == int(drawn.size()));
    for (size_t i = 0; i < drawn.size(); ++i) {
        const KEY_ADDRESS& kept = keys.at(static_cast<int>(i));
        RC_ASSERT(kept.station == drawn[i].station);
        RC_ASSERT(kept.regName.toStdString() == areaName(drawn[i]));
        RC_ASSERT(kept.addr == number(drawn[i]));
        RC_ASSERT(kept.count == drawn[i].count);
    }
}
