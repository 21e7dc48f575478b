#include "plan/neighbours.h"

#include "readPlanBench.h"

#include <gtest/gtest.h>

// Blocks are written as areas, numbers and counts; the driver polls MW, IW, QW, MX, IX, QX in this
// order and then begins anew. Inputs (IW, IX) are read by another function than all others.

namespace {

ReadBlock blockAt(const char* area, int number, int count, int station = 1)
{
    ReadBlock block;
    block.station = station;
    block.area = QLatin1String(area);
    block.number = number;
    block.count = count;
    block.tags = {number};
    return block;
}

/// The counts after neighbours were made to differ.
/// @param alike  how many are said to be like the one before
std::vector<int> countsOf(std::vector<ReadBlock> blocks, int alike = 0, int mostWords = MOST_WORDS)
{
    EXPECT_EQ(alike, differNeighbours(blocks, mostWords));
    std::vector<int> counts;
    for (const ReadBlock& block : blocks)
        counts.push_back(block.count);
    return counts;
}

using Counts = std::vector<int>;

} // namespace

TEST(Neighbours, OfAnEmptyPlanOrASingleBlockNeedNotDiffer)
{
    EXPECT_EQ(Counts(), countsOf({}));
    EXPECT_EQ((Counts{1}), countsOf({blockAt("MW", 3000, 1)}));
}

TEST(Neighbours, ThatDifferAlreadyAreLeftAlone)
{
    EXPECT_EQ((Counts{1, 2}), countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 2)}));
}

TEST(Neighbours, OfTwoAlikeBlocksOneIsAWordLonger)
{
    EXPECT_EQ((Counts{1, 2}), countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1)}));
}

TEST(Neighbours, TheLastBlockIsFollowedByTheFirst)
{
    // 3 words, 4 words and 3 words: the last differs from the one before, not from the first.
    EXPECT_EQ((Counts{5, 4, 3}),
              countsOf({blockAt("MW", 3000, 3), blockAt("MW", 3100, 4), blockAt("MW", 3200, 3)}));
}

TEST(Neighbours, OfThreeAlikeBlocksAllDiffer)
{
    EXPECT_EQ((Counts{3, 2, 1}),
              countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1), blockAt("MW", 3200, 1)}));
}

TEST(Neighbours, AlternateInALongRowOfAlikeBlocks)
{
    EXPECT_EQ((Counts{1, 2, 1, 2, 1, 2}),
              countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1), blockAt("MW", 3200, 1),
                        blockAt("MW", 3300, 1), blockAt("MW", 3400, 1), blockAt("MW", 3500, 1)}));
}

TEST(Neighbours, ABlockThatWouldBeLikeItsOtherNeighbourIsTwoWordsLonger)
{
    EXPECT_EQ((Counts{1, 3, 2}),
              countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1), blockAt("MW", 3200, 2)}));
}

TEST(Neighbours, FollowOneAnotherInTheDriversOrderOfAreas)
{
    // By name QW would follow MW; for the driver MW follows QW, so MW is the later one of the two.
    EXPECT_EQ((Counts{5, 3, 2}),
              countsOf({blockAt("IW", 0, 5), blockAt("MW", 3000, 2), blockAt("QW", 0, 2)}));
    // By name MX stands between MW and QW; for the driver it follows QW.
    EXPECT_EQ((Counts{2, 16, 3}),
              countsOf({blockAt("MW", 3000, 2), blockAt("MX", 3000, 16), blockAt("QW", 0, 2)}));
}

TEST(Neighbours, AreOrderedByNumberWithinAnAreaWhateverOrderTheyComeIn)
{
    // 3000: 1, 3100: 1, 3200: 5; the second one is the later one of the two.
    EXPECT_EQ((Counts{5, 2, 1}),
              countsOf({blockAt("MW", 3200, 5), blockAt("MW", 3100, 1), blockAt("MW", 3000, 1)}));
}

