#include "plan/neighbours.h"
#include "plan/readPlan.h"

#include "readPlanBench.h"
#include "wire/lineTiming.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <random>

// Plans whose neighbours differ, and what that costs: a line of 38400 baud and stations that begin
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

/// Tags anywhere in the word areas of two stations.
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
        const Tag::Type type = random() % 2 == 0 ? Tag::INT16 : Tag::FLOAT32;
        const int last = type == Tag::INT16 ? 1 : 2;
        const int number = int(area.first + unsigned(random()) % count);
        tags.push_back(wordTag(std::min(number, int(area.first + area.count) - last), type,
                               area.area, 1 + int(random() % 2)));
    }
    return tags;
}

/// In the driver's order, which is not that of the plan.
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

bool endsItsArea(const ReadBlock& block)
{
    const int last = block.area == QLatin1String("MW") ? 7095 : 255;
    return block.number + block.count > last - 2;
}

/// No block has the length of the one before it, but where neither could be made longer.
void expectNeighboursToDiffer(const std::vector<ReadBlock>& blocks)
{
    for (const auto& [station, polled] : asPolled(blocks)) {
        for (size_t i = 0; i < polled.size() && polled.size() > 1; ++i) {
            const ReadBlock& block = polled[i];
            const ReadBlock& next = polled[(i + 1) % polled.size()];
            const bool isAlike = functionOf(block) == functionOf(next) && block.count == next.count;
            if (!isAlike || block.count >= NEARLY_FULL) continue;
            ASSERT_TRUE(endsItsArea(block) && endsItsArea(next))
                << station << ": " << block.number << " and " << next.number;
        }
    }
}

} // namespace

TEST(PlanReads, NeighboursDifferAndEveryTagIsRead)
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

TEST(PlanReads, TakeNoBlockPastTheEndOfItsArea)
{
    std::mt19937 random(22);
    for (int i = 0; i < 2000; ++i) {
        for (const ReadBlock& block : planFor(randomTags(random))) {
            const int last = block.area == QLatin1String("MW") ? 7095 : 255;
            ASSERT_LE(block.number + block.count - 1, last) << i;
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
TEST(PlanReads, OfWordsFarApartAreEveryOtherOneAWordLonger)
{
    EXPECT_DOUBLE_EQ((20 * 7886.0 + 30 * 521) / (20 * (7886 + 521)),
                     timesAsLong(words(3000, 20, 200)));
}

TEST(PlanReads, OfThreeWordsFarApartTakeThreeWordsMore)
{
    EXPECT_DOUBLE_EQ((3 * 7886.0 + 6 * 521) / (3 * (7886 + 521)), timesAsLong(words(3000, 3, 200)));
}

TEST(PlanReads, OfTwoFullBlocksAreThreeThatDiffer)
{
    const std::vector<Tag> tags = words(3000, 250);
    EXPECT_EQ(2u, shortestReads(tags, costOfLine(), MOST_WORDS).size());
    const std::vector<ReadBlock> blocks = planFor(tags);
    EXPECT_EQ(3u, blocks.size());
    expectAllRead(tags, blocks, MOST_WORDS);
    expectNeighboursToDiffer(blocks);
    // A request and a word or two, of two requests and 250 words.
    EXPECT_GT(timesAsLong(tags), 1.05);
    EXPECT_LT(timesAsLong(tags), 1.07);
}

TEST(PlanReads, OfSixteenFullBlocksAreSeventeenThatDiffer)
{
    const std::vector<Tag> tags = words(3000, 2000);
    const std::vector<ReadBlock> blocks = planFor(tags);
    EXPECT_EQ(17u, blocks.size());
    expectAllRead(tags, blocks, MOST_WORDS);
    std::vector<ReadBlock> again = blocks;
    EXPECT_EQ(0, differNeighbours(again, MOST_WORDS));
    EXPECT_LE(timesAsLong(tags), 1.02);
}

TEST(PlanReads, KeepTwoFullBlocksInARowWhereAFenceBetweenThemCostsNoMoreThanARequest)
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

TEST(PlanReads, OfASingleBlockAreTheShortest)
{
    EXPECT_EQ(1.0, timesAsLong(words(3000, 125)));
    EXPECT_EQ(1.0, timesAsLong(words(3000, 1)));
}

TEST(PlanReads, OfBitsStayGroups)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 10; ++i)
        tags.push_back(wordTag(3000 + 16 * i, Tag::BOOL, "MX"));
    for (const ReadBlock& block : planFor(tags))
        EXPECT_EQ(16, block.count);
    EXPECT_EQ(1.0, timesAsLong(tags));
}
