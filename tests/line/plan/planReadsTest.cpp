#include "plan/neighbours.h"
#include "plan/readPlan.h"

#include "readPlanBench.h"
#include "wire/lineTiming.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>

// Plans with different neighbours, and their cost: on a line of 38400 baud with stations that begin
// their answers after 1 ms, unless a test says otherwise.

namespace {

enum { TURNAROUND = 1000, NEARLY_FULL = 124 };

WireCost costOfLine()
{
    return wireCost(LineTiming(LineSettings()), TURNAROUND);
}

std::vector<ReadBlock> planFor(const std::vector<Tag>& tags)
{
    return planReads(tags, costOfLine(), MOST_WORDS);
}

double timesAsLong(const std::vector<Tag>& tags)
{
    const WireCost cost = costOfLine();
    return double(cycleTime(planFor(tags), cost)) /
           double(cycleTime(shortestReads(tags, cost, MOST_WORDS), cost));
}

std::vector<Tag> words(int first, int count, int step = 1, const char* area = "MW")
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(wordTag(first + i * step, Tag::UINT16, area));
    return tags;
}

/// Tags anywhere in the areas of two stations.
std::vector<Tag> randomTags(std::mt19937& random)
{
    static const struct
    {
        const char* area;
        unsigned first;
        unsigned count;
    } AREAS[] = {{"MW", 3000, 4096}, {"IW", 0, 256}, {"QW", 0, 256}};
    const unsigned markers = 10 + unsigned(random() % 4087);
    std::vector<Tag> tags;
    for (unsigned left = 1 + unsigned(random() % 400); left > 0; --left) {
        const auto& area = AREAS[random() % 3];
        const unsigned count = area.first > 0 ? markers : area.count;
        if (random() % 4 == 0) {
            const char* const bits[] = {"MX", "IX", "QX"};
            const unsigned last = area.first > 0 ? std::min(16 * markers, 62536u) : 4096u;
            tags.push_back(bitTag(bits[&area - AREAS], int(area.first + unsigned(random()) % last),
                                  1 + int(random() % 2)));
            continue;
        }
        const Tag::Type type = random() % 2 == 0 ? Tag::INT16 : Tag::FLOAT32;
        const int last = type == Tag::INT16 ? 1 : 2;
        const int number = int(area.first + unsigned(random()) % count);
        tags.push_back(wordTag(std::min(number, int(area.first + area.count) - last), type,
                               area.area, 1 + int(random() % 2)));
    }
    return tags;
}

/// The blocks in the driver's order, which differs from the plan's order.
std::map<int, std::vector<ReadBlock>> asPolled(const std::vector<ReadBlock>& blocks)
{
    std::map<int, std::vector<ReadBlock>> stations;
    for (const char* area : {"MW", "IW", "QW", "MX", "IX", "QX"}) {
        for (const ReadBlock& block : blocks) {
            if (block.area == QLatin1String(area)) stations[block.station].push_back(block);
        }
    }
    return stations;
}

int functionOf(const ReadBlock& block)
{
    return block.area.startsWith(QLatin1Char('I')) ? 4 : 3;
}

int lastNumberOf(const QString& area)
{
    if (isBitArea(area)) return area == QLatin1String("MX") ? 65535 : 4095;
    return area == QLatin1String("MW") ? 7095 : 255;
}

/// A group of bits has its fixed length. Other blocks may reach the end of their area.
bool cannotBeLonger(const ReadBlock& block)
{
    return isBitArea(block.area) || block.number + block.count > lastNumberOf(block.area) - 2;
}

/// Expects that no block has the length of the block before it, unless neither block can be longer.
void expectNeighboursToDiffer(const std::vector<ReadBlock>& blocks)
{
    for (const auto& [station, polled] : asPolled(blocks)) {
        for (size_t i = 0; i < polled.size() && polled.size() > 1; ++i) {
            const ReadBlock& block = polled[i];
            const ReadBlock& next = polled[(i + 1) % polled.size()];
            const bool isAlike =
                functionOf(block) == functionOf(next) && registersOf(block) == registersOf(next);
            if (!isAlike || block.count >= NEARLY_FULL) continue;
            ASSERT_TRUE(cannotBeLonger(block) && cannotBeLonger(next))
                << station << ": " << block.number << " and " << next.number;
        }
    }
}

} // namespace

TEST(PlanReads, NeighboursDifferAndEachTagIsReadOnce)
{
    std::mt19937 random(21);
    for (int i = 0; i < 2000; ++i) {
        const std::vector<Tag> tags = randomTags(random);
        const std::vector<ReadBlock> blocks = planFor(tags);
        expectAllRead(tags, blocks, MOST_WORDS);
        expectNeighboursToDiffer(blocks);
        if (testing::Test::HasFatalFailure()) FAIL() << "plan " << i;
    }
}