TEST(Neighbours, ThatAreReadByAnotherFunctionDifferAnyway)
{
    EXPECT_EQ((Counts{1, 1}), countsOf({blockAt("MW", 3000, 1), blockAt("IW", 0, 1)}));
    EXPECT_EQ((Counts{16, 16}), countsOf({blockAt("MX", 3000, 16), blockAt("IX", 0, 16)}));
    EXPECT_EQ((Counts{1, 2}), countsOf({blockAt("MW", 3000, 1), blockAt("QW", 0, 1)}));
}

TEST(Neighbours, OfOtherStationsNeedNotDiffer)
{
    EXPECT_EQ((Counts{1, 1}), countsOf({blockAt("MW", 3000, 1, 1), blockAt("MW", 3000, 1, 2)}));
    EXPECT_EQ((Counts{1, 4, 2, 5}),
              countsOf({blockAt("MW", 3000, 1, 1), blockAt("MW", 3000, 4, 2),
                        blockAt("MW", 3100, 1, 1), blockAt("MW", 3100, 4, 2)}));
}

TEST(Neighbours, GroupsOfBitsHaveOneLengthAndStayAlike)
{
    EXPECT_EQ((Counts{16, 16}), countsOf({blockAt("MX", 3000, 16), blockAt("MX", 3016, 16)}, 2));
    // 8 bits are read as one register too.
    EXPECT_EQ((Counts{16, 8}), countsOf({blockAt("MX", 65512, 16), blockAt("MX", 65528, 8)}, 2));
}

TEST(Neighbours, AWordBesideAGroupOfBitsIsTheOneThatIsLonger)
{
    EXPECT_EQ((Counts{2, 16}), countsOf({blockAt("MW", 3000, 1), blockAt("MX", 3000, 16)}));
    EXPECT_EQ(
        (Counts{16, 2, 16}),
        countsOf({blockAt("MX", 3000, 16), blockAt("MW", 3000, 1), blockAt("MX", 3016, 16)}, 1));
}

TEST(Neighbours, AtTheEndOfAnAreaTheOtherBlockIsLonger)
{
    EXPECT_EQ((Counts{2, 1}), countsOf({blockAt("MW", 3000, 1), blockAt("MW", 7095, 1)}));
    EXPECT_EQ((Counts{2, 1}), countsOf({blockAt("QW", 0, 1), blockAt("QW", 255, 1)}));
    EXPECT_EQ((Counts{2, 1}), countsOf({blockAt("IW", 0, 1), blockAt("IW", 255, 1)}));
    EXPECT_EQ((Counts{1, 1}), countsOf({blockAt("MW", 7095, 1), blockAt("QW", 255, 1)}, 2));
}

TEST(Neighbours, AreNotLongerThanABlockMayBe)
{
    EXPECT_EQ((Counts{124, 125}), countsOf({blockAt("MW", 3000, 124), blockAt("MW", 3200, 124)}));
    EXPECT_EQ((Counts{125, 125}),
              countsOf({blockAt("MW", 3000, 125), blockAt("MW", 3200, 125)}, 2));
    EXPECT_EQ((Counts{10, 10}),
              countsOf({blockAt("MW", 3000, 10), blockAt("MW", 3200, 10)}, 2, 10));
}

TEST(Neighbours, KeepTheirStartsAndTheirTags)
{
    std::vector<ReadBlock> blocks = {blockAt("MW", 3000, 1), blockAt("MW", 3100, 1)};
    differNeighbours(blocks, MOST_WORDS);
    EXPECT_EQ(3100, blocks[1].number);
    EXPECT_EQ(std::vector<int>{3100}, blocks[1].tags);
}

TEST(Neighbours, RegistersOfABlockAreItsWordsOrThoseThatHoldItsBits)
{
    EXPECT_EQ(7, registersOf(blockAt("QW", 0, 7)));
    EXPECT_EQ(1, registersOf(blockAt("IX", 0, 16)));
    EXPECT_EQ(1, registersOf(blockAt("MX", 65528, 8)));
}
