#include "plan/tagSpan.h"

namespace {

enum { WORD_BITS = 16 };

} // namespace

std::optional<TagSpan> spanIn(const ReadBlock& block, const Tag& tag)
{
    if (tag.station != block.station) return std::nullopt;
    if (tag.area == block.area) return TagSpan{tag.number, tag.number + tag.units()};
    if (!tag.isBit() || isBitArea(block.area) || tag.area.at(0) != block.area.at(0))
        return std::nullopt;
    const int base = tag.area.at(0) == QLatin1Char('M') ? int(FIRST_MARKER_NUMBER) : 0;
    const int word = base + (tag.number - base) / WORD_BITS;
    return TagSpan{word, word + 1};
}

bool contains(const ReadBlock& block, const Tag& tag)
{
    const std::optional<TagSpan> span = spanIn(block, tag);
    return span && span->start >= block.number &&
           span->end <= block.number + block.count - block.spare;
}

bool touches(const ReadBlock& block, const Tag& tag)
{
    const std::optional<TagSpan> span = spanIn(block, tag);
    return span && span->end > block.number && span->start < block.number + block.count;
}
