#include "plan/tagSpan.h"

#include "plan/sharedMemory.h"

std::optional<TagSpan> spanIn(const ReadBlock& block, const Tag& tag)
{
    if (tag.station != block.station) return std::nullopt;
    if (tag.area == block.area) return TagSpan{tag.number, tag.number + tag.units()};
    if (!tag.isBit() || isBitArea(block.area) || tag.area.at(0) != block.area.at(0))
        return std::nullopt;
    const int word = wordBitOf(tag.area, tag.number).number;
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
