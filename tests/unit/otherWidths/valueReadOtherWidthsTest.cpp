#include "cacheHelpers.h"
#include "valueRead.h"
#include "widthRows.h"

namespace {

enum { BUFFER_BYTES = 64, UNTOUCHED = 0xEE };

class ValueReadOtherWidths : public DriverTest
{
protected:
    /// What was written to the buffer; none of the test values is UNTOUCHED.
    static Bytes read(const char* dataWidth, const char* unitBits, const char* regName, int address,
                      int count)
    {
        std::vector<unsigned char> out(BUFFER_BYTES, UNTOUCHED);
        readValuesOfArea(OtherRow(dataWidth, unitBits), 1, text(regName), address, count,
                         out.data());
        while (!out.empty() && out.back() == UNTOUCHED)
            out.pop_back();
        return Bytes(out.begin(), out.end());
    }

    /// Units `from` to `to` of area V with four different bytes each, 0x10 n + 1 to 0x10 n + 4.
    static void putUnits(int from, int to)
    {
        for (int i = from; i <= to; ++i)
            putUnit(1, "V", i, 0x04030201u + 0x10101010u * unsigned(i));
    }
};

} // namespace

TEST_F(ValueReadOtherWidths, UnitsOfOneOrEightBitsGiveTheirFirstByteUnderTheWholeName)
{
    putUnit(1, "V_B", 4, 0x2211);
    putUnit(1, "V_B", 5, 0x4433);
    for (const char* width : {"1", "8"}) {
        for (const char* unitBits : {"1", "8", "16", ""})
            EXPECT_EQ(Bytes({0x11, 0x33}), read(width, unitBits, "V_B", 4, 2));
    }
}

TEST_F(ValueReadOtherWidths, BitsOfWordsAreTakenFromTheWordThatHoldsThem)
{
    putUnit(1, "V", 1, 0x4080);
    putUnit(1, "V", 2, 0x0005);
    for (const char* width : {"1", "8"}) {
        EXPECT_EQ(Bytes({0, 1, 0, 0}), read(width, "16", "V_bit", 22, 4));
        EXPECT_EQ(Bytes({1, 0, 1, 0, 1, 0}), read(width, "16", "V_bit", 30, 6));
    }
}

TEST_F(ValueReadOtherWidths, BitsOfBytesAreTakenFromTheByteThatHoldsThem)
{
    putUnit(1, "V", 0, 0xFF40);
    putUnit(1, "V", 1, 0xFF02);
    for (const char* width : {"1", "8"})
        EXPECT_EQ(Bytes({0, 1, 0, 0, 1, 0}), read(width, "8", "V_bit", 5, 6));
}

TEST_F(ValueReadOtherWidths, BitsShowAnUnconfirmedWriteOfTheirUnit)
{
    putPendingWrite(1, "V", 0, 0x0001, 0x8000);
    EXPECT_EQ(Bytes({0, 0}), read("1", "16", "V_bit", 0, 2));
    EXPECT_EQ(Bytes({0, 1}), read("1", "16", "V_bit", 14, 2));
    EXPECT_EQ(Bytes({0}), read("1", "8", "V_bit", 0, 1));
}

TEST_F(ValueReadOtherWidths, BitsNeverReadAreZeroAndLeaveTheirUnitsBehind)
{
    EXPECT_EQ(Bytes({0, 0}), read("1", "16", "V_bit", 31, 2));
    EXPECT_EQ(Marks({{1, "V", 1, 0, 0}, {1, "V", 2, 0, 0}}), allMarks());
}

TEST_F(ValueReadOtherWidths, BitsOfUnitsOfAnyOtherWidthAreNotRead)
{
    for (const char* width : {"1", "8"}) {
        for (const char* unitBits : {"1", "32", ""})
            EXPECT_EQ(Bytes(), read(width, unitBits, "V_bit", 0, 4));
    }
    EXPECT_EQ(Marks(), allMarks());
}

TEST_F(ValueReadOtherWidths, ANegativeBitIsLookedUpAtTheTruncatedQuotient)
{
    // -16 is bit 0 of word -1, -8 bit 0 of byte -1.
    putUnit(1, "V", -1, 0x0001);
    putUnit(1, "V", 0, 0x0000);
    EXPECT_EQ(Bytes({1}), read("1", "16", "V_bit", -16, 1));
    EXPECT_EQ(Bytes({1}), read("1", "8", "V_bit", -8, 1));
}

