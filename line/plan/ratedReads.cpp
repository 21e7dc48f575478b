#include "plan/ratedReads.h"

#include "plan/neighbours.h"
#include "plan/tagSpan.h"
#include "wire/timeUnits.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

namespace {

using Indices = std::vector<int>;

/// The tags of each rate, with their rate.
using TagsByRate = std::vector<std::pair<ReadRate, Indices>>;

TagsByRate byRate(const std::vector<Tag>& tags)
{
    std::map<std::pair<int, qint64>, Indices> sorted;
    for (size_t i = 0; i < tags.size(); ++i)
        sorted[{tags[i].rate.kind, tags[i].rate.intervalMs}].push_back(int(i));
    TagsByRate rates;
    for (const auto& entry : sorted)
        rates.emplace_back(tags[size_t(entry.second.front())].rate, entry.second);
    return rates;
}

/// Plans some of the tags.
std::vector<ReadBlock> planSome(const std::vector<Tag>& tags, const Indices& some,
                                const WireCost& cost, int mostWords, int mostGap)
{
    std::vector<Tag> chosen;
    for (const int index : some)
        chosen.push_back(tags[size_t(index)]);
    std::vector<ReadBlock> blocks = planReads(chosen, cost, mostWords, mostGap);
    for (ReadBlock& block : blocks) {
        for (int& index : block.tags)
            index = some[size_t(index)];
    }
    return blocks;
}

/// Finds the block that contains a tag.
class Coverage
{
public:
    explicit Coverage(std::vector<ReadBlock>& blocks)
    {
        for (ReadBlock& block : blocks)
            m_blocks[memoryOf(block.station, block.area)].push_back(&block);
    }

    /// Adds the tags that lie in a block to that block.
    /// @return the other tags
    Indices take(const std::vector<Tag>& tags, const Indices& indices)
    {
        Indices left;
        for (const int index : indices) {
            if (!takeOne(tags[size_t(index)], index)) left.push_back(index);
        }
        return left;
    }

private:
    using Memory = std::pair<int, QChar>;

    static Memory memoryOf(int station, const QString& area)
    {
        return {station, area.at(0)};
    }

    bool takeOne(const Tag& tag, int index)
    {
        for (ReadBlock* const block : m_blocks[memoryOf(tag.station, tag.area)]) {
            if (!contains(*block, tag)) continue;
            Indices& in = block->tags;
            in.insert(std::upper_bound(in.begin(), in.end(), index), index);
            return true;
        }
        return false;
    }

    std::map<Memory, std::vector<ReadBlock*>> m_blocks;
};

/// The rates from the fastest to the slowest.
void sortRates(TagsByRate& rates, qint64 cycle)
{
    const auto rank = [cycle](const ReadRate& rate) {
        return std::make_tuple(rate.kind == ReadRate::ONCE,
                               rate.kind == ReadRate::INTERVAL ? rate.intervalMs * MILLISECOND
                                                               : cycle,
                               rate.kind == ReadRate::INTERVAL);
    };
    std::sort(rates.begin(), rates.end(),
              [&rank](const auto& a, const auto& b) { return rank(a.first) < rank(b.first); });
}

qint64 fastCycle(const std::vector<ReadBlock>& blocks, const WireCost& cost, qint64 pace)
{
    std::vector<ReadBlock> fast;
    std::copy_if(blocks.begin(), blocks.end(), std::back_inserter(fast), isReadInEveryCycle);
    return std::max(pace, cycleTime(fast, cost));
}

} // namespace

bool isReadInEveryCycle(const ReadBlock& block)
{
    return block.rate.kind == ReadRate::EVERY_CYCLE;
}

/// The rank of the fast tags depends on the time of their cycle, so they are planned alone first.
RatedReads planRatedReads(const std::vector<Tag>& tags, const WireCost& cost, int mostWords,
                          qint64 pace, int mostGap)
{
    RatedReads reads;
    TagsByRate rates = byRate(tags);
    if (rates.empty()) return reads;
    const auto& [rate, indices] = rates.front(); // EVERY_CYCLE, if there is one
    if (rate.kind == ReadRate::EVERY_CYCLE)
        reads.cycle = fastCycle(planSome(tags, indices, cost, mostWords, mostGap), cost, pace);
    sortRates(rates, reads.cycle);
    for (const auto& [ownRate, own] : rates) {
        const Indices left = Coverage(reads.blocks).take(tags, own);
        for (ReadBlock& block : planSome(tags, left, cost, mostWords, mostGap)) {
            block.rate = ownRate;
            reads.blocks.push_back(std::move(block));
        }
    }
    reads.cycle = fastCycle(reads.blocks, cost, pace);
    std::stable_sort(
        reads.blocks.begin(), reads.blocks.end(), [](const ReadBlock& a, const ReadBlock& b) {
            return std::tie(a.station, a.area, a.number) < std::tie(b.station, b.area, b.number);
        });
    return reads;
}

std::optional<qint64> turnOf(const Tag& tag, qint64 cycle)
{
    switch (tag.rate.kind) {
    case ReadRate::ONCE:
        return std::nullopt;
    case ReadRate::INTERVAL:
        return tag.rate.intervalMs * MILLISECOND;
    default:
        return cycle;
    }
}

double averageLoad(const std::vector<ReadBlock>& blocks, const WireCost& cost)
{
    double load = 0;
    for (const ReadBlock& block : blocks) {
        if (block.rate.kind != ReadRate::INTERVAL) continue;
        load += double(cycleTime({block}, cost)) / double(block.rate.intervalMs * MILLISECOND);
    }
    return load;
}
