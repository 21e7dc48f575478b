#include "cacheHelpers.h"
#include "monitorFlags.h"

namespace {

class MonitorFlagsOtherWidths : public DriverTest
{
protected:
    void mark(const char* dataWidth, const char* unitBits, const char* regName, int start,
              int count)
    {
        setMonitorFlagsOfArea(OtherRow(dataWidth, unitBits), 1, text(regName), start, count);
    }
};

const char* const ROWS[][3] = {
    {"1", "1", "V"},      {"1", "16", "V_bit"}, {"1", "8", "V_bit"}, {"8", "8", "V"},
    {"8", "16", "V_bit"}, {"8", "8", "V_bit"},  {"16", "16", "V"},   {"16", "8", "V"},
    {"32", "8", "V"},     {"32", "16", "V"},    {"32", "32", "V"},
};

} // namespace

TEST_F(MonitorFlagsOtherWidths, UnitsOfOneOrEightBitsAreMarkedUnderTheWholeName)
{
    for (const char* width : {"1", "8"}) {
        for (const char* unitBits : {"1", "8", "16", ""}) {
            driver.dataAreas.clear();
            mark(width, unitBits, "V_B", 4, 2);
            EXPECT_EQ(Marks({{1, "V_B", 4, 1, 0}, {1, "V_B", 5, 1, 0}}), allMarks());
        }
    }
}

TEST_F(MonitorFlagsOtherWidths, BitsOfWordsAreMarkedInTheWordsThatHoldThem)
{
    for (const char* width : {"1", "8"}) {
        driver.dataAreas.clear();
        mark(width, "16", "V_bit", 30, 4);
        EXPECT_EQ(Marks({{1, "V", 1, 0, 0xC000}, {1, "V", 2, 0, 0x0003}}), allMarks());
    }
}

TEST_F(MonitorFlagsOtherWidths, BitsOfBytesAreMarkedInTheBytesThatHoldThem)
{
    for (const char* width : {"1", "8"}) {
        driver.dataAreas.clear();
        mark(width, "8", "V_bit", 6, 3);
        EXPECT_EQ(Marks({{1, "V", 0, 0, 0xC0}, {1, "V", 1, 0, 0x01}}), allMarks());
    }
}

TEST_F(MonitorFlagsOtherWidths, BitMarksAreAddedToThoseTheUnitHas)
{
    putUnit(1, "V", 1, 0, 1, 0x8000);
    mark("1", "16", "V_bit", 16, 1);
    EXPECT_EQ(Marks({{1, "V", 1, 1, 0x8001}}), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, BitsOfUnitsOfAnyOtherWidthAreNotMarked)
{
    for (const char* width : {"1", "8"}) {
        for (const char* unitBits : {"1", "32", ""})
            mark(width, unitBits, "V_bit", 0, 4);
    }
    EXPECT_EQ(Marks(), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, NegativeBitsOfWordsGoToTheTruncatedQuotient)
{
    // -17 is bit -1 of word -1, which no mask has; -16 is bit 0 of word -1.
    mark("1", "16", "V_bit", -17, 2);
    EXPECT_EQ(Marks({{1, "V", -1, 0, 0x0001}}), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, NegativeBitsOfBytesGoToTheTruncatedQuotient)
{
    // -1 is bit -1 of byte 0, which no mask has.
    mark("1", "8", "V_bit", -1, 2);
    EXPECT_EQ(Marks({{1, "V", 0, 0, 0x01}}), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, WordsInWordUnitsAreMarkedUnderTheWholeName)
{
    for (const char* unitBits : {"16", "1", "32", ""}) {
        driver.dataAreas.clear();
        mark("16", unitBits, "V_bit", 4, 2);
        EXPECT_EQ(Marks({{1, "V_bit", 4, 1, 0}, {1, "V_bit", 5, 1, 0}}), allMarks());
    }
}

TEST_F(MonitorFlagsOtherWidths, OfWordsInByteUnitsOnlyTheFirstPairIsMarked)
{
    mark("16", "8", "V_W", 4, 3);
    EXPECT_EQ(Marks({{1, "V", 4, 0x02, 0}, {1, "V", 5, 0x04, 0}}), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, DoubleWordsInByteUnitsMarkFourBytesForEveryTwoCounted)
{
    mark("32", "8", "V_D", 8, 4);
    EXPECT_EQ(Marks({{1, "V", 8, 0x08, 0},
                     {1, "V", 9, 0x10, 0},
                     {1, "V", 10, 0x20, 0},
                     {1, "V", 11, 0x40, 0},
                     {1, "V", 12, 0x08, 0},
                     {1, "V", 13, 0x10, 0},
                     {1, "V", 14, 0x20, 0},
                     {1, "V", 15, 0x40, 0}}),
              allMarks());
}

TEST_F(MonitorFlagsOtherWidths, DoubleWordsInWordUnitsMarkTwoWordsForEveryTwoCounted)
{
    mark("32", "16", "V_D", 8, 5);
    EXPECT_EQ(Marks({{1, "V", 8, 0x02, 0},
                     {1, "V", 9, 0x04, 0},
                     {1, "V", 10, 0x02, 0},
                     {1, "V", 11, 0x04, 0}}),
              allMarks());
}

TEST_F(MonitorFlagsOtherWidths, AWordCanBeSecondOfOneDoubleWordAndFirstOfTheNext)
{
    mark("32", "16", "V_D", 8, 2);
    mark("32", "16", "V_D", 9, 2);
    EXPECT_EQ(Marks({{1, "V", 8, 0x02, 0}, {1, "V", 9, 0x06, 0}, {1, "V", 10, 0x04, 0}}),
              allMarks());
}

TEST_F(MonitorFlagsOtherWidths, DoubleWordUnitsAreMarkedUnderTheAreaForEveryTwoCounted)
{
    for (const char* unitBits : {"32", "1", ""}) {
        driver.dataAreas.clear();
        mark("32", unitBits, "V_x", 8, 6);
        EXPECT_EQ(Marks({{1, "V", 8, 1, 0}, {1, "V", 9, 1, 0}, {1, "V", 10, 1, 0}}), allMarks());
    }
}

TEST_F(MonitorFlagsOtherWidths, OneCountedUnitIsNoDoubleWord)
{
    for (const char* unitBits : {"8", "16", "32"})
        mark("32", unitBits, "V", 0, 1);
    EXPECT_EQ(Marks(), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, AnyOtherWidthMarksNothing)
{
    for (const char* width : {"", "0", "24", "64"})
        mark(width, "16", "V", 0, 4);
    EXPECT_EQ(Marks(), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, ACountBelowOneMarksNothing)
{
    for (const auto& row : ROWS) {
        for (int count : {0, -1, -2, -16, LOWEST + 2, LOWEST + 1, int(LOWEST)})
            mark(row[0], row[1], row[2], 0, count);
        EXPECT_EQ(Marks(), allMarks()) << row[0] << "/" << row[1] << " " << row[2];
    }
}
