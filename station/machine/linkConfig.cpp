#include "machine/linkConfig.h"

#include <algorithm>
#include <tuple>

namespace {

auto keyOf(const Tag& tag)
{
    return std::tie(tag.name, tag.station, tag.area, tag.address, tag.type, tag.wordOrder,
                    tag.format, tag.rate, tag.access, tag.deadband);
}

bool isSameTag(const Tag& a, const Tag& b)
{
    return keyOf(a) == keyOf(b);
}

} // namespace

bool operator==(const LinkConfig& a, const LinkConfig& b)
{
    return a.name == b.name && a.link == b.link && a.paceMs == b.paceMs &&
           a.timeoutMs == b.timeoutMs && a.attempts == b.attempts && a.pauseMs == b.pauseMs &&
           std::equal(a.tags.begin(), a.tags.end(), b.tags.begin(), b.tags.end(), isSameTag);
}
