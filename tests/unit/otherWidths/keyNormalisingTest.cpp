#include "otherWidths/keyNormalising.h"

#include "driverFixture.h"
#include "listTexts.h"

namespace {

std::string normalised(const char* dataWidth, const char* unitBits, KEY_ADDRESS given)
{
    const QString row[AREA_COLUMN_COUNT] = {text("DDDD"),    text("0"),  text("510"),
                                            text(dataWidth), text("RW"), text(unitBits)};
    normaliseKey(row, given);
    return blockText(given);
}

/// A bit variable in an area of words.
std::string bitNormalised(const char* unitBits, int addr, int count)
{
    return normalised("16", unitBits, key(1, "MW_BIT", addr, count));
}

} // namespace

class KeyNormalising : public DriverTest
{
};

TEST_F(KeyNormalising, CountsOfBitsAndWordsStay)
{
    EXPECT_EQ("1 MX 3005 x7", normalised("1", "1", key(1, "MX", 3005, 7)));
    EXPECT_EQ("1 MW 3005 x7", normalised("16", "16", key(1, "MW", 3005, 7)));
}

TEST_F(KeyNormalising, CountsOf8BitElementsDouble)
{
    EXPECT_EQ("1 MB 5 x14", normalised("8", "8", key(1, "MB", 5, 7)));
}

TEST_F(KeyNormalising, CountsOf32BitElementsAreHalvedTowardsZero)
{
    EXPECT_EQ("1 MD 5 x3", normalised("32", "32", key(1, "MD", 5, 7)));
    EXPECT_EQ("1 MD 5 x-3", normalised("32", "32", key(1, "MD", 5, -7)));
}

TEST_F(KeyNormalising, AnAreaWithoutWidthLeavesTheCount)
{
    EXPECT_EQ("1 MX 5 x7", normalised("", "", key(1, "MX", 5, 7)));
    EXPECT_EQ("1 MX 5 x7", normalised("0", "0", key(1, "MX", 5, 7)));
}

TEST_F(KeyNormalising, BitsOfWordsBecomeTheWordsThatHoldThem)
{
    EXPECT_EQ("1 MW_BIT 2 x1", bitNormalised("16", 35, 5));
    EXPECT_EQ("1 MW_BIT 2 x1", bitNormalised("16", 32, 16));
    EXPECT_EQ("1 MW_BIT 2 x2", bitNormalised("16", 32, 17));
    EXPECT_EQ("1 MW_BIT 2 x2", bitNormalised("16", 33, 16));
    EXPECT_EQ("1 MW_BIT 1 x2", bitNormalised("16", 31, 16));
    EXPECT_EQ("1 MW_BIT 0 x0", bitNormalised("16", 0, 0));
}

TEST_F(KeyNormalising, BitsOfBytesAreRoundedUpByTheLowFourBitsOfTheCount)
{
    // 8 bits fill one byte, and the 8 left in the low four bits still add one.
    EXPECT_EQ("1 MW_BIT 0 x2", bitNormalised("8", 0, 8));
    EXPECT_EQ("1 MW_BIT 0 x2", bitNormalised("8", 0, 16));
    EXPECT_EQ("1 MW_BIT 1 x3", bitNormalised("8", 11, 16));
}

TEST_F(KeyNormalising, BitsOfAnAreaWithoutUnitsStay)
{
    EXPECT_EQ("1 MW_BIT 35 x5", bitNormalised("", 35, 5));
    EXPECT_EQ("1 MW_BIT 35 x5", bitNormalised("0", 35, 5));
}

TEST_F(KeyNormalising, WidthSuffixesAreCutOff)
{
    for (const char* name : {"MW_B", "MW_W", "MW_D"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ("1 MW 35 x5", normalised("16", "16", key(1, name, 35, 5)));
    }
}

TEST_F(KeyNormalising, OtherSuffixesStay)
{
    for (const char* name : {"MW_bit", "MW_X", "MW_BITS", "MW_b"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(std::string("1 ") + name + " 35 x5", normalised("16", "16", key(1, name, 35, 5)));
    }
}
