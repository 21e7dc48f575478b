#include "plan/readPlan.h"

#include "plan/memorySpans.h"
#include "plan/neighbours.h"
#include "plan/sharedMemory.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

enum { GROUP_BITS = 16, LAST_NUMBER = 65535 };

using Spans = std::vector<MemorySpan>;

/// The best plan for the first spans, up to some span.
struct Plan
{
    qint64 cost = 0;
    int blocks = 0;
    size_t lastBlock = 0; ///< first span of the last block

    bool operator<(const Plan& other) const
    {
        return std::tie(cost, blocks) < std::tie(other.cost, other.blocks);
    }
};

using AreaOfStation = std::pair<int, QString>;
using TagsByArea = std::map<AreaOfStation, std::vector<int>>;

/// The indices of the tags, by the words that hold them.
TagsByArea tagsByMemory(const std::vector<Tag>& tags)
{
    TagsByArea byMemory;
    for (size_t i = 0; i < tags.size(); ++i)
        byMemory[{tags[i].station, wordAreaOf(tags[i].area)}].push_back(int(i));
    return byMemory;
}

const Tag& tagAt(const std::vector<Tag>& tags, int index)
{
    return tags[static_cast<size_t>(index)];
}

ReadBlock blockOf(const AreaOfStation& area, int number, int count)
{
    ReadBlock block;
    block.station = area.first;
    block.area = area.second;
    block.number = number;
    block.count = count;
    return block;
}

// It is enough to try blocks that are runs of neighbouring spans. Proof: let block A start before
// block B. If B ends no later than A, A contains the spans of B. Otherwise each span of A behind
// the first span of B lies within B, because it starts after B's start and ends before B's end.
// Moving the span to B costs nothing, and no gap becomes longer: A loses its last spans, and B gets
// spans between its own.

/// @return element i is the best plan for the first i spans
std::vector<Plan> bestPlans(const Spans& spans, const WireCost& cost, int mostWords, int mostGap)
{
    std::vector<Plan> plans(spans.size() + 1);
    for (size_t last = 0; last < spans.size(); ++last) {
        Plan& best = plans[last + 1];
        for (size_t first = last + 1; first-- > 0;) {
            const int words = spans[last].end - spans[first].start;
            if (first < last && words > mostWords) break;
            if (first < last && spans[first + 1].start - spans[first].end > mostGap) break;
            Plan plan = plans[first];
            plan.cost += cost.request + cost.word * words;
            ++plan.blocks;
            plan.lastBlock = first;
            if (first == last || plan < best) best = plan;
        }
    }
    return plans;
}

/// The group of 16 bits that contains the bit. The last group of the markers is shorter.
ReadBlock groupOf(const AreaOfStation& area, int number)
{
    const int base = area.second == QLatin1String("MX") ? int(FIRST_MARKER_NUMBER) : 0;
    const int first = base + (number - base) / GROUP_BITS * GROUP_BITS;
    return blockOf(area, first, std::min(int(GROUP_BITS), LAST_NUMBER + 1 - first));
}

ReadBlock blockOfTag(const Tag& tag)
{
    const AreaOfStation area(tag.station, tag.area);
    return tag.isBit() ? groupOf(area, tag.number) : blockOf(area, tag.number, tag.units());
}

/// The block of the spans from `first` to `end`. A single word of which only bits are needed is
/// read as a group of bits: the frame is the same, and the driver then shows a written bit at once.
ReadBlock blockOfSpans(const AreaOfStation& memory, const Spans& spans, size_t first, size_t end,
                       const std::vector<Tag>& tags)
{
    const int start = spans[first].start;
    const bool isGroup = end - first == 1 && spans[first].hasOnlyBits;
    ReadBlock block = isGroup ? blockOfTag(tagAt(tags, spans[first].tags.front()))
                              : blockOf(memory, start, spans[end - 1].end - start);
    for (size_t i = first; i < end; ++i)
        block.tags.insert(block.tags.end(), spans[i].tags.begin(), spans[i].tags.end());
    std::sort(block.tags.begin(), block.tags.end());
    return block;
}

void sortByPlace(std::vector<ReadBlock>& blocks)
{
    std::sort(blocks.begin(), blocks.end(), [](const ReadBlock& a, const ReadBlock& b) {
        return std::tie(a.station, a.area, a.number) < std::tie(b.station, b.area, b.number);
    });
}

/// One block for each unit at which the block of a single tag starts.
void appendOwnBlocks(const std::vector<Tag>& tags, const std::vector<int>& indices,
                     std::vector<ReadBlock>& blocks)
{
    std::map<int, ReadBlock> byStart;
    for (const int index : indices) {
        const ReadBlock own = blockOfTag(tagAt(tags, index));
        ReadBlock& block = byStart.try_emplace(own.number, own).first->second;
        block.count = std::max(block.count, own.count);
        block.tags.push_back(index);
    }
    for (auto& entry : byStart)
        blocks.push_back(std::move(entry.second));
}

} // namespace

std::vector<ReadBlock> shortestReads(const std::vector<Tag>& tags, const WireCost& cost,
                                     int mostWords, int mostGap)
{
    std::vector<ReadBlock> blocks;
    for (const auto& [memory, indices] : tagsByMemory(tags)) {
        const Spans spans = memorySpans(tags, indices);
        const std::vector<Plan> plans = bestPlans(spans, cost, mostWords, mostGap);
        for (size_t end = spans.size(); end > 0; end = plans[end].lastBlock)
            blocks.push_back(blockOfSpans(memory, spans, plans[end].lastBlock, end, tags));
    }
    sortByPlace(blocks);
    return blocks;
}

std::vector<ReadBlock> planReads(const std::vector<Tag>& tags, const WireCost& cost, int mostWords,
                                 int mostGap)
{
    std::vector<ReadBlock> best = shortestReads(tags, cost, mostWords, mostGap);
    const int alike = differNeighbours(best, mostWords);
    if (alike == 0) return best;
    std::vector<ReadBlock> shorter = shortestReads(tags, cost, mostWords - 1, mostGap);
    const int stillAlike = differNeighbours(shorter, mostWords);
    const qint64 fence = cost.request + cost.word;
    const bool isBetter =
        cycleTime(shorter, cost) + stillAlike * fence < cycleTime(best, cost) + alike * fence;
    return isBetter ? shorter : best;
}

std::vector<ReadBlock> planSingleReads(const std::vector<Tag>& tags)
{
    std::vector<ReadBlock> blocks;
    TagsByArea byArea;
    for (size_t i = 0; i < tags.size(); ++i)
        byArea[{tags[i].station, tags[i].area}].push_back(int(i));
    for (const auto& entry : byArea)
        appendOwnBlocks(tags, entry.second, blocks);
    return blocks;
}

qint64 cycleTime(const std::vector<ReadBlock>& blocks, const WireCost& cost)
{
    qint64 time = 0;
    for (const ReadBlock& block : blocks) {
        time += cost.request + cost.word * registersOf(block);
    }
    return time;
}
