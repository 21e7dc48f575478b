#include "plan/ratedReads.h"

#include "plan/tagSpan.h"
#include "readPlanBench.h"

#include <gtest/gtest.h>

#include <random>

// Plans of tags with several rates. A request costs 10 ms and a word 1 ms, so gaps of up to ten
// words are read along.

namespace {

enum { MS = 1000, REQUEST = 10 * MS, WORD = MS };

const WireCost COST = {REQUEST, WORD};

Tag rated(int number, const char* rate, Tag::Type type = Tag::UINT16)
{
    Tag tag = wordTag(number, type);
    EXPECT_TRUE(takeRate(QLatin1String(rate), tag.rate));
    return tag;
}

RatedReads plan(const std::vector<Tag>& tags, qint64 pace = 0)
{
    return planRatedReads(tags, COST, MOST_WORDS, pace);
}

QString rateOf(const ReadBlock& block)
{
    return rateText(block.rate);
}

} // namespace

TEST(RatedReads, TagsWithoutRatesHaveThePlanOfReads)
{
    const std::vector<Tag> tags = {wordTag(3000), wordTag(3100), wordTag(3108)};
    const std::vector<ReadBlock> expected = planReads(tags, COST, MOST_WORDS);
    const std::vector<ReadBlock> blocks = plan(tags).blocks;
    ASSERT_EQ(expected.size(), blocks.size());
    for (size_t i = 0; i < blocks.size(); ++i) {
        EXPECT_EQ(expected[i].number, blocks[i].number);
        EXPECT_EQ(expected[i].count, blocks[i].count);
        EXPECT_EQ(expected[i].tags, blocks[i].tags);
    }
}

TEST(RatedReads, TagsOfDifferentRatesHaveBlocksOfTheirOwn)
{
    const std::vector<ReadBlock> blocks =
        plan({rated(3003, "10s"), rated(3000, "fast"), rated(3001, "once")}).blocks;
    ASSERT_EQ(3u, blocks.size());
    EXPECT_EQ(QLatin1String("fast"), rateOf(blocks[0]));
    EXPECT_EQ(std::vector<int>{1}, blocks[0].tags);
    EXPECT_EQ(QLatin1String("once"), rateOf(blocks[1]));
    EXPECT_EQ(std::vector<int>{2}, blocks[1].tags);
    EXPECT_EQ(QLatin1String("10s"), rateOf(blocks[2]));
    EXPECT_EQ(std::vector<int>{0}, blocks[2].tags);
}

TEST(RatedReads, SlowerTagInsideAFasterBlockIsReadByIt)
{
    const std::vector<ReadBlock> blocks =
        plan({rated(3002, "once"), rated(3000, "fast"), rated(3001, "10s"), rated(3004, "fast")})
            .blocks;
    ASSERT_EQ(1u, blocks.size());
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), blocks[0].tags);
    EXPECT_EQ(QLatin1String("fast"), rateOf(blocks[0]));
}

// Bit 19 of the markers is bit 3 of the word 3001.
TEST(RatedReads, SlowerBitOfAWordInAFasterBlockIsReadByIt)
{
    Tag bit = bitTag("MX", 3000 + 19);
    EXPECT_TRUE(takeRate(QLatin1String("10s"), bit.rate));
    const std::vector<ReadBlock> blocks =
        plan({bit, rated(3000, "fast"), rated(3001, "fast")}).blocks;
    ASSERT_EQ(1u, blocks.size());
    EXPECT_EQ((std::vector<int>{0, 1, 2}), blocks[0].tags);
    EXPECT_EQ(QLatin1String("MW"), blocks[0].area);
}

TEST(RatedReads, TagThatReachesOutOfAFasterBlockIsReadByItself)
{
    const std::vector<ReadBlock> blocks =
        plan({rated(3000, "fast"), rated(3000, "10s", Tag::UINT32)}).blocks;
    ASSERT_EQ(2u, blocks.size());
    EXPECT_EQ(std::vector<int>{0}, blocks[0].tags);
    EXPECT_EQ(std::vector<int>{1}, blocks[1].tags);
}

