#include "plan/readPlan.h"

#include "randomSource.h"
#include "readPlanBench.h"
#include "wire/lineTiming.h"

#include <gtest/gtest.h>

namespace {

struct Expected
{
    int station;
    const char* area;
    int number;
    int count;
    std::vector<int> tags;
};

void expectBlocks(const std::vector<Expected>& expected, const std::vector<ReadBlock>& blocks)
{
    ASSERT_EQ(expected.size(), blocks.size());
    for (size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(expected[i].station, blocks[i].station) << i;
        EXPECT_EQ(QString::fromLatin1(expected[i].area), blocks[i].area) << i;
        EXPECT_EQ(expected[i].number, blocks[i].number) << i;
        EXPECT_EQ(expected[i].count, blocks[i].count) << i;
        EXPECT_EQ(expected[i].tags, blocks[i].tags) << i;
    }
}

} // namespace

TEST(ShortestReads, NoTagsNeedNoBlock)
{
    EXPECT_TRUE(shortestOf({}, 5).empty());
}

TEST(ShortestReads, GapIsReadWhenItCostsLessThanARequest)
{
    expectBlocks({{1, "MW", 3000, 6, {0, 1}}}, shortestOf({wordTag(3000), wordTag(3005)}, 5));
    expectBlocks({{1, "MW", 3000, 1, {0}}, {1, "MW", 3007, 1, {1}}},
                 shortestOf({wordTag(3000), wordTag(3007)}, 5));
}

TEST(ShortestReads, FewerRequestsWinAtEqualTime)
{
    expectBlocks({{1, "MW", 3000, 7, {0, 1}}}, shortestOf({wordTag(3000), wordTag(3006)}, 5));
}

TEST(ShortestReads, StationsAndAreasHaveSeparateBlocks)
{
    const std::vector<Tag> tags = {wordTag(1, Tag::INT16, "QW", 2), wordTag(0, Tag::INT16, "QW", 1),
                                   wordTag(0, Tag::INT16, "IW", 1),
                                   wordTag(0, Tag::INT16, "QW", 2)};
    expectBlocks({{1, "IW", 0, 1, {2}}, {1, "QW", 0, 1, {1}}, {2, "QW", 0, 2, {0, 3}}},
                 shortestOf(tags, 5));
}

TEST(ShortestReads, BlocksAreSortedByNumber)
{
    expectBlocks({{1, "MW", 3000, 1, {2}}, {1, "MW", 3050, 1, {0}}, {1, "MW", 3100, 1, {1}}},
                 shortestOf({wordTag(3050), wordTag(3100), wordTag(3000)}, 5));
}

TEST(ShortestReads, BlockIsNotLongerThanTheLimit)
{
    std::vector<Tag> tags;
    for (int number = 3000; number < 3126; ++number)
        tags.push_back(wordTag(number));
    const std::vector<ReadBlock> blocks = shortestOf(tags, 1000);
    ASSERT_EQ(2u, blocks.size());
    EXPECT_EQ(126, blocks[0].count + blocks[1].count);
    expectAllRead(tags, blocks, MOST_WORDS);
}

TEST(ShortestReads, BlockMayReachTheLimit)
{
    expectBlocks({{1, "MW", 3000, 125, {0, 1}}}, shortestOf({wordTag(3000), wordTag(3124)}, 1000));
}

TEST(ShortestReads, TwoWordTagIsNotSplit)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3124, Tag::FLOAT32)};
    expectBlocks({{1, "MW", 3000, 1, {0}}, {1, "MW", 3124, 2, {1}}}, shortestOf(tags, 1000));
}

TEST(ShortestReads, WordWithinATwoWordTagNeedsNoOtherRead)
{
    const std::vector<Tag> tags = {wordTag(3001), wordTag(3000, Tag::INT32), wordTag(3000)};
    expectBlocks({{1, "MW", 3000, 2, {0, 1, 2}}}, shortestOf(tags, 0));
}

