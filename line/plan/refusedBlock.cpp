#include "plan/refusedBlock.h"

#include "plan/tagSpan.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <utility>

namespace {

enum { ILLEGAL_ADDRESS = 2, ILLEGAL_VALUE = 3 };

/// The tags of the same words.
struct Place
{
    int start;
    int end;
    std::vector<int> tags;
};

using Places = std::vector<Place>;

/// The places of the block's tags by start and end, each place once.
Places placesOf(const ReadBlock& block, const std::vector<Tag>& tags)
{
    std::map<std::pair<int, int>, std::vector<int>> byPlace;
    for (const int index : block.tags) {
        if (const std::optional<TagSpan> span = spanIn(block, tags[size_t(index)]))
            byPlace[{span->start, span->end}].push_back(index);
    }
    Places places;
    for (auto& [place, indices] : byPlace)
        places.push_back({place.first, place.second, std::move(indices)});
    return places;
}

ReadBlock blockOf(const ReadBlock& whole, Places::const_iterator first, Places::const_iterator last)
{
    ReadBlock part = whole;
    part.spare = 0;
    part.number = first->start;
    part.count = 0;
    part.tags.clear();
    for (auto place = first; place != last; ++place) {
        part.count = std::max(part.count, place->end - part.number);
        part.tags.insert(part.tags.end(), place->tags.begin(), place->tags.end());
    }
    std::sort(part.tags.begin(), part.tags.end());
    return part;
}

/// The first place behind the cut, 1 to places.size() - 1: behind the gap that is nearest to the
/// middle, or in the middle when there is no gap.
size_t cutOf(const Places& places)
{
    const auto middle = std::ptrdiff_t(places.size() / 2);
    std::ptrdiff_t best = 0;
    int end = places.front().end;
    for (size_t i = 1; i < places.size(); ++i) {
        const auto at = std::ptrdiff_t(i);
        const bool isGap = places[i].start > end;
        end = std::max(end, places[i].end);
        if (isGap && (best == 0 || std::abs(at - middle) < std::abs(best - middle))) best = at;
    }
    return size_t(best > 0 ? best : middle);
}

} // namespace

std::vector<ReadBlock> partsOfRefused(const ReadBlock& refused, const std::vector<Tag>& tags)
{
    const Places places = placesOf(refused, tags);
    if (isBitArea(refused.area) || places.empty()) return {};
    const ReadBlock needed = blockOf(refused, places.begin(), places.end());
    if (needed.number != refused.number || needed.count != refused.count) return {needed};
    if (places.size() == 1) return {};
    const auto cut = places.begin() + std::ptrdiff_t(cutOf(places));
    return {blockOf(refused, places.begin(), cut), blockOf(refused, cut, places.end())};
}

bool isSplitByException(int exceptionCode)
{
    return exceptionCode == ILLEGAL_ADDRESS || exceptionCode == ILLEGAL_VALUE;
}
