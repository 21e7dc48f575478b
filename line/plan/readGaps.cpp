#include "plan/readGaps.h"

#include "plan/memorySpans.h"

#include <algorithm>

ReadGaps readGaps(const std::vector<ReadBlock>& blocks, const std::vector<Tag>& tags)
{
    ReadGaps gaps;
    for (const ReadBlock& block : blocks) {
        const std::vector<MemorySpan> spans = memorySpans(tags, block.tags);
        for (size_t i = 1; i < spans.size(); ++i) {
            const int gap = std::max(0, spans[i].start - spans[i - 1].end);
            gaps.words += gap;
            gaps.longest = std::max(gaps.longest, gap);
        }
    }
    return gaps;
}