TEST(ShortestReads, SeveralTagsMayShareAnAddress)
{
    expectBlocks({{1, "MW", 3000, 1, {0, 1, 2}}},
                 shortestOf({wordTag(3000), wordTag(3000), wordTag(3000)}, 0));
}

TEST(ShortestReads, TwoWordTagFitsABlockOfTwoWords)
{
    const std::vector<Tag> tags = {wordTag(3000, Tag::INT32), wordTag(3001, Tag::INT32)};
    expectBlocks({{1, "MW", 3000, 2, {0}}, {1, "MW", 3001, 2, {1}}},
                 shortestReads(tags, costWithGap(50), 2));
}

TEST(ShortestReads, BitsOfASingleWordAreReadAsTheirGroupOf16)
{
    const std::vector<Tag> tags = {bitTag("QX", 31), bitTag("QX", 16), bitTag("IX", 4095)};
    expectBlocks({{1, "IX", 4080, 16, {2}}, {1, "QX", 16, 16, {0, 1}}}, shortestOf(tags, 1000));
}

TEST(ShortestReads, GroupsOfMarkersStartAt3000)
{
    expectBlocks({{1, "MX", 3000, 16, {0, 1}}},
                 shortestOf({bitTag("MX", 3000), bitTag("MX", 3015)}, 1000));
    expectBlocks({{1, "MX", 3016, 16, {0}}}, shortestOf({bitTag("MX", 3016)}, 1000));
}

TEST(ShortestReads, TheLastGroupOfMarkersEndsWithTheArea)
{
    expectBlocks({{1, "MX", 65528, 8, {0, 1}}},
                 shortestOf({bitTag("MX", 65528), bitTag("MX", 65535)}, 5));
}

// Bits 15 and 16 of QX are in the words 0 and 1 of QW; MX 65527 and 65535 are 62527 and 62535
// behind 3000, in the words 3000 + 3907 and 3000 + 3908 of MW.
TEST(ShortestReads, BitsOfNeighbouringWordsAreReadAsTheWords)
{
    expectBlocks({{1, "QW", 0, 2, {0, 1}}}, shortestOf({bitTag("QX", 16), bitTag("QX", 15)}, 5));
    expectBlocks({{1, "IW", 254, 2, {0, 1}}},
                 shortestOf({bitTag("IX", 4064), bitTag("IX", 4095)}, 5));
    expectBlocks({{1, "MW", 6907, 2, {0, 1}}},
                 shortestOf({bitTag("MX", 65527), bitTag("MX", 65535)}, 5));
}

TEST(ShortestReads, BitsShareBlocksWithTheWordsOfTheirMemory)
{
    const std::vector<Tag> tags = {bitTag("MX", 3000 + 16 * 10 + 3), wordTag(3009), wordTag(3010),
                                   wordTag(3012, Tag::FLOAT32), bitTag("MX", 3000 + 16 * 13)};
    expectBlocks({{1, "MW", 3009, 5, {0, 1, 2, 3, 4}}}, shortestOf(tags, 1));
}

TEST(ShortestReads, BitsShareNoBlockWithOtherMemoryOrStations)
{
    const std::vector<Tag> tags = {bitTag("IX", 0), bitTag("QX", 0), wordTag(1, Tag::UINT16, "QW"),
                                   wordTag(1, Tag::UINT16, "IW", 2)};
    expectBlocks({{1, "IX", 0, 16, {0}}, {1, "QW", 0, 2, {1, 2}}, {2, "IW", 1, 1, {3}}},
                 shortestOf(tags, 5));
}

TEST(ShortestReads, TwoThousandBitsInARowAreOneRequest)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 2000; ++i)
        tags.push_back(bitTag("MX", 3000 + i));
    const std::vector<ReadBlock> blocks = shortestOf(tags, 5);
    ASSERT_EQ(1u, blocks.size());
    EXPECT_EQ(125, blocks[0].count);
    expectAllRead(tags, blocks, MOST_WORDS);
}

