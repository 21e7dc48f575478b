#include "addressMerging.h"

#include "driverFixture.h"
#include "listTexts.h"

#include <climits>

namespace {

Texts merged(QList<KEY_ADDRESS> keys, int mode)
{
    addrMerge(keys, mode);
    return blocksOf(keys);
}

Texts cycleBlocks(const QList<KEY_ADDRESS>& keys)
{
    return merged(keys, 1);
}

Texts recipeBlocks(const QList<KEY_ADDRESS>& keys)
{
    return merged(keys, 2);
}

QList<KEY_ADDRESS> singleBits(const char* area, std::initializer_list<int> addrs)
{
    QList<KEY_ADDRESS> keys;
    for (int addr : addrs)
        keys.append(key(1, area, addr, 1));
    return keys;
}

} // namespace

class AddressMerging : public DriverTest
{
protected:
    AddressMerging()
    {
        driver.mergeLimit = 32;
    }
};

TEST_F(AddressMerging, WordsAtDifferentAddressesStayTwoBlocks)
{
    EXPECT_EQ((Texts{"1 IW 10 x2", "1 IW 12 x2"}),
              cycleBlocks({key(1, "IW", 10, 2), key(1, "IW", 12, 2)}));
}

TEST_F(AddressMerging, WordsAtOneAddressBecomeTheLongerBlock)
{
    driver.mergeLimit = 5;
    EXPECT_EQ(Texts{"1 IW 10 x5"}, cycleBlocks({key(1, "IW", 10, 2), key(1, "IW", 10, 5)}));
    EXPECT_EQ(Texts{"1 IW 10 x5"}, cycleBlocks({key(1, "IW", 10, 5), key(1, "IW", 10, 2)}));
}

TEST_F(AddressMerging, WordsAtOneAddressStayApartBeyondTheMergeLimit)
{
    driver.mergeLimit = 4;
    EXPECT_EQ((Texts{"1 IW 10 x2", "1 IW 10 x5"}),
              cycleBlocks({key(1, "IW", 10, 2), key(1, "IW", 10, 5)}));
}

TEST_F(AddressMerging, AdjacentBitsBecomeOneBlock)
{
    EXPECT_EQ(Texts{"1 IX 3 x2"}, cycleBlocks(singleBits("IX", {3, 4})));
}

TEST_F(AddressMerging, BitsOfDifferentGroupsStayTwoBlocks)
{
    EXPECT_EQ(Texts{"1 IX 14 x2"}, cycleBlocks(singleBits("IX", {14, 15})));
    EXPECT_EQ((Texts{"1 IX 15 x1", "1 IX 16 x1"}), cycleBlocks(singleBits("IX", {15, 16})));
}

TEST_F(AddressMerging, MarkersOnBothSidesOfEightJoinInTheSecondPass)
{
    driver.mergeLimit = 2;
    EXPECT_EQ(Texts{"1 MX 3007 x2"}, cycleBlocks(singleBits("MX", {3007, 3008})));
    driver.mergeLimit = 1;
    EXPECT_EQ((Texts{"1 MX 3007 x1", "1 MX 3008 x1"}), cycleBlocks(singleBits("MX", {3007, 3008})));
}

TEST_F(AddressMerging, MarkersOnBothSidesOfSixteenStayTwoBlocks)
{
    EXPECT_EQ(Texts{"1 MX 3014 x2"}, cycleBlocks(singleBits("MX", {3014, 3015})));
    EXPECT_EQ((Texts{"1 MX 3015 x1", "1 MX 3016 x1"}), cycleBlocks(singleBits("MX", {3015, 3016})));
}

TEST_F(AddressMerging, AGapIsReadAlongInACycle)
{
    EXPECT_EQ(Texts{"1 QX 0 x10"}, cycleBlocks(singleBits("QX", {0, 9})));
}

TEST_F(AddressMerging, ASpanBeyondTheMergeLimitOpensANewBlock)
{
    driver.mergeLimit = 5;
    EXPECT_EQ(Texts{"1 IX 0 x5"}, cycleBlocks(singleBits("IX", {0, 1, 2, 3, 4})));
    driver.mergeLimit = 4;
    EXPECT_EQ((Texts{"1 IX 0 x4", "1 IX 4 x1"}), cycleBlocks(singleBits("IX", {0, 1, 2, 3, 4})));
}

TEST_F(AddressMerging, TheSecondPassKeepsTheMergeLimitToo)
{
    // The gap is 2, the span 5.
    driver.mergeLimit = 5;
    EXPECT_EQ(Texts{"1 IX 0 x5"}, cycleBlocks(singleBits("IX", {0, 1, 4})));
    driver.mergeLimit = 4;
    EXPECT_EQ((Texts{"1 IX 0 x2", "1 IX 4 x1"}), cycleBlocks(singleBits("IX", {0, 1, 4})));
}

