#include "modelMerging.h"

#include "branches.h"
#include "modelAddresses.h"

#include <algorithm>

namespace model {

namespace {

enum class Rule { TOUCHING, OVER_GAPS };

bool isWordArea(const std::string& area)
{
    return area == "IW" || area == "QW" || area == "MW";
}

bool sameGroup(int a, int b)
{
    return a / 16 == b / 16;
}

bool bitGroupsAllow(const Key& a, const Key& b, Rule rule)
{
    const bool marker = a.area == "MX";
    const bool plainBit = a.area == "IX" || a.area == "QX";
    const bool testPlainGroup = plainBit || (marker && rule == Rule::TOUCHING);
    if (testPlainGroup && !sameGroup(a.addr, b.addr)) {
        reach(marker ? Branch::MERGE_MARKER_OTHER_PLAIN_GROUP : Branch::MERGE_BIT_OTHER_GROUP);
        return false;
    }
    if (marker && !sameGroup(a.addr - 3000, b.addr - 3000)) {
        reach(Branch::MERGE_MARKER_OTHER_GROUP);
        return false;
    }
    return true;
}

bool mayJoin(const Key& a, const Key& b, Rule rule, int mergeLimit)
{
    if (a.station != b.station || a.area != b.area) {
        reach(Branch::MERGE_OTHER_AREA_OR_STATION);
        return false;
    }
    const int gap = b.addr - a.addr - a.count;
    if (gap > (rule == Rule::TOUCHING ? 0 : mergeLimit)) {
        reach(rule == Rule::TOUCHING ? Branch::MERGE_NOT_TOUCHING : Branch::MERGE_GAP_TOO_WIDE);
        return false;
    }
    if (isWordArea(a.area) && a.addr != b.addr) {
        reach(Branch::MERGE_WORD_OTHER_START);
        return false;
    }
    return bitGroupsAllow(a, b, rule);
}

std::vector<Key> mergePass(const std::vector<Key>& keys, Rule rule, int mergeLimit,
                           std::vector<size_t>& starts)
{
    std::vector<Key> blocks;
    for (size_t i = 0; i < keys.size(); ++i) {
        const Key& next = keys[i];
        if (!blocks.empty() && mayJoin(blocks.back(), next, rule, mergeLimit)) {
            Key& block = blocks.back();
            const int span = next.addr + next.count - block.addr;
            if (span <= mergeLimit) {
                reach(rule == Rule::TOUCHING ? Branch::MERGE_JOINED_TOUCHING
                                             : Branch::MERGE_JOINED_OVER_GAP);
                block.count = std::max(block.count, span);
                continue;
            }
            reach(rule == Rule::TOUCHING ? Branch::MERGE_SPAN_TOO_LONG
                                         : Branch::MERGE_GAP_SPAN_TOO_LONG);
        }
        blocks.push_back(next);
        starts.push_back(i);
    }
    return blocks;
}

} // namespace

std::uint32_t addressWeight(int station, const std::string& area, int addr)
{
    const auto position = static_cast<std::uint32_t>(areaPosition(area));
    return (static_cast<std::uint32_t>(station) * 6u + position) * 65535u +
           static_cast<std::uint32_t>(addr);
}

std::vector<Key> mergeTouching(const std::vector<Key>& keys, int mergeLimit,
                               std::vector<size_t>& starts)
{
    return mergePass(keys, Rule::TOUCHING, mergeLimit, starts);
}

std::vector<Key> planReads(const std::vector<Key>& keys, int mergeLimit)
{
    std::vector<Key> known;
    for (const Key& key : keys) {
        if (findArea(key.area) != nullptr)
            known.push_back(key);
        else
            reach(Branch::MERGE_KEY_DROPPED);
    }
    if (known.empty()) reach(keys.empty() ? Branch::MERGE_NO_KEYS : Branch::MERGE_ALL_DROPPED);
    std::stable_sort(known.begin(), known.end(), [](const Key& a, const Key& b) {
        return static_cast<std::int32_t>(addressWeight(a.station, a.area, a.addr)) <
               static_cast<std::int32_t>(addressWeight(b.station, b.area, b.addr));
    });
    std::vector<size_t> unused;
    const std::vector<Key> touching = mergePass(known, Rule::TOUCHING, mergeLimit, unused);
    return mergePass(touching, Rule::OVER_GAPS, mergeLimit, unused);
}

std::vector<Key> cut(const Key& key, int longest)
{
    if (key.count <= longest) return {key};
    if (longest < 1) {
        reach(Branch::CUT_WITHOUT_LIMIT);
        return {key};
    }
    std::vector<Key> pieces;
    for (int done = 0; done < key.count; done += longest) {
        Key piece = key;
        piece.addr = key.addr + done;
        piece.count = std::min(longest, key.count - done);
        pieces.push_back(piece);
    }
    reach(Branch::CUT_IN_PIECES);
    return pieces;
}

} // namespace model