TEST_F(ValueReadOtherWidths, ABitNumberBelowZeroHasNoByteToRead)
{
    putUnit(1, "V", 0, 0xFFFFFFFFu);
    EXPECT_EQ(Bytes({0, 0, 1}), read("1", "16", "V_bit", -2, 3));
    EXPECT_EQ(Bytes({0, 0, 1}), read("1", "8", "V_bit", -2, 3));
    EXPECT_EQ(1, int(driver.dataAreas.size()));
}

TEST_F(ValueReadOtherWidths, WordsInWordUnitsAreReadUnderTheWholeName)
{
    putUnit(1, "V_bit", 4, 0xFFFF1234u);
    putUnit(1, "V_bit", 5, 0xFFFF5678u);
    for (const char* unitBits : {"16", "1", "32", ""})
        EXPECT_EQ(Bytes({0x34, 0x12, 0x78, 0x56}), read("16", unitBits, "V_bit", 4, 2));
}

TEST_F(ValueReadOtherWidths, WordsAndDoubleWordsTakeTheirUnits)
{
    putUnits(0, 9);
    EXPECT_EQ(Bytes({0x41, 0x51, 0x61, 0x71}), read("16", "8", "V_W", 4, 2));
    // Every two counted double words take four bytes, two words or one unit.
    EXPECT_EQ(Bytes({0x01, 0x11, 0x21, 0x31, 0x41, 0x51, 0x61, 0x71}),
              read("32", "8", "V_D", 0, 5));
    EXPECT_EQ(Bytes({0x01, 0x02, 0x11, 0x12, 0x21, 0x22, 0x31, 0x32}),
              read("32", "16", "V_D", 0, 5));
    for (const char* unitBits : {"32", "1", ""})
        EXPECT_EQ(Bytes({0x11, 0x12, 0x13, 0x14, 0x21, 0x22, 0x23, 0x24}),
                  read("32", unitBits, "V_x", 1, 5));
}

TEST_F(ValueReadOtherWidths, EachUnitShowsItsOwnUnconfirmedWrite)
{
    putUnit(1, "V", 0, 0x04030201u);
    putPendingWrite(1, "V", 1, 0x04030201u, 0x44332211u);
    EXPECT_EQ(Bytes({0x01, 0x11}), read("16", "8", "V", 0, 1));
    EXPECT_EQ(Bytes({0x01, 0x02, 0x11, 0x22}), read("32", "16", "V", 0, 2));
    EXPECT_EQ(Bytes({0x11, 0x22, 0x33, 0x44}), read("32", "32", "V", 1, 2));
}

TEST_F(ValueReadOtherWidths, OneCountedUnitIsNoDoubleWordAndAnyOtherWidthReadsNothing)
{
    for (const char* unitBits : {"8", "16", "32"})
        EXPECT_EQ(Bytes(), read("32", unitBits, "V", 0, 1)) << unitBits;
    for (const char* width : {"", "0", "24", "64"})
        EXPECT_EQ(Bytes(), read(width, "16", "V", 0, 4)) << width;
    EXPECT_EQ(Marks(), allMarks());
}

TEST_F(ValueReadOtherWidths, ACountBelowOneReadsNothing)
{
    forEachLayoutBelowOne(
        [](const char* dataWidth, const char* unitBits, const char* regName, int count) {
            EXPECT_EQ(Bytes(), read(dataWidth, unitBits, regName, 0, count));
            EXPECT_EQ(Marks(), allMarks());
        });
}

TEST_F(ValueReadOtherWidths, UnitsWrapAroundBehindTheHighestAddress)
{
    putUnit(1, "V", HIGHEST, 0x2211);
    putUnit(1, "V", LOWEST, 0x4433);
    EXPECT_EQ(Bytes({0x11, 0x33}), read("16", "8", "V", HIGHEST, 1));
    EXPECT_EQ(Bytes({0x11, 0x22, 0x33, 0x44}), read("32", "16", "V", HIGHEST, 2));
}