TEST(RatedReads, SpareWordIsNoPlaceForASlowerTag)
{
    // The two fast blocks are alike, so one of them gets a spare word.
    const std::vector<Tag> tags = {rated(3000, "fast"), rated(3500, "fast")};
    const std::vector<ReadBlock> alone = plan(tags).blocks;
    const auto longer = std::find_if(alone.begin(), alone.end(),
                                     [](const ReadBlock& block) { return block.spare > 0; });
    ASSERT_NE(alone.end(), longer);
    std::vector<Tag> more = tags;
    more.push_back(rated(longer->number + 1, "10s"));
    EXPECT_EQ(3u, plan(more).blocks.size());
}

TEST(RatedReads, IntervalBelowTheCycleIsTheFasterRate)
{
    // Within the pace of a second the tag of 100 ms would come late in a block of every cycle.
    const std::vector<Tag> tags = {rated(3000, "fast"), rated(3004, "fast"), rated(3002, "100ms")};
    const std::vector<ReadBlock> paced = plan(tags, 1000 * MS).blocks;
    ASSERT_EQ(2u, paced.size());
    const std::vector<ReadBlock> unpaced = plan(tags).blocks;
    ASSERT_EQ(1u, unpaced.size());
}

TEST(RatedReads, CycleIsThePaceOrTheTimeOfTheFastBlocks)
{
    const std::vector<Tag> tags = {rated(3000, "fast"), rated(3100, "10s")};
    EXPECT_EQ(REQUEST + WORD, plan(tags).cycle);
    EXPECT_EQ(500 * MS, plan(tags, 500 * MS).cycle);
    EXPECT_EQ(0, plan({}).cycle);
}

TEST(RatedReads, TurnIsTheRateOrThePlannedCycle)
{
    EXPECT_EQ(7, turnOf(rated(3000, "fast"), 7));
    EXPECT_EQ(500 * MS, turnOf(rated(3000, "500ms"), 7));
    EXPECT_EQ(std::nullopt, turnOf(rated(3000, "once"), 7));
}

TEST(RatedReads, LoadIsThatOfTheBlocksWithIntervals)
{
    // A read of one word takes 11 ms: every 110 ms it is a tenth of the time.
    EXPECT_DOUBLE_EQ(0.1,
                     averageLoad(plan({rated(3000, "110ms"), rated(3500, "once")}).blocks, COST));
    EXPECT_EQ(0, averageLoad(plan({rated(3000, "fast")}).blocks, COST));
}

TEST(RatedReads, EveryTagIsReadAtItsRateOrFaster)
{
    static const char* const RATES[] = {"fast", "once", "50ms", "1s", "10s", "5m"};
    std::mt19937 random(23);
    for (int round = 0; round < 500; ++round) {
        std::vector<Tag> tags;
        for (unsigned left = 1 + unsigned(random() % 60); left > 0; --left)
            tags.push_back(rated(3000 + int(random() % 200), RATES[random() % 6],
                                 random() % 3 == 0 ? Tag::FLOAT32 : Tag::UINT16));
        const RatedReads reads = plan(tags, random() % 2 == 0 ? 0 : 500 * MS);
        ASSERT_NO_FATAL_FAILURE(expectAllRead(tags, reads.blocks, MOST_WORDS));
        for (const ReadBlock& block : reads.blocks) {
            for (const int index : block.tags) {
                const Tag& tag = tags[size_t(index)];
                ASSERT_TRUE(contains(block, tag));
                if (tag.rate.kind != ReadRate::INTERVAL || block.rate == tag.rate) continue;
                ASSERT_NE(ReadRate::ONCE, block.rate.kind);
                const qint64 turn = block.rate.kind == ReadRate::INTERVAL
                                        ? block.rate.intervalMs * MS
                                        : reads.cycle;
                ASSERT_LE(turn, tag.rate.intervalMs * MS);
            }
        }
    }
}