// The markers have 4096 words: 32 requests of 125 words and one of 96.
TEST(ShortestReads, TwentyThousandMixedTagsAreTheRequestsForAllMarkers)
{
    RandomSource random(1);
    std::vector<Tag> tags;
    for (int number = 3000; number <= 7095; ++number)
        tags.push_back(wordTag(number));
    while (tags.size() < 20000)
        tags.push_back(bitTag("MX", random.between(3000, 65535)));
    const std::vector<ReadBlock> blocks = shortestOf(tags, 5);
    EXPECT_EQ(33u, blocks.size());
    expectAllRead(tags, blocks, MOST_WORDS);
}

TEST(ShortestReads, ABitOfEachOfTwoThousandWordsAreSixteenRequests)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 2000; ++i)
        tags.push_back(bitTag("MX", 3000 + 16 * i));
    EXPECT_EQ(16u, shortestOf(tags, 5).size());
}

TEST(ShortestReads, GapLongerThanTheLimitIsNotRead)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3003), wordTag(3005),
                                   bitTag("MX", 3000 + 16 * 7)};
    const auto plan = [&tags](int gap) {
        return shortestReads(tags, costWithGap(50), MOST_WORDS, gap);
    };
    expectBlocks({{1, "MW", 3000, 8, {0, 1, 2, 3}}}, plan(2));
    expectBlocks({{1, "MW", 3000, 1, {0}}, {1, "MW", 3003, 5, {1, 2, 3}}}, plan(1));
    expectBlocks({{1, "MW", 3000, 1, {0}},
                  {1, "MW", 3003, 1, {1}},
                  {1, "MW", 3005, 1, {2}},
                  {1, "MX", 3112, 16, {3}}},
                 plan(0));
}

TEST(ShortestReads, WordsWithoutAGapAreReadTogetherWithTheLimitZero)
{
    const std::vector<Tag> tags = {wordTag(3000, Tag::FLOAT32), wordTag(3001, Tag::INT32),
                                   bitTag("MX", 3000 + 16 * 3)};
    expectBlocks({{1, "MW", 3000, 4, {0, 1, 2}}},
                 shortestReads(tags, costWithGap(50), MOST_WORDS, 0));
}

TEST(SingleReads, AreOneForEachTag)
{
    const std::vector<Tag> tags = {wordTag(3001), wordTag(3000, Tag::INT32), bitTag("QX", 17)};
    expectBlocks({{1, "MW", 3000, 2, {1}}, {1, "MW", 3001, 1, {0}}, {1, "QX", 16, 16, {2}}},
                 planSingleReads(tags));
}

TEST(SingleReads, WithTheSameStartAreShared)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3000, Tag::INT32), bitTag("QX", 17),
                                   bitTag("QX", 18)};
    expectBlocks({{1, "MW", 3000, 2, {0, 1}}, {1, "QX", 16, 16, {2, 3}}}, planSingleReads(tags));
}

TEST(CycleTime, IsTheTimeOfRequestsAndData)
{
    WireCost cost;
    cost.request = 1000;
    cost.word = 5;
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3002), bitTag("QX", 0)};
    EXPECT_EQ(2000 + 3 * 5 + 5, cycleTime(shortestReads(tags, cost, MOST_WORDS), cost));
}

TEST(CycleTime, ShortGroupOfBitsTakesAWholeWord)
{
    WireCost cost;
    cost.request = 1000;
    cost.word = 6;
    EXPECT_EQ(1006, cycleTime(shortestReads({bitTag("MX", 65535)}, cost, MOST_WORDS), cost));
}

TEST(ShortestReads, OnANetworkAreTheFewestRequests)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3124), wordTag(3125), wordTag(3249)};
    expectBlocks({{1, "MW", 3000, 125, {0, 1}}, {1, "MW", 3125, 125, {2, 3}}},
                 shortestReads(tags, wireCost(LineTiming::network(), 0), MOST_WORDS));
}