TEST_F(AddressMerging, TheSecondPassCanJoinBlocksOfTheFirst)
{
    EXPECT_EQ((Texts{"1 IX 0 x8", "1 IX 16 x1"}),
              cycleBlocks(singleBits("IX", {0, 1, 2, 5, 6, 7, 16})));
}

TEST_F(AddressMerging, AKeyInsideABlockAddsNothing)
{
    EXPECT_EQ(Texts{"1 IX 0 x8"}, cycleBlocks({key(1, "IX", 0, 8), key(1, "IX", 2, 1)}));
}

TEST_F(AddressMerging, AKeyLongerThanTheMergeLimitStaysWhole)
{
    driver.mergeLimit = 4;
    EXPECT_EQ(Texts{"1 MW 3000 x100"}, cycleBlocks({key(1, "MW", 3000, 100)}));
    EXPECT_EQ((Texts{"1 IX 0 x100", "1 IX 101 x1"}),
              cycleBlocks({key(1, "IX", 0, 100), key(1, "IX", 101, 1)}));
}

TEST_F(AddressMerging, StationsNeverShareABlock)
{
    EXPECT_EQ((Texts{"1 IX 0 x1", "2 IX 0 x1"}),
              cycleBlocks({key(2, "IX", 0, 1), key(1, "IX", 0, 1)}));
}

TEST_F(AddressMerging, BlocksAreInOrderOfStationAreaAndAddress)
{
    const QList<KEY_ADDRESS> keys{
        key(2, "MW", 3000, 1), key(1, "QX", 0, 1),    key(1, "IX", 40, 1),
        key(1, "MX", 3000, 1), key(1, "QW", 0, 1),    key(1, "IX", 8, 1),
        key(1, "IW", 0, 1),    key(1, "MW", 3000, 1), key(0, "QX", 4095, 1),
    };
    EXPECT_EQ((Texts{"0 QX 4095 x1", "1 MW 3000 x1", "1 IW 0 x1", "1 QW 0 x1", "1 MX 3000 x1",
                     "1 IX 8 x1", "1 IX 40 x1", "1 QX 0 x1", "2 MW 3000 x1"}),
              cycleBlocks(keys));
}

TEST_F(AddressMerging, AWeightThatWrapsAroundSortsAsASignedNumber)
{
    // 5462 x 6 x 65535 is the first station's weight beyond 2^31.
    EXPECT_EQ((Texts{"1 MW 3000 x1", "5461 MW 3000 x1"}),
              cycleBlocks({key(5461, "MW", 3000, 1), key(1, "MW", 3000, 1)}));
    EXPECT_EQ((Texts{"5462 MW 3000 x1", "1 MW 3000 x1"}),
              cycleBlocks({key(1, "MW", 3000, 1), key(5462, "MW", 3000, 1)}));
}

TEST_F(AddressMerging, KeysOfUnknownAreasAreDropped)
{
    const QList<KEY_ADDRESS> keys{
        key(1, "MW_BIT", 3000, 1), key(1, "ZZ", 0, 1), key(1, "ZZ", 0, 1),   key(1, "IX", 0, 1),
        key(1, "mw", 0, 1),        key(1, "", 0, 1),   key(1, "MW_W", 0, 1), key(1, "IX_bit", 0, 1),
    };
    EXPECT_EQ(Texts{"1 IX 0 x1"}, cycleBlocks(keys));
}

TEST_F(AddressMerging, ListsWithoutAKnownAreaBecomeEmpty)
{
    EXPECT_EQ(Texts{}, cycleBlocks({key(1, "ZZ", 0, 1), key(1, "YY", 0, 1)}));
    EXPECT_EQ(Texts{}, cycleBlocks({}));
}

