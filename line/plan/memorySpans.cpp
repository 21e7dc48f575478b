#include "plan/memorySpans.h"

#include "plan/sharedMemory.h"

#include <algorithm>

namespace {

/// The words of one tag.
struct TagWords
{
    int start;
    int end;
    int tag;
    bool isBit;
};

TagWords wordsOf(const Tag& tag, int index)
{
    const int start = tag.isBit() ? wordBitOf(tag.area, tag.number).number : tag.number;
    return {start, start + tag.units(), index, tag.isBit()};
}

} // namespace

std::vector<MemorySpan> memorySpans(const std::vector<Tag>& tags, const std::vector<int>& indices)
{
    std::vector<TagWords> words;
    words.reserve(indices.size());
    for (const int index : indices)
        words.push_back(wordsOf(tags[static_cast<size_t>(index)], index));
    std::sort(words.begin(), words.end(), [](const TagWords& a, const TagWords& b) {
        return a.start != b.start ? a.start < b.start : a.end > b.end;
    });

    std::vector<MemorySpan> spans;
    for (const TagWords& word : words) {
        if (spans.empty() || word.end > spans.back().end)
            spans.push_back({word.start, word.end, true, {}});
        MemorySpan& span = spans.back();
        span.tags.push_back(word.tag);
        span.hasOnlyBits = span.hasOnlyBits && word.isBit;
    }
    return spans;
}
