#include "driverFixture.h"
#include "listTexts.h"

namespace {

enum { OWN_LINK = 7, OTHER_LINK = 8 };

_RCP_VAR_PRO own(int station, const char* area, int addr, int count = 1, int bufOffset = 0)
{
    return recipeVariable(OWN_LINK, station, area, addr, count, bufOffset);
}

_RCP_VAR_PRO foreign(const char* area, int addr)
{
    return recipeVariable(OTHER_LINK, 1, area, addr, 1, 0);
}

int hand(QVector<_RCP_VAR_PRO> records)
{
    return intf_setRcpAddress(records);
}

Texts staged()
{
    return blocksOf(driver.rcpVarsStaged);
}

Texts recipeBlocks()
{
    return blocksOf(driver.rcpVars);
}

} // namespace

class RecipeAddresses : public DriverTest
{
protected:
    RecipeAddresses()
    {
        initialise();
    }
};

TEST_F(RecipeAddresses, OnlyRecordsOfThisLinkAreKept)
{
    EXPECT_EQ(2,
              hand({foreign("MW", 3000), own(1, "MW", 3001), foreign("IX", 0), own(1, "QX", 0)}));
    EXPECT_EQ((Texts{"1 MW 3001 x1", "1 QX 0 x1"}), staged());
    EXPECT_EQ((Texts{"1 MW 3001 x1", "1 QX 0 x1"}), recipeBlocks());
}

TEST_F(RecipeAddresses, TheLinkIsTheCallbackContextOfTheProperties)
{
    driver.callbackContext = OTHER_LINK;
    EXPECT_EQ(1, hand({foreign("MW", 3000), own(1, "MW", 3001)}));
    EXPECT_EQ(Texts{"1 MW 3000 x1"}, staged());
}

TEST_F(RecipeAddresses, WithoutARecordOfThisLinkTheBlocksStay)
{
    hand({own(1, "MW", 3000), own(1, "MW", 3001)});
    for (const QVector<_RCP_VAR_PRO>& others :
         {QVector<_RCP_VAR_PRO>{foreign("IX", 0)}, QVector<_RCP_VAR_PRO>()}) {
        EXPECT_EQ(0, hand(others));
        EXPECT_EQ(Texts{}, staged());
        EXPECT_EQ((Texts{"1 MW 3000 x1", "1 MW 3001 x1"}), recipeBlocks());
        EXPECT_EQ((std::vector<int>{0, 1}), numbersOf(driver.blockStartIndex));
        hand({own(1, "MW", 3000), own(1, "MW", 3001)});
    }
}

TEST_F(RecipeAddresses, ALaterCallReplacesTheSet)
{
    hand({own(1, "MW", 3000), own(1, "MW", 3001)});
    EXPECT_EQ(1, hand({own(2, "IX", 5)}));
    EXPECT_EQ(Texts{"2 IX 5 x1"}, staged());
    EXPECT_EQ(Texts{"2 IX 5 x1"}, recipeBlocks());
    EXPECT_EQ(std::vector<int>{0}, numbersOf(driver.blockStartIndex));
}

TEST_F(RecipeAddresses, ALowerStationComesFirstWhateverTheAreas)
{
    hand({own(2, "MW", 3000), own(1, "QX", 4095), own(2, "IW", 0), own(1, "MX", 65534)});
    EXPECT_EQ((Texts{"1 MX 65534 x1", "1 QX 4095 x1", "2 MW 3000 x1", "2 IW 0 x1"}), staged());
}

TEST_F(RecipeAddresses, RecordsOfAStationComeByAreaThenAddress)
{
    hand({own(1, "QX", 3), own(1, "IX", 9), own(1, "MX", 3001), own(1, "QW", 4), own(1, "IW", 5),
          own(1, "MW", 7000), own(1, "MW", 3000), own(1, "IX", 8)});
    EXPECT_EQ((Texts{"1 MW 3000 x1", "1 MW 7000 x1", "1 IW 5 x1", "1 QW 4 x1", "1 MX 3001 x1",
                     "1 IX 8 x1", "1 IX 9 x1", "1 QX 3 x1"}),
              staged());
}

TEST_F(RecipeAddresses, RecordsOfEqualWeightKeepTheirOrder)
{
    hand({own(1, "QX", 3, 1, 1), own(1, "IW", 5, 4, 2), own(1, "QX", 3, 2, 3),
          own(1, "IW", 5, 3, 4), own(1, "QX", 3, 1, 5)});
    EXPECT_EQ((std::vector<int>{2, 4, 1, 3, 5}), offsetsOf(driver.rcpVarsStaged));
}