TEST_F(AddressMerging, ABlockKeepsEveryFieldOfTheKeyThatOpenedIt)
{
    KEY_ADDRESS opener = key(1, "IX", 0, 1, -1);
    opener.label = text("opener");
    opener.typeText = text("BOOL");
    opener.param1 = 11;
    opener.param2 = 12;
    opener.data[0] = 13;
    KEY_ADDRESS joining = key(1, "IX", 1, 1, 5);
    joining.label = text("joining");
    for (int mode : {1, 2}) {
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

TEST_F(AddressMerging, ALimitOfZeroJoinsOnlyKeysWithoutUnits)
{
    driver.mergeLimit = 0;
    EXPECT_EQ((Texts{"1 IX 0 x1", "1 IX 1 x1"}), cycleBlocks(singleBits("IX", {0, 1})));
    EXPECT_EQ((Texts{"1 IX 5 x1", "1 IX 5 x1"}),
              cycleBlocks({key(1, "IX", 5, 1), key(1, "IX", 5, 1)}));
    EXPECT_EQ(Texts{"1 IX 5 x0"}, cycleBlocks({key(1, "IX", 5, 0), key(1, "IX", 5, 0)}));
}

TEST_F(AddressMerging, ANegativeLimitJoinsNothing)
{
    driver.mergeLimit = -1;
    EXPECT_EQ((Texts{"1 IX 0 x1", "1 IX 0 x1"}), cycleBlocks(singleBits("IX", {0, 0})));
    EXPECT_EQ((Texts{"1 IX 5 x0", "1 IX 5 x0"}),
              cycleBlocks({key(1, "IX", 5, 0), key(1, "IX", 5, 0)}));
}

TEST_F(AddressMerging, ANegativeCountIsAGapThatTheSecondPassReadsAlong)
{
    EXPECT_EQ(Texts{"1 IX 5 x1"}, cycleBlocks({key(1, "IX", 5, -3), key(1, "IX", 5, 1)}));
}

TEST_F(AddressMerging, TheLargestCountsStayBlocksOfTheirOwn)
{
    const std::string largest = "1 IX 7 x2147483647";
    EXPECT_EQ((Texts{largest, largest}),
              cycleBlocks({key(1, "IX", 7, INT_MAX), key(1, "IX", 7, INT_MAX)}));
    EXPECT_EQ(Texts{"1 IW 7 x2147483647"}, cycleBlocks({key(1, "IW", 7, INT_MAX)}));
}

TEST_F(AddressMerging, ACycleLeavesTheBlockStartsAlone)
{
    driver.blockStartIndex.append(42);
    cycleBlocks(singleBits("IX", {0, 20}));
    EXPECT_EQ(std::vector<int>{42}, numbersOf(driver.blockStartIndex));
}

TEST_F(AddressMerging, ARecipeNotesTheFirstKeyOfEachBlock)
{
    driver.blockStartIndex.append(42);
    EXPECT_EQ((Texts{"1 IX 0 x3", "1 IX 5 x1", "1 IX 16 x2"}),
              recipeBlocks(singleBits("IX", {0, 1, 2, 5, 16, 17})));
    EXPECT_EQ((std::vector<int>{0, 3, 4}), numbersOf(driver.blockStartIndex));
}

TEST_F(AddressMerging, ARecipeNotesABlockOpenedByTheMergeLimit)
{
    driver.mergeLimit = 2;
    EXPECT_EQ((Texts{"1 IX 0 x2", "1 IX 2 x2", "1 IX 4 x1"}),
              recipeBlocks(singleBits("IX", {0, 1, 2, 3, 4})));
    EXPECT_EQ((std::vector<int>{0, 2, 4}), numbersOf(driver.blockStartIndex));
}

TEST_F(AddressMerging, ARecipeReadsNoGapAlong)
{
    EXPECT_EQ(Texts{"1 MX 3006 x2"}, recipeBlocks(singleBits("MX", {3006, 3007})));
    EXPECT_EQ((Texts{"1 MX 3007 x1", "1 MX 3008 x1"}),
              recipeBlocks(singleBits("MX", {3007, 3008})));
    EXPECT_EQ(Texts{"1 QX 0 x2"}, recipeBlocks(singleBits("QX", {0, 1})));
    EXPECT_EQ((Texts{"1 QX 0 x1", "1 QX 2 x1"}), recipeBlocks(singleBits("QX", {0, 2})));
}

TEST_F(AddressMerging, ARecipeIsNeitherSortedNorFiltered)
{
    EXPECT_EQ((Texts{"2 MW 3000 x1", "1 ZZ 0 x1", "1 IX 9 x1"}),
              recipeBlocks({key(2, "MW", 3000, 1), key(1, "ZZ", 0, 1), key(1, "IX", 9, 1)}));
    EXPECT_EQ((std::vector<int>{0, 1, 2}), numbersOf(driver.blockStartIndex));
}

TEST_F(AddressMerging, ARecipeOfOneOrNoKeyHasOneBlockStart)
{
    EXPECT_EQ(Texts{"1 IX 9 x1"}, recipeBlocks(singleBits("IX", {9})));
    EXPECT_EQ(std::vector<int>{0}, numbersOf(driver.blockStartIndex));
    EXPECT_EQ(Texts{}, recipeBlocks({}));
    EXPECT_EQ(std::vector<int>{0}, numbersOf(driver.blockStartIndex));
}
