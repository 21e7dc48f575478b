#include "plan/readPlan.h"

#include "plan/neighbours.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace {

enum { GROUP_BITS = 16, LAST_NUMBER = 65535 };

/// Words that are read together or not at all.
struct Span
{
    int start;
    int end; ///< one behind the last word
    std::vector<int> tags;
};

/// The best plan for the spans from the first up to one of them.
struct Plan
{
    qint64 cost = 0;
    int blocks = 0;
    size_t lastBlock = 0; ///< first span of its last block

    bool operator<(const Plan& other) const
    {
        return std::tie(cost, blocks) < std::tie(other.cost, other.blocks);
    }
};

using AreaOfStation = std::pair<int, QString>;

std::map<AreaOfStation, std::vector<int>> tagsByArea(const std::vector<Tag>& tags)
{
    std::map<AreaOfStation, std::vector<int>> byArea;
    for (size_t i = 0; i < tags.size(); ++i)
        byArea[{tags[i].station, tags[i].area}].push_back(int(i));
    return byArea;
}

const Tag& tagAt(const std::vector<Tag>& tags, int index)
{
    return tags[static_cast<size_t>(index)];
}

/// The tags' spans without those that lie within another one, so that both starts and ends ascend.
std::vector<Span> spansOf(const std::vector<Tag>& tags, std::vector<int> indices)
{
    std::sort(indices.begin(), indices.end(), [&tags](int a, int b) {
        const Tag& left = tagAt(tags, a);
        const Tag& right = tagAt(tags, b);
        return left.number != right.number ? left.number < right.number
                                           : left.units() > right.units();
    });
    std::vector<Span> spans;
    for (const int index : indices) {
        const Tag& tag = tagAt(tags, index);
        const int end = tag.number + tag.units();
        if (spans.empty() || end > spans.back().end) spans.push_back({tag.number, end, {}});
        spans.back().tags.push_back(index);
    }
    return spans;
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

// Runs of neighbouring spans are all the blocks worth trying. Of two blocks, let A start first. If
// B ends no later, A brings B's spans too. Otherwise every span of A that stands behind B's first
// lies within B, because it starts later than B and ends before it: moving it to B costs nothing.

/// element i: the best plan for the first i spans
std::vector<Plan> bestPlans(const std::vector<Span>& spans, const WireCost& cost, int mostWords)
{
    std::vector<Plan> plans(spans.size() + 1);
    for (size_t last = 0; last < spans.size(); ++last) {
        Plan& best = plans[last + 1];
        for (size_t first = last + 1; first-- > 0;) {
            const int words = spans[last].end - spans[first].start;
            if (first < last && words > mostWords) break;
            Plan plan = plans[first];
            plan.cost += cost.request + cost.word * words;
            ++plan.blocks;
            plan.lastBlock = first;
            if (first == last || plan < best) best = plan;
        }
    }
    return plans;
}

void appendWordBlocks(const AreaOfStation& area, const std::vector<Span>& spans,
                      const std::vector<Plan>& plans, std::vector<ReadBlock>& blocks)
{
    const auto firstOfArea = static_cast<std::ptrdiff_t>(blocks.size());
    for (size_t end = spans.size(); end > 0; end = plans[end].lastBlock) {
        const size_t first = plans[end].lastBlock;
        const int start = spans[first].start;
        ReadBlock block = blockOf(area, start, spans[end - 1].end - start);
        for (size_t i = first; i < end; ++i)
            block.tags.insert(block.tags.end(), spans[i].tags.begin(), spans[i].tags.end());
        std::sort(block.tags.begin(), block.tags.end());
        blocks.push_back(std::move(block));
    }
    std::reverse(blocks.begin() + firstOfArea, blocks.end());
}

/// The group of 16 bits that a bit belongs to; the last one of the markers is cut short.
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

/// One block for each place at which a tag's own block starts.
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
                                     int mostWords)
{
    std::vector<ReadBlock> blocks;
    for (const auto& [area, indices] : tagsByArea(tags)) {
        if (tagAt(tags, indices.front()).isBit()) {
            appendOwnBlocks(tags, indices, blocks);
            continue;
        }
        const std::vector<Span> spans = spansOf(tags, indices);
        appendWordBlocks(area, spans, bestPlans(spans, cost, mostWords), blocks);
    }
    return blocks;
}

std::vector<ReadBlock> planReads(const std::vector<Tag>& tags, const WireCost& cost, int mostWords)
{
    std::vector<ReadBlock> best = shortestReads(tags, cost, mostWords);
    const int alike = differNeighbours(best, mostWords);
    if (alike == 0) return best;
    std::vector<ReadBlock> shorter = shortestReads(tags, cost, mostWords - 1);
    const int stillAlike = differNeighbours(shorter, mostWords);
    const qint64 fence = cost.request + cost.word;
    const bool isBetter =
        cycleTime(shorter, cost) + stillAlike * fence < cycleTime(best, cost) + alike * fence;
    return isBetter ? shorter : best;
}

std::vector<ReadBlock> planSingleReads(const std::vector<Tag>& tags)
{
    std::vector<ReadBlock> blocks;
    for (const auto& entry : tagsByArea(tags))
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
