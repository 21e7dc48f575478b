#include "plan/neighbours.h"

#include "readPlanBench.h"

#include <gtest/gtest.h>

// A block is written as area, number and count. The driver polls the areas in the order MW, IW, QW,
// MX, IX, QX and then begins anew. Inputs (IW, IX) have a different read function.

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

/// The counts of the blocks after differNeighbours().
/// @param alike  expected number of blocks like the block before them
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

TEST(Neighbours, OfEmptyAndSinglePlansStayUnchanged)
{
    EXPECT_EQ(Counts(), countsOf({}));
    EXPECT_EQ((Counts{1}), countsOf({blockAt("MW", 3000, 1)}));
}

TEST(Neighbours, ThatDifferStayUnchanged)
{
    EXPECT_EQ((Counts{1, 2}), countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 2)}));
}

TEST(Neighbours, OneOfTwoEqualBlocksBecomesAWordLonger)
{
    EXPECT_EQ((Counts{1, 2}), countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1)}));
}

TEST(Neighbours, IncludeTheLastAndTheFirstBlock)
{
    // 3, 4 and 3 words: the last block differs from the second, but not from the first.
    EXPECT_EQ((Counts{5, 4, 3}),
              countsOf({blockAt("MW", 3000, 3), blockAt("MW", 3100, 4), blockAt("MW", 3200, 3)}));
}

TEST(Neighbours, ThreeEqualBlocksGetThreeLengths)
{
    EXPECT_EQ((Counts{3, 2, 1}),
              countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1), blockAt("MW", 3200, 1)}));
}

TEST(Neighbours, ManyEqualBlocksAlternate)
{
    EXPECT_EQ((Counts{1, 2, 1, 2, 1, 2}),
              countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1), blockAt("MW", 3200, 1),
                        blockAt("MW", 3300, 1), blockAt("MW", 3400, 1), blockAt("MW", 3500, 1)}));
}

TEST(Neighbours, BlockBetweenTwoLengthsBecomesTwoWordsLonger)
{
    EXPECT_EQ((Counts{1, 3, 2}),
              countsOf({blockAt("MW", 3000, 1), blockAt("MW", 3100, 1), blockAt("MW", 3200, 2)}));
}

TEST(Neighbours, FollowTheDriversOrderOfAreas)
{
    // By name QW follows MW. In the driver's order MW follows QW, so MW is the later block.
    EXPECT_EQ((Counts{5, 3, 2}),
              countsOf({blockAt("IW", 0, 5), blockAt("MW", 3000, 2), blockAt("QW", 0, 2)}));
    // By name MX is between MW and QW. In the driver's order it follows QW.
    EXPECT_EQ((Counts{2, 16, 3}),
              countsOf({blockAt("MW", 3000, 2), blockAt("MX", 3000, 16), blockAt("QW", 0, 2)}));
}

TEST(Neighbours, AreOrderedByNumberWithinAnArea)
{
    // By number: 1 word at 3000, 1 at 3100, 5 at 3200. The block at 3100 is the later of the equal
    // blocks.
    EXPECT_EQ((Counts{5, 2, 1}),
              countsOf({blockAt("MW", 3200, 5), blockAt("MW", 3100, 1), blockAt("MW", 3000, 1)}));
}

TEST(Neighbours, WithDifferentFunctionsDiffer)
{
    EXPECT_EQ((Counts{1, 1}), countsOf({blockAt("MW", 3000, 1), blockAt("IW", 0, 1)}));
    EXPECT_EQ((Counts{16, 16}), countsOf({blockAt("MX", 3000, 16), blockAt("IX", 0, 16)}));
    EXPECT_EQ((Counts{1, 2}), countsOf({blockAt("MW", 3000, 1), blockAt("QW", 0, 1)}));
}

TEST(Neighbours, OfDifferentStationsStayUnchanged)
{
    EXPECT_EQ((Counts{1, 1}), countsOf({blockAt("MW", 3000, 1, 1), blockAt("MW", 3000, 1, 2)}));
    EXPECT_EQ((Counts{1, 4, 2, 5}),
              countsOf({blockAt("MW", 3000, 1, 1), blockAt("MW", 3000, 4, 2),
                        blockAt("MW", 3100, 1, 1), blockAt("MW", 3100, 4, 2)}));
}

TEST(Neighbours, GroupsOfBitsStayEqual)
{
    EXPECT_EQ((Counts{16, 16}), countsOf({blockAt("MX", 3000, 16), blockAt("MX", 3016, 16)}, 2));
    // 8 bits are read as one register too.
    EXPECT_EQ((Counts{16, 8}), countsOf({blockAt("MX", 65512, 16), blockAt("MX", 65528, 8)}, 2));
}

TEST(Neighbours, WordBesideAGroupOfBitsBecomesLonger)
{
    EXPECT_EQ((Counts{2, 16}), countsOf({blockAt("MW", 3000, 1), blockAt("MX", 3000, 16)}));
    EXPECT_EQ(
        (Counts{16, 2, 16}),
        countsOf({blockAt("MX", 3000, 16), blockAt("MW", 3000, 1), blockAt("MX", 3016, 16)}, 1));
}

TEST(Neighbours, BlockAtTheEndOfAnAreaStaysUnchanged)
{
    EXPECT_EQ((Counts{2, 1}), countsOf({blockAt("MW", 3000, 1), blockAt("MW", 7095, 1)}));
    EXPECT_EQ((Counts{2, 1}), countsOf({blockAt("QW", 0, 1), blockAt("QW", 255, 1)}));
    EXPECT_EQ((Counts{2, 1}), countsOf({blockAt("IW", 0, 1), blockAt("IW", 255, 1)}));
    EXPECT_EQ((Counts{1, 1}), countsOf({blockAt("MW", 7095, 1), blockAt("QW", 255, 1)}, 2));
}

TEST(Neighbours, AreNotLongerThanTheLimit)
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

TEST(Neighbours, RegistersOfABlockAreItsWordsOrGroups)
{
    EXPECT_EQ(7, registersOf(blockAt("QW", 0, 7)));
    EXPECT_EQ(1, registersOf(blockAt("IX", 0, 16)));
    EXPECT_EQ(1, registersOf(blockAt("MX", 65528, 8)));
}
