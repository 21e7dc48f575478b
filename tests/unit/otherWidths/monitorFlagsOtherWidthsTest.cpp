#include "cacheHelpers.h"
#include "monitorFlags.h"
#include "widthRows.h"

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

struct MarkRow
{
    std::vector<const char*> dataWidths;
    std::vector<const char*> unitBits;
    const char* regName;
    int start;
    int count;
    Marks marks;
};

const MarkRow ROWS[] = {
    // Units of one or eight bits are marked under the whole name.
    {{"1", "8"}, {"1", "8", "16", ""}, "V_B", 4, 2, {{1, "V_B", 4, 1, 0}, {1, "V_B", 5, 1, 0}}},
    // Bits of words and bytes are marked in the units that hold them.
    {{"1", "8"}, {"16"}, "V_bit", 30, 4, {{1, "V", 1, 0, 0xC000}, {1, "V", 2, 0, 0x0003}}},
    {{"1", "8"}, {"8"}, "V_bit", 6, 3, {{1, "V", 0, 0, 0xC0}, {1, "V", 1, 0, 0x01}}},
    {{"1", "8"}, {"1", "32", ""}, "V_bit", 0, 4, {}},
    // Negative bits go to the truncated quotient: -17 is bit -1 of word -1, which no mask has, -16
    // is bit 0 of word -1, and -1 is bit -1 of byte 0.
    {{"1"}, {"16"}, "V_bit", -17, 2, {{1, "V", -1, 0, 0x0001}}},
    {{"1"}, {"8"}, "V_bit", -1, 2, {{1, "V", 0, 0, 0x01}}},
    // Words in word units are marked under the whole name.
    {{"16"}, {"16", "1", "32", ""}, "V_bit", 4, 2, {{1, "V_bit", 4, 1, 0}, {1, "V_bit", 5, 1, 0}}},
    // Of words in byte units only the first pair is marked.
    {{"16"}, {"8"}, "V_W", 4, 3, {{1, "V", 4, 0x02, 0}, {1, "V", 5, 0x04, 0}}},
    // Double words mark four bytes, two words or one unit under the area for every two counted.
    {{"32"},
     {"8"},
     "V_D",
     8,
     4,
     {{1, "V", 8, 0x08, 0},
      {1, "V", 9, 0x10, 0},
      {1, "V", 10, 0x20, 0},
      {1, "V", 11, 0x40, 0},
      {1, "V", 12, 0x08, 0},
      {1, "V", 13, 0x10, 0},
      {1, "V", 14, 0x20, 0},
      {1, "V", 15, 0x40, 0}}},
    {{"32"},
     {"16"},
     "V_D",
     8,
     5,
     {{1, "V", 8, 0x02, 0}, {1, "V", 9, 0x04, 0}, {1, "V", 10, 0x02, 0}, {1, "V", 11, 0x04, 0}}},
    {{"32"},
     {"32", "1", ""},
     "V_x",
     8,
     6,
     {{1, "V", 8, 1, 0}, {1, "V", 9, 1, 0}, {1, "V", 10, 1, 0}}},
    // One counted unit is no double word.
    {{"32"}, {"8", "16", "32"}, "V", 0, 1, {}},
    // Any other width marks nothing.
    {{"", "0", "24", "64"}, {"16"}, "V", 0, 4, {}},
};

} // namespace

TEST_F(MonitorFlagsOtherWidths, UnitsAreMarkedByTheirLayout)
{
    for (const MarkRow& row : ROWS) {
        for (const char* dataWidth : row.dataWidths) {
            for (const char* unitBits : row.unitBits) {
                SCOPED_TRACE(testing::Message() << dataWidth << "/" << unitBits << " "
                                                << row.regName << " " << row.start);
                driver.dataAreas.clear();
                mark(dataWidth, unitBits, row.regName, row.start, row.count);
                EXPECT_EQ(row.marks, allMarks());
            }
        }
    }
}

TEST_F(MonitorFlagsOtherWidths, BitMarksAreAddedToThoseTheUnitHas)
{
    putUnit(1, "V", 1, 0, 1, 0x8000);
    mark("1", "16", "V_bit", 16, 1);
    EXPECT_EQ(Marks({{1, "V", 1, 1, 0x8001}}), allMarks());
}

TEST_F(MonitorFlagsOtherWidths, AWordCanBeSecondOfOneDoubleWordAndFirstOfTheNext)
{
    mark("32", "16", "V_D", 8, 2);
    mark("32", "16", "V_D", 9, 2);
    EXPECT_EQ(Marks({{1, "V", 8, 0x02, 0}, {1, "V", 9, 0x06, 0}, {1, "V", 10, 0x04, 0}}),
              allMarks());
}

TEST_F(MonitorFlagsOtherWidths, ACountBelowOneMarksNothing)
{
    forEachLayoutBelowOne(
        [this](const char* dataWidth, const char* unitBits, const char* regName, int count) {
            mark(dataWidth, unitBits, regName, 0, count);
            EXPECT_EQ(Marks(), allMarks());
        });
}
