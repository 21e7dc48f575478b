#include "readPlanBench.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <limits>
#include <random>

// How good plans are, and how soon they are there.

namespace {

/// Tries every way to share the tags out among blocks, whatever lies between them.
class ExhaustiveSearch
{
public:
    ExhaustiveSearch(const std::vector<Tag>& tags, const WireCost& cost, int mostWords)
        : m_tags(tags), m_cost(cost), m_mostWords(mostWords)
    {
        place(0, 0);
    }

    qint64 best() const
    {
        return m_best;
    }

private:
    struct Hull
    {
        int start;
        int end;
    };

    qint64 costOf(const Hull& hull) const
    {
        return m_cost.request + m_cost.word * (hull.end - hull.start);
    }

    void place(size_t index, qint64 cost)
    {
        if (index == m_tags.size()) {
            m_best = std::min(m_best, cost);
            return;
        }
        const Hull own = {m_tags[index].number, m_tags[index].number + m_tags[index].units()};
        for (size_t i = 0; i < m_hulls.size(); ++i) {
            const Hull before = m_hulls[i];
            const Hull joined = {std::min(before.start, own.start), std::max(before.end, own.end)};
            if (joined.end - joined.start > m_mostWords) continue;
            m_hulls[i] = joined;
            place(index + 1, cost - costOf(before) + costOf(joined));
            m_hulls[i] = before;
        }
        m_hulls.push_back(own);
        place(index + 1, cost + costOf(own));
        m_hulls.pop_back();
    }

    const std::vector<Tag>& m_tags;
    const WireCost m_cost;
    const int m_mostWords;
    std::vector<Hull> m_hulls;
    qint64 m_best = std::numeric_limits<qint64>::max();
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

/// The fastest of several runs, because others use the machine too.
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
    for (int i = 0; i < 1000; ++i) {
        const std::vector<Tag> tags =
            randomWords(random, between(random, 1, 8), between(random, 4, 40));
        WireCost cost;
        cost.request = between(random, 1, 60);
        cost.word = between(random, 0, 12);
        const int mostWords = between(random, 2, 20);
        const std::vector<ReadBlock> blocks = shortestReads(tags, cost, mostWords);
        expectAllRead(tags, blocks, mostWords);
        ASSERT_EQ(ExhaustiveSearch(tags, cost, mostWords).best(), cycleTime(blocks, cost)) << i;
    }
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

// 5 and 50 ms are to be kept by an optimised build; a sanitizer takes several times as long.
TEST(ReadPlan, TakesMillisecondsForThousandsOfTags)
{
    std::mt19937 random(9);
    const double dense = milliseconds(randomWords(random, 10000, 4096));
    const double thousand = milliseconds(randomWords(random, 1000, 1000));
    std::printf("planned 1,000 tags in %.2f ms, 10,000 in %.2f ms\n", thousand, dense);
    EXPECT_LT(thousand, 50);
    EXPECT_LT(dense, 500);
}
