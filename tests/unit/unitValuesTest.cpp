#include "unitValues.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

const int LOWEST = std::numeric_limits<int>::min();
const int HIGHEST = std::numeric_limits<int>::max();

} // namespace

TEST(UnitValues, ABitIsSet)
{
    EXPECT_EQ(0x01, _setBitValue(0, 0, 1));
    EXPECT_EQ(0x8001, _setBitValue(0x0001, 15, 1));
    EXPECT_EQ(0x40000000, _setBitValue(0, 30, 1));
    EXPECT_EQ(LOWEST, _setBitValue(0, 31, 1));
}

TEST(UnitValues, ABitIsCleared)
{
    EXPECT_EQ(0xFE, _setBitValue(0xFF, 0, 0));
    EXPECT_EQ(0x7FFF, _setBitValue(0xFFFF, 15, 0));
    EXPECT_EQ(HIGHEST, _setBitValue(-1, 31, 0));
}

TEST(UnitValues, ABitThatStandsAlreadyIsKept)
{
    EXPECT_EQ(0x08, _setBitValue(0x08, 3, 1));
    EXPECT_EQ(0xF7, _setBitValue(0xF7, 3, 0));
}

TEST(UnitValues, AnyOtherNumberThanZeroSetsTheBit)
{
    EXPECT_EQ(4, _setBitValue(0, 2, 2));
    EXPECT_EQ(4, _setBitValue(0, 2, -1));
    EXPECT_EQ(4, _setBitValue(0, 2, 256));
}

TEST(UnitValues, ABitNumberWithoutABitLeavesTheValue)
{
    EXPECT_EQ(0x5B, _setBitValue(0x5A, 0, 1));
    EXPECT_EQ(LOWEST + 0x5A, _setBitValue(0x5A, 31, 1));
    const int numbers[] = {32, 33, 63, HIGHEST, -1, -32, LOWEST};
    for (int bit : numbers) {
        EXPECT_EQ(0x5A, _setBitValue(0x5A, bit, 1)) << bit;
        EXPECT_EQ(-1, _setBitValue(-1, bit, 0)) << bit;
    }
}

TEST(UnitValues, AWordHasItsLowByteFirst)
{
    EXPECT_EQ(0, uchar2int16(0, 0));
    EXPECT_EQ(0x1234, uchar2int16(0x34, 0x12));
    EXPECT_EQ(255, uchar2int16(0xFF, 0));
    EXPECT_EQ(0xFF00, uchar2int16(0, 0xFF));
}

TEST(UnitValues, AWordIsNeverNegative)
{
    EXPECT_EQ(65535, uchar2int16(0xFF, 0xFF));
    EXPECT_EQ(32768, uchar2int16(0, 0x80));
}

TEST(UnitValues, ADoubleWordHasItsLowByteFirst)
{
    EXPECT_EQ(0, uchar2int32(0, 0, 0, 0));
    EXPECT_EQ(0x12345678, uchar2int32(0x78, 0x56, 0x34, 0x12));
    EXPECT_EQ(0x00FF00FF, uchar2int32(0xFF, 0, 0xFF, 0));
}

TEST(UnitValues, ADoubleWordWithItsHighestBitIsNegative)
{
    EXPECT_EQ(LOWEST, uchar2int32(0, 0, 0, 0x80));
    EXPECT_EQ(-1, uchar2int32(0xFF, 0xFF, 0xFF, 0xFF));
    EXPECT_EQ(-2, uchar2int32(0xFE, 0xFF, 0xFF, 0xFF));
}