TEST(PlanReads, DoNotPassTheEndOfAnArea)
{
    std::mt19937 random(22);
    for (int i = 0; i < 2000; ++i) {
        for (const ReadBlock& block : planFor(randomTags(random))) {
            ASSERT_LE(block.number + block.count - 1, lastNumberOf(block.area)) << i;
        }
    }
}

TEST(PlanReads, OfManyBlocksAreAtMostFourPercentLongerThanTheShortest)
{
    enum { MANY = 10 };
    std::mt19937 random(23);
    double longest = 1;
    int plans = 0;
    for (int i = 0; i < 2000; ++i) {
        const std::vector<Tag> tags = randomTags(random);
        if (shortestReads(tags, costOfLine(), MOST_WORDS).size() < MANY) continue;
        longest = std::max(longest, timesAsLong(tags));
        ++plans;
    }
    std::printf("%d plans with neighbours that differ are at most %.2f %% longer\n", plans,
                100 * (longest - 1));
    EXPECT_GT(plans, 1000);
    EXPECT_GT(longest, 1.001);
    EXPECT_LE(longest, 1.04);
}

// 7886 microseconds a request, 521 a word.
TEST(PlanReads, OfScatteredWordsMakeEverySecondBlockAWordLonger)
{
    EXPECT_DOUBLE_EQ((20 * 7886.0 + 30 * 521) / (20 * (7886 + 521)),
                     timesAsLong(words(3000, 20, 200)));
}

TEST(PlanReads, OfThreeScatteredWordsTakeThreeSpareWords)
{
    EXPECT_DOUBLE_EQ((3 * 7886.0 + 6 * 521) / (3 * (7886 + 521)), timesAsLong(words(3000, 3, 200)));
}

TEST(PlanReads, OfTwoFullBlocksAreThreeDifferentBlocks)
{
    const std::vector<Tag> tags = words(3000, 250);
    EXPECT_EQ(2u, shortestReads(tags, costOfLine(), MOST_WORDS).size());
    const std::vector<ReadBlock> blocks = planFor(tags);
    EXPECT_EQ(3u, blocks.size());
    expectAllRead(tags, blocks, MOST_WORDS);
    expectNeighboursToDiffer(blocks);
    // The third block adds a request and one or two words to two requests and 250 words.
    EXPECT_GT(timesAsLong(tags), 1.05);
    EXPECT_LT(timesAsLong(tags), 1.07);
}

TEST(PlanReads, OfSixteenFullBlocksAreSeventeenDifferentBlocks)
{
    const std::vector<Tag> tags = words(3000, 2000);
    const std::vector<ReadBlock> blocks = planFor(tags);
    EXPECT_EQ(17u, blocks.size());
    expectAllRead(tags, blocks, MOST_WORDS);
    std::vector<ReadBlock> again = blocks;
    EXPECT_EQ(0, differNeighbours(again, MOST_WORDS));
    EXPECT_LE(timesAsLong(tags), 1.02);
}

TEST(PlanReads, KeepTwoFullBlocksWhenAFenceCostsNoMoreThanARequest)
{
    WireCost network;
    network.request = 1000;
    std::vector<Tag> tags = words(3000, 250);
    tags.push_back(wordTag(5, Tag::UINT16, "IW"));
    const std::vector<ReadBlock> blocks = planReads(tags, network, MOST_WORDS);
    ASSERT_EQ(3u, blocks.size());
    EXPECT_EQ(125, blocks[1].count);
    EXPECT_EQ(125, blocks[2].count);
}

TEST(PlanReads, OfASingleBlockAreUnchanged)
{
    EXPECT_EQ(1.0, timesAsLong(words(3000, 125)));
    EXPECT_EQ(1.0, timesAsLong(words(3000, 1)));
}

TEST(PlanReads, OfScatteredBitsAreGroupsOf16)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 10; ++i)
        tags.push_back(bitTag("MX", 3000 + 16 * 200 * i));
    for (const ReadBlock& block : planFor(tags))
        EXPECT_EQ(16, block.count);
    EXPECT_EQ(1.0, timesAsLong(tags));
}

TEST(PlanReads, LimitTheGapsAndNotTheSpareWords)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 10; ++i)
        tags.push_back(wordTag(3000 + 2 * i));
    const std::vector<ReadBlock> blocks = planReads(tags, costOfLine(), MOST_WORDS, 0);
    ASSERT_EQ(10u, blocks.size());
    for (const ReadBlock& block : blocks)
        EXPECT_EQ(1, block.count - block.spare);
    expectNeighboursToDiffer(blocks);
}
