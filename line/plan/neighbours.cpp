#include "plan/neighbours.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

enum { GROUP_BITS = 16, MOST_MORE = 2, LAST_MARKER_WORD = 7095, LAST_OTHER_WORD = 255 };

using Order = std::vector<ReadBlock*>;

/// Position in the driver's list of areas.
int areaRank(const QString& area)
{
    static const char* const AREAS[] = {"MW", "IW", "QW", "MX", "IX", "QX"};
    const auto found = std::find_if(std::begin(AREAS), std::end(AREAS), [&area](const char* name) {
        return area == QLatin1String(name);
    });
    return int(found - std::begin(AREAS));
}

bool isInput(const ReadBlock& block)
{
    return block.area.startsWith(QLatin1Char('I'));
}

/// The replies of both blocks have the same function and the same length.
bool areAlike(const ReadBlock& a, const ReadBlock& b)
{
    return isInput(a) == isInput(b) && registersOf(a) == registersOf(b);
}

int lastWordOf(const QString& area)
{
    return area == QLatin1String("MW") ? int(LAST_MARKER_WORD) : int(LAST_OTHER_WORD);
}

/// Lengthens a block until it differs from both neighbours.
/// @return false when no possible length differs from both
bool tryToDiffer(const Order& order, size_t index, int mostWords)
{
    ReadBlock& block = *order[index];
    const ReadBlock& before = *order[(index + order.size() - 1) % order.size()];
    const ReadBlock& behind = *order[(index + 1) % order.size()];
    if (isBitArea(block.area)) return false;
    ReadBlock longer = block;
    for (int more = 1; more <= MOST_MORE; ++more) {
        ++longer.count;
        ++longer.spare;
        if (longer.count > mostWords || longer.number + longer.count - 1 > lastWordOf(longer.area))
            return false;
        if (areAlike(longer, before) || areAlike(longer, behind)) continue;
        block = longer;
        return true;
    }
    return false;
}

int differ(const Order& order, int mostWords)
{
    if (order.size() < 2) return 0;
    int alike = 0;
    for (size_t i = 0; i < order.size(); ++i) {
        const size_t next = (i + 1) % order.size();
        if (!areAlike(*order[i], *order[next])) continue;
        if (!tryToDiffer(order, next, mostWords) && !tryToDiffer(order, i, mostWords)) ++alike;
    }
    return alike;
}

} // namespace

int registersOf(const ReadBlock& block)
{
    return isBitArea(block.area) ? (block.count + GROUP_BITS - 1) / GROUP_BITS : block.count;
}

bool isReadBefore(const ReadBlock& a, const ReadBlock& b)
{
    return std::make_tuple(a.station, areaRank(a.area), a.number) <
           std::make_tuple(b.station, areaRank(b.area), b.number);
}

int differNeighbours(std::vector<ReadBlock>& blocks, int mostWords)
{
    std::map<int, Order> byStation;
    for (ReadBlock& block : blocks)
        byStation[block.station].push_back(&block);
    int alike = 0;
    for (auto& entry : byStation) {
        Order& order = entry.second;
        std::stable_sort(order.begin(), order.end(), [](const ReadBlock* a, const ReadBlock* b) {
            return isReadBefore(*a, *b);
        });
        alike += differ(order, mostWords);
    }
    return alike;
}
