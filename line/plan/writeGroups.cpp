#include "plan/writeGroups.h"

#include "plan/recipePlan.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace {

std::vector<size_t> sortedByPlace(const std::vector<Tag>& tags)
{
    std::vector<size_t> order(tags.size());
    std::iota(order.begin(), order.end(), size_t(0));
    std::stable_sort(order.begin(), order.end(), [&tags](size_t a, size_t b) {
        return std::tie(tags[a].station, tags[a].area, tags[a].number) <
               std::tie(tags[b].station, tags[b].area, tags[b].number);
    });
    return order;
}

bool isRightBehind(const Tag& before, const Tag& tag)
{
    return !tag.isBit() && !before.isBit() && before.station == tag.station &&
           before.area == tag.area && before.number + before.units() == tag.number;
}

/// Words of a list from its tag order[at] to its end.
int wordsToEndOfList(const std::vector<Tag>& tags, const std::vector<size_t>& lists,
                     const std::vector<size_t>& order, size_t at)
{
    if (lists.empty()) return tags[order[at]].units();
    int words = 0;
    for (size_t next = at; next < order.size() && lists[order[next]] == lists[order[at]]; ++next)
        words += tags[order[next]].units();
    return words;
}

} // namespace

std::vector<WriteGroup> writeGroups(const std::vector<Tag>& tags, const std::vector<size_t>& lists)
{
    std::vector<WriteGroup> groups;
    int words = 0; // of the last group
    const std::vector<size_t> order = sortedByPlace(tags);
    for (size_t at = 0; at < order.size(); ++at) {
        const size_t index = order[at];
        const Tag& tag = tags[index];
        const bool joins =
            !groups.empty() && isRightBehind(tags[groups.back().tags.back()], tag) &&
            words + wordsToEndOfList(tags, lists, order, at) <= RecipePlan::MOST_RECORD_WORDS;
        if (!joins) {
            groups.emplace_back();
            words = 0;
        }
        words += tag.units();
        groups.back().tags.push_back(index);
        groups.back().isOneFrame = words > 1 && !tag.isBit();
    }
    return groups;
}
