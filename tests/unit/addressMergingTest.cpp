#include "addressMerging.h"

#include "driverFixture.h"
#include "listTexts.h"

namespace {

enum { CYCLE = 1, RECIPE = 2 };

struct CycleRow
{
    int mergeLimit;
    const char* keys;
    const char* blocks;
};

struct RecipeRow
{
    int mergeLimit;
    const char* keys;
    const char* blocks;
    std::vector<int> starts; ///< number of the key that opened each block
};

const CycleRow CYCLES[] = {
    // Words at different addresses stay two blocks.
    {32, "1 IW 10 x2, 1 IW 12 x2", "1 IW 10 x2, 1 IW 12 x2"},
    // Words at one address become the longer block, unless it passes the merge limit.
    {5, "1 IW 10 x2, 1 IW 10 x5", "1 IW 10 x5"},
    {5, "1 IW 10 x5, 1 IW 10 x2", "1 IW 10 x5"},
    {4, "1 IW 10 x2, 1 IW 10 x5", "1 IW 10 x2, 1 IW 10 x5"},
    // Adjacent bits become one block, within their group of sixteen.
    {32, "1 IX 3 x1, 1 IX 4 x1", "1 IX 3 x2"},
    {32, "1 IX 14 x1, 1 IX 15 x1", "1 IX 14 x2"},
    {32, "1 IX 15 x1, 1 IX 16 x1", "1 IX 15 x1, 1 IX 16 x1"},
    // Markers on both sides of eight join in the second pass only.
    {2, "1 MX 3007 x1, 1 MX 3008 x1", "1 MX 3007 x2"},
    {1, "1 MX 3007 x1, 1 MX 3008 x1", "1 MX 3007 x1, 1 MX 3008 x1"},
    // Markers on both sides of sixteen stay two blocks.
    {32, "1 MX 3014 x1, 1 MX 3015 x1", "1 MX 3014 x2"},
    {32, "1 MX 3015 x1, 1 MX 3016 x1", "1 MX 3015 x1, 1 MX 3016 x1"},
    // A gap is read along.
    {32, "1 QX 0 x1, 1 QX 9 x1", "1 QX 0 x10"},
    // A span beyond the merge limit opens a new block.
    {5, "1 IX 0 x1, 1 IX 1 x1, 1 IX 2 x1, 1 IX 3 x1, 1 IX 4 x1", "1 IX 0 x5"},
    {4, "1 IX 0 x1, 1 IX 1 x1, 1 IX 2 x1, 1 IX 3 x1, 1 IX 4 x1", "1 IX 0 x4, 1 IX 4 x1"},
    // The second pass keeps the merge limit too: the gap is 2, the span 5.
    {5, "1 IX 0 x1, 1 IX 1 x1, 1 IX 4 x1", "1 IX 0 x5"},
    {4, "1 IX 0 x1, 1 IX 1 x1, 1 IX 4 x1", "1 IX 0 x2, 1 IX 4 x1"},
    // Neighbours join first: read along, the gap at 1 would cut their block at 4.
    {4, "1 IX 0 x1, 1 IX 2 x1, 1 IX 3 x1, 1 IX 4 x1, 1 IX 5 x1", "1 IX 0 x1, 1 IX 2 x4"},
    // The second pass joins blocks of the first.
    {32, "1 IX 0 x1, 1 IX 1 x1, 1 IX 5 x1, 1 IX 6 x2, 1 IX 16 x1", "1 IX 0 x8, 1 IX 16 x1"},
    // A key inside a block adds nothing.
    {32, "1 IX 0 x8, 1 IX 2 x1", "1 IX 0 x8"},
    // A key longer than the merge limit stays whole.
    {4, "1 MW 3000 x100", "1 MW 3000 x100"},
    {4, "1 IX 0 x100, 1 IX 101 x1", "1 IX 0 x100, 1 IX 101 x1"},
    // Stations never share a block.
    {32, "2 IX 0 x1, 1 IX 0 x1", "1 IX 0 x1, 2 IX 0 x1"},
    // Blocks come in the order of station, area and address.
    {32,
     "2 MW 3000 x1, 1 QX 0 x1, 1 IX 40 x1, 1 MX 3000 x1, 1 QW 0 x1, 1 IX 8 x1, 1 IW 0 x1, "
     "1 MW 3000 x1, 0 QX 4095 x1",
     "0 QX 4095 x1, 1 MW 3000 x1, 1 IW 0 x1, 1 QW 0 x1, 1 MX 3000 x1, 1 IX 8 x1, 1 IX 40 x1, "
     "1 QX 0 x1, 2 MW 3000 x1"},
    // A weight that wraps around sorts as a signed number: 5462 x 6 x 65535 is the first station's
    // weight beyond 2^31.
    {32, "5461 MW 3000 x1, 1 MW 3000 x1", "1 MW 3000 x1, 5461 MW 3000 x1"},
    {32, "1 MW 3000 x1, 5462 MW 3000 x1", "5462 MW 3000 x1, 1 MW 3000 x1"},
    // Keys of unknown areas are dropped.
    {32,
     "1 MW_BIT 3000 x1, 1 ZZ 0 x1, 1 ZZ 0 x1, 1 IX 0 x1, 1 mw 0 x1, 1  0 x1, 1 IX_bit 0 x1, 1 MW_W "
     "0 x1",
     "1 IX 0 x1"},
    {32, "1 ZZ 0 x1, 1 YY 0 x1", ""},
    {32, "", ""},
    // A limit of zero joins only keys without units, a negative limit nothing.
    {0, "1 IX 0 x1, 1 IX 1 x1", "1 IX 0 x1, 1 IX 1 x1"},
    {0, "1 IX 5 x1, 1 IX 5 x1", "1 IX 5 x1, 1 IX 5 x1"},
    {0, "1 IX 5 x0, 1 IX 5 x0", "1 IX 5 x0"},
    {-1, "1 IX 0 x1, 1 IX 0 x1", "1 IX 0 x1, 1 IX 0 x1"},
    {-1, "1 IX 5 x0, 1 IX 5 x0", "1 IX 5 x0, 1 IX 5 x0"},
    // A negative count is a gap that the second pass reads along.
    {32, "1 IX 5 x-3, 1 IX 5 x1", "1 IX 5 x1"},
    // The largest counts stay blocks of their own.
    {32, "1 IX 7 x2147483647, 1 IX 7 x2147483647", "1 IX 7 x2147483647, 1 IX 7 x2147483647"},
    {32, "1 IW 7 x2147483647", "1 IW 7 x2147483647"},
};

const RecipeRow RECIPES[] = {
    {32,
     "1 IX 0 x1, 1 IX 1 x2, 1 IX 5 x1, 1 IX 16 x2",
     "1 IX 0 x3, 1 IX 5 x1, 1 IX 16 x2",
     {0, 2, 3}},
    // The merge limit opens blocks too.
    {2, "1 IX 0 x1, 1 IX 1 x1, 1 IX 2 x2, 1 IX 4 x1", "1 IX 0 x2, 1 IX 2 x2, 1 IX 4 x1", {0, 2, 3}},
    // No gap is read along.
    {32, "1 MX 3006 x1, 1 MX 3007 x1", "1 MX 3006 x2", {0}},
    {32, "1 MX 3007 x1, 1 MX 3008 x1", "1 MX 3007 x1, 1 MX 3008 x1", {0, 1}},
    {32, "1 QX 0 x1, 1 QX 1 x1", "1 QX 0 x2", {0}},
    {32, "1 QX 0 x1, 1 QX 2 x1", "1 QX 0 x1, 1 QX 2 x1", {0, 1}},
    // A recipe is neither sorted nor filtered.
    {32, "2 MW 3000 x1, 1 ZZ 0 x1, 1 IX 9 x1", "2 MW 3000 x1, 1 ZZ 0 x1, 1 IX 9 x1", {0, 1, 2}},
    // One key or none has one block start.
    {32, "1 IX 9 x1", "1 IX 9 x1", {0}},
    {32, "", "", {0}},
};

} // namespace

