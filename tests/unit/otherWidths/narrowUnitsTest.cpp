// Keys in areas of fewer bits an element, or a unit, than any of this device's.

#include "otherWidths/keyNormalising.h"

#include "cacheHelpers.h"
#include "listTexts.h"

namespace {

std::string normalised(const OtherRow& row, KEY_ADDRESS given)
{
    normaliseKey(row, given);
    return blockText(given);
}

} // namespace

class NarrowUnits : public DriverTest
{
};

TEST_F(NarrowUnits, EightElementsOfTwoBitsMakeAWord)
{
    EXPECT_EQ("1 V 5 x56", normalised(OtherRow("2", "2"), key(1, "V", 5, 7)));
}

TEST_F(NarrowUnits, BitsInUnitsOfOneBitStandForThemselvesAndOneMoreUnlessTheyFillWords)
{
    EXPECT_EQ("1 V_BIT 35 x6", normalised(OtherRow("1", "1"), key(1, "V_BIT", 35, 5)));
    EXPECT_EQ("1 V_BIT 35 x16", normalised(OtherRow("1", "1"), key(1, "V_BIT", 35, 16)));
}

TEST_F(NarrowUnits, OneBitBehindAFullWordTakesAnotherWord)
{
    EXPECT_EQ("1 V_BIT 2 x2", normalised(OtherRow("16", "16"), key(1, "V_BIT", 32, 17)));
}
