#ifndef MEMORY_SPANS_H
#define MEMORY_SPANS_H

#include "plan/tag.h"

#include <vector>

/// Words of one memory that one request must read together: the words of a tag, with all tags that
/// lie within these words. A bit takes the word that holds it.
struct MemorySpan
{
    int start;             ///< address number of the first word
    int end;               ///< address number behind the last word
    bool hasOnlyBits;      ///< the span is then one word
    std::vector<int> tags; ///< indices
};

/// The spans of tags of one memory (station and MW with MX, IW with IX, or QW with QX). Starts and
/// ends both ascend. Neighbouring spans may overlap in a word.
/// @param indices  the tags, by their indices in `tags`
std::vector<MemorySpan> memorySpans(const std::vector<Tag>& tags, const std::vector<int>& indices);

#endif