class AddressMerging : public DriverTest
{
protected:
    std::string merged(const char* line, int mergeLimit, int mode)
    {
        driver.mergeLimit = mergeLimit;
        driver.blockStartIndex.clear();
        driver.blockStartIndex.append(42);
        QList<KEY_ADDRESS> keys = keysOf(line);
        addrMerge(keys, mode);
        return blockLine(keys);
    }
};

TEST_F(AddressMerging, ACycleIsSortedAndMergedAndLeavesTheBlockStartsAlone)
{
    for (const CycleRow& row : CYCLES) {
        SCOPED_TRACE(testing::Message() << row.keys << " up to " << row.mergeLimit);
        EXPECT_EQ(row.blocks, merged(row.keys, row.mergeLimit, CYCLE));
        EXPECT_EQ(std::vector<int>{42}, numbersOf(driver.blockStartIndex));
    }
}

TEST_F(AddressMerging, ARecipeNotesTheFirstKeyOfEachBlock)
{
    for (const RecipeRow& row : RECIPES) {
        SCOPED_TRACE(testing::Message() << row.keys << " up to " << row.mergeLimit);
        EXPECT_EQ(row.blocks, merged(row.keys, row.mergeLimit, RECIPE));
        EXPECT_EQ(row.starts, numbersOf(driver.blockStartIndex));
    }
}

TEST_F(AddressMerging, ABlockKeepsEveryFieldOfTheKeyThatOpenedIt)
{
    driver.mergeLimit = 32;
    KEY_ADDRESS opener = key(1, "IX", 0, 1, -1);
    opener.label = text("opener");
    opener.typeText = text("BOOL");
    opener.param1 = 11;
    opener.param2 = 12;
    opener.data[0] = 13;
    KEY_ADDRESS joining = key(1, "IX", 1, 1, 5);
    joining.label = text("joining");
    for (int mode : {CYCLE, RECIPE}) {
        SCOPED_TRACE(mode);
        QList<KEY_ADDRESS> keys{opener, joining};
        addrMerge(keys, mode);
        ASSERT_EQ(Texts{"1 IX 0 x2"}, blocksOf(keys));
        const KEY_ADDRESS& block = keys.at(0);
        EXPECT_EQ("opener", block.label.toStdString());
        EXPECT_EQ("BOOL", block.typeText.toStdString());
        EXPECT_EQ(11, block.param1);
        EXPECT_EQ(12, block.param2);
        EXPECT_EQ(-1, block.unitMode);
        EXPECT_EQ(13, block.data[0]);
    }
}