TEST_F(RecipeAddresses, ANegativeWeightSortsLastAsAnUnsignedNumber)
{
    hand({own(0, "MW", -1), own(9, "QX", 4095), own(-1, "MW", 3000), own(0, "MW", 3000)});
    EXPECT_EQ((Texts{"0 MW 3000 x1", "9 QX 4095 x1", "-1 MW 3000 x1", "0 MW -1 x1"}), staged());
}

TEST_F(RecipeAddresses, AWholeRecordIsStaged)
{
    _RCP_VAR_PRO record = own(1, "QW", 5, 2, 33);
    record.spare = 44;
    hand({record});
    const _RCP_VAR_PRO& kept = driver.rcpVarsStaged.at(0);
    EXPECT_EQ("1 QW 5 x2", blockText(kept));
    EXPECT_EQ(int(OWN_LINK), kept.linkNo);
    EXPECT_EQ(33, kept.bufOffset);
    EXPECT_EQ(44, kept.spare);
}

TEST_F(RecipeAddresses, NeighboursBecomeBlocksAtTheOffsetOfTheirFirst)
{
    EXPECT_EQ(5, hand({own(1, "IX", 20, 1, 60), own(1, "IX", 2, 1, 30), own(1, "IX", 0, 1, 50),
                       own(1, "IX", 1, 1, 40), own(1, "IX", 21, 3, 70)}));
    EXPECT_EQ((Texts{"1 IX 0 x3", "1 IX 20 x4"}), recipeBlocks());
    EXPECT_EQ((std::vector<int>{50, 60}), offsetsOf(driver.rcpVars));
    EXPECT_EQ((std::vector<int>{0, 3}), numbersOf(driver.blockStartIndex));
}

TEST_F(RecipeAddresses, NoGapIsTransferredAlong)
{
    hand({own(1, "QX", 0), own(1, "QX", 2), own(1, "MX", 3007), own(1, "MX", 3008)});
    EXPECT_EQ((Texts{"1 MX 3007 x1", "1 MX 3008 x1", "1 QX 0 x1", "1 QX 2 x1"}), recipeBlocks());
    EXPECT_EQ((std::vector<int>{0, 1, 2, 3}), numbersOf(driver.blockStartIndex));
}

TEST_F(RecipeAddresses, WordsJoinOnlyAtTheSameAddress)
{
    hand({own(1, "QW", 5, 1, 10), own(1, "QW", 6, 1, 11), own(1, "QW", 5, 3, 12)});
    EXPECT_EQ((Texts{"1 QW 5 x3", "1 QW 6 x1"}), recipeBlocks());
    EXPECT_EQ((std::vector<int>{10, 11}), offsetsOf(driver.rcpVars));
    EXPECT_EQ((std::vector<int>{0, 2}), numbersOf(driver.blockStartIndex));
}

TEST_F(RecipeAddresses, TheMergeLimitBoundsABlock)
{
    driver.mergeLimit = 3;
    hand({own(1, "QX", 0), own(1, "QX", 1), own(1, "QX", 2)});
    EXPECT_EQ(Texts{"1 QX 0 x3"}, recipeBlocks());
    driver.mergeLimit = 2;
    hand({own(1, "QX", 0), own(1, "QX", 1), own(1, "QX", 2)});
    EXPECT_EQ((Texts{"1 QX 0 x2", "1 QX 2 x1"}), recipeBlocks());
    EXPECT_EQ((std::vector<int>{0, 2}), numbersOf(driver.blockStartIndex));
}

TEST_F(RecipeAddresses, RecordsOfUnknownAreasStay)
{
    // An absent area weighs one area less than the station's first.
    EXPECT_EQ(2, hand({own(1, "MW", 3000), own(1, "ZZ", 0)}));
    EXPECT_EQ((Texts{"1 ZZ 0 x1", "1 MW 3000 x1"}), recipeBlocks());
}

TEST_F(RecipeAddresses, TheHostsVectorIsLeftAsItIs)
{
    QVector<_RCP_VAR_PRO> records{own(2, "IX", 1), foreign("MW", 3000), own(1, "IX", 0)};
    intf_setRcpAddress(records);
    EXPECT_EQ((Texts{"2 IX 1 x1", "1 MW 3000 x1", "1 IX 0 x1"}), blocksOf(records));
}

TEST_F(RecipeAddresses, AFurtherInitialisationKeepsTheSet)
{
    hand({own(1, "MW", 3000)});
    initialise();
    EXPECT_EQ(Texts{"1 MW 3000 x1"}, staged());
    EXPECT_EQ(Texts{"1 MW 3000 x1"}, recipeBlocks());
}
