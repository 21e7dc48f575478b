#ifndef TAG_SPAN_H
#define TAG_SPAN_H

#include "plan/readPlan.h"

#include <optional>

/// The units of a block that hold a tag: words, or the bits of a bit area.
struct TagSpan
{
    int start;
    int end; ///< number behind the last unit
};

/// Where the tag lies in the numbers of the block's area, whether the block reaches it or not. The
/// area of words with the same letter holds the bits of a bit area, too: a bit is then its word.
/// Empty: the tag belongs to another station or to other memory.
std::optional<TagSpan> spanIn(const ReadBlock& block, const Tag& tag);

/// The block reads the tag as a whole. Spare words do not count, because they may be dropped.
bool contains(const ReadBlock& block, const Tag& tag);

/// The block reads at least a part of the tag.
bool touches(const ReadBlock& block, const Tag& tag);

#endif
