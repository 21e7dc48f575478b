// Areas of widths that this device's own table does not have.

#include "addressChecks.h"

#include "driverFixture.h"

namespace {

const QString WIDE_ROW[AREA_COLUMN_COUNT] = {text("DDDD"), text("0"),  text("510"),
                                             text("32"),   text("RW"), text("32")};
const QString WIDE_INPUT_ROW[AREA_COLUMN_COUNT] = {text("DDDD"), text("0"), text("510"),
                                                   text("32"),   text("R"), text("32")};
const QString BYTE_ROW[AREA_COLUMN_COUNT] = {text("DDDD"), text("0"),  text("510"),
                                             text("8"),    text("RW"), text("8")};

enum { BIT_TYPE = -1, WIDE_TYPE = 3, OTHER_TYPE = 2, READING = 0, WRITING = 1 };

int check(AreaRow row, const char* addrText, int dataType, int count = 1, int accessMode = READING)
{
    const ADDRESS_QUESTION question = {text("DW"), text(addrText), dataType, count, accessMode};
    int addr = 0;
    return checkAddressOfArea(row, question, addr);
}

} // namespace

class AddressWidths : public DriverTest
{
};

TEST_F(AddressWidths, A32BitAreaTakesFiveDataTypes)
{
    for (int dataType : {1, 3, 5, 6, 9}) {
        SCOPED_TRACE(dataType);
        EXPECT_EQ(ADDRESS_VALID, check(WIDE_ROW, "0", dataType));
    }
}

TEST_F(AddressWidths, A32BitAreaRefusesEveryOtherDataType)
{
    for (int dataType : {0, 2, 4, 7, 8, 10, -2}) {
        SCOPED_TRACE(dataType);
        EXPECT_EQ(ADDRESS_TYPE_NOT_ALLOWED, check(WIDE_ROW, "0", dataType));
    }
}

TEST_F(AddressWidths, A32BitAreaIsNoBitArea)
{
    EXPECT_EQ(ADDRESS_KIND_MISMATCH, check(WIDE_ROW, "0", BIT_TYPE));
}

TEST_F(AddressWidths, AccessIsTestedBeforeTheDataTypeAndTheTextAfterIt)
{
    EXPECT_EQ(ADDRESS_READ_ONLY, check(WIDE_INPUT_ROW, "0", OTHER_TYPE, 1, WRITING));
    EXPECT_EQ(ADDRESS_TYPE_NOT_ALLOWED, check(WIDE_INPUT_ROW, "malformed", OTHER_TYPE));
    EXPECT_EQ(ADDRESS_OUT_OF_RANGE, check(WIDE_INPUT_ROW, "malformed", WIDE_TYPE));
}

TEST_F(AddressWidths, Two32BitElementsCountAsOneStepAndAHalfStepIsNotRoundedOff)
{
    // 255 + 2 / 2 ends at 256, one past the last address; 255 + 3 / 2 passes it by a half.
    EXPECT_EQ(ADDRESS_VALID, check(WIDE_ROW, "510", WIDE_TYPE, 2));
    EXPECT_EQ(ADDRESS_OUT_OF_RANGE, check(WIDE_ROW, "510", WIDE_TYPE, 3));
}

TEST_F(AddressWidths, An8BitElementCountsAsTwoSteps)
{
    EXPECT_EQ(ADDRESS_OUT_OF_RANGE, check(BYTE_ROW, "510", OTHER_TYPE, 1));
    EXPECT_EQ(ADDRESS_VALID, check(BYTE_ROW, "508", OTHER_TYPE, 1));
    EXPECT_EQ(ADDRESS_OUT_OF_RANGE, check(BYTE_ROW, "506", OTHER_TYPE, 2));
    EXPECT_EQ(ADDRESS_VALID, check(BYTE_ROW, "504", OTHER_TYPE, 2));
}

TEST_F(AddressWidths, An8BitAreaTakesAnyDataTypeButTheBit)
{
    EXPECT_EQ(ADDRESS_VALID, check(BYTE_ROW, "0", 0));
    EXPECT_EQ(ADDRESS_VALID, check(BYTE_ROW, "0", 8));
    EXPECT_EQ(ADDRESS_KIND_MISMATCH, check(BYTE_ROW, "0", BIT_TYPE));
}

TEST_F(AddressWidths, AValidAddressIsHandedBack)
{
    const ADDRESS_QUESTION question = {text("DW"), text("20"), WIDE_TYPE, 1, READING};
    int addr = -77;
    ASSERT_EQ(ADDRESS_VALID, checkAddressOfArea(WIDE_ROW, question, addr));
    EXPECT_EQ(10, addr);
}
