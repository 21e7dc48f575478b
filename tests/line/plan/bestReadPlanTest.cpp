#include "readPlanBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <limits>
#include <random>
#include <utility>

// The quality of plans, and the time of planning.

namespace {

using Best = std::pair<qint64, size_t>; ///< time of a cycle, and number of blocks

/// Tries all distributions of the tags among blocks, whatever the gaps: blocks of words, which may
/// hold bits, and groups of 16 bits. The tags lie in the first 64 marker words.
class ExhaustiveSearch
{
public:
    ExhaustiveSearch(const std::vector<Tag>& tags, const WireCost& cost, int mostWords, int mostGap)
        : m_tags(tags), m_cost(cost), m_mostWords(mostWords), m_mostGap(mostGap)
    {
        place(0, 0);
    }

    Best best() const
    {
        return m_best;
    }

private:
    struct Block
    {
        int start;
        int end;
        quint64 needed; ///< a bit for each word
        bool isGroup;
    };

    qint64 costOf(const Block& block) const
    {
        return m_cost.request + m_cost.word * (block.end - block.start);
    }

    bool hasAllowedGaps(const Block& block) const
    {
        int gap = 0;
        for (int word = block.start; word < block.end; ++word) {
            gap = (block.needed >> (word - 3000) & 1u) != 0 ? 0 : gap + 1;
            if (gap > m_mostGap) return false;
        }
        return true;
    }

    void place(size_t index, qint64 cost)
    {
        if (Best(cost, m_blocks.size()) >= m_best) return;
        if (index == m_tags.size()) {
            if (std::all_of(m_blocks.begin(), m_blocks.end(),
                            [this](const Block& block) { return hasAllowedGaps(block); }))
                m_best = Best(cost, m_blocks.size());
            return;
        }
        const Tag& tag = m_tags[index];
        const int word = firstWordOf(tag);
        const quint64 needed = (tag.units() == 2 ? quint64(3) : quint64(1)) << (word - 3000);
        const Block own = {word, word + tag.units(), needed, false};
        for (size_t i = 0; i < m_blocks.size(); ++i)
            join(i, own, index, cost);
        for (int isGroup = 0; isGroup <= int(tag.isBit()); ++isGroup) {
            m_blocks.push_back({own.start, own.end, own.needed, isGroup != 0});
            place(index + 1, cost + costOf(own));
            m_blocks.pop_back();
        }
    }

    void join(size_t block, const Block& own, size_t index, qint64 cost)
    {
        const Block before = m_blocks[block];
        const Block joined = {std::min(before.start, own.start), std::max(before.end, own.end),
                              before.needed | own.needed, before.isGroup};
        const bool isSameGroup = m_tags[index].isBit() && before.start == own.start;
        if (before.isGroup && !isSameGroup) return;
        if (joined.end - joined.start > m_mostWords) return;
        m_blocks[block] = joined;
        place(index + 1, cost - costOf(before) + costOf(joined));
        m_blocks[block] = before;
    }

    const std::vector<Tag>& m_tags;
    const WireCost m_cost;
    const int m_mostWords;
    const int m_mostGap;
    std::vector<Block> m_blocks;
    Best m_best = Best(std::numeric_limits<qint64>::max(), 0);
};

int between(std::mt19937& random, int least, int most)
{
    return std::uniform_int_distribution<int>(least, most)(random);
}

std::vector<Tag> randomWords(std::mt19937& random, int count, int numbers)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(wordTag(between(random, 0, numbers - 1),
                               between(random, 0, 1) ? Tag::INT32 : Tag::INT16));
    return tags;
}

/// Words of MW and bits of MX, so that some of them share words.
std::vector<Tag> randomTags(std::mt19937& random, int count, int words)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i) {
        const int word = 3000 + between(random, 0, words - 1);
        const int bit = 3000 + 16 * (word - 3000) + between(random, 0, 15);
        const Tag::Type type = between(random, 0, 1) ? Tag::INT32 : Tag::INT16;
        tags.push_back(between(random, 0, 1) ? bitTag("MX", bit) : wordTag(word, type));
    }
    return tags;
}

/// The time of the fastest run, because other programs also use the machine.
double milliseconds(const std::vector<Tag>& tags)
{
    double best = std::numeric_limits<double>::max();
    for (int run = 0; run < 5; ++run) {
        const auto start = std::chrono::steady_clock::now();
        const std::vector<ReadBlock> blocks = planOf(tags, 20);
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - start;
        EXPECT_FALSE(blocks.empty());
        best = std::min(best, taken.count());
    }
    return best;
}

} // namespace

TEST(ShortestReads, AreAsFastAsTheBestOfAllPlans)
{
    std::mt19937 random(7);
    int withLimitedGaps = 0;
    for (int i = 0; i < 2000; ++i) {
        const std::vector<Tag> tags =
            randomTags(random, between(random, 1, 7), between(random, 4, 40));
        WireCost cost;
        cost.request = between(random, 1, 60);
        cost.word = between(random, 0, 12);
        const int mostWords = between(random, 2, 20);
        const int mostGap = between(random, 0, 1) ? between(random, 0, 5) : int(ANY_GAP);
        const std::vector<ReadBlock> blocks = shortestReads(tags, cost, mostWords, mostGap);
        expectAllRead(tags, blocks, mostWords);
        const Best best = ExhaustiveSearch(tags, cost, mostWords, mostGap).best();
        ASSERT_EQ(best, Best(cycleTime(blocks, cost), blocks.size())) << i;
        if (best > ExhaustiveSearch(tags, cost, mostWords, ANY_GAP).best()) ++withLimitedGaps;
    }
    EXPECT_GT(withLimitedGaps, 100);
}

TEST(ReadPlan, ReadsEachOfThousandsOfTagsOnce)
{
    std::mt19937 random(8);
    const std::vector<Tag> tags = randomWords(random, 5000, 4000);
    const std::vector<ReadBlock> blocks = planOf(tags, 20);
    expectAllRead(tags, blocks, MOST_WORDS);
    EXPECT_LE(cycleTime(blocks, costWithGap(20)),
              cycleTime(planSingleReads(tags), costWithGap(20)));
}

TEST(ReadPlan, ReadsEachOfThousandsOfBitsOnce)
{
    std::mt19937 random(10);
    std::vector<Tag> tags;
    for (int i = 0; i < 5000; ++i)
        tags.push_back(bitTag("MX", between(random, 3000, 65535)));
    expectAllRead(tags, planOf(tags, 20), MOST_WORDS);
}

// The limits of 5 and 50 ms are for optimised builds. A sanitizer takes several times as long.
TEST(ReadPlan, TakesMillisecondsForThousandsOfTags)
{
    std::mt19937 random(9);
    const double dense = milliseconds(randomWords(random, 10000, 4096));
    const double thousand = milliseconds(randomWords(random, 1000, 1000));
    const double mixed = milliseconds(randomTags(random, 20000, 3900));
    std::printf("planned 1,000 tags in %.2f ms, 10,000 in %.2f ms, 20,000 with bits in %.2f ms\n",
                thousand, dense, mixed);
    EXPECT_LT(mixed, 1000);
    EXPECT_LT(thousand, 50);
    EXPECT_LT(dense, 500);
}
