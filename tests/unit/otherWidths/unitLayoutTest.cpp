#include "unitLayout.h"
#include "cacheHelpers.h"
#include "serviceForProtocol.h"

namespace {

struct LAYOUT_CASE
{
    const char* dataWidth;
    const char* unitBits;
    const char* name;
    UnitLayout reading;
    UnitLayout writing;
};

const LAYOUT_CASE LAYOUTS[] = {
    {"1", "1", "V", BIT_UNIT, BIT_UNIT},
    {"1", "8", "V", BIT_UNIT, BIT_UNIT},
    {"1", "16", "V", BIT_UNIT, BIT_UNIT},
    {"1", "16", "V_B", BIT_UNIT, BIT_UNIT},
    {"1", "8", "V_bit", BIT_OF_BYTE, BIT_OF_BYTE},
    {"1", "16", "V_bit", BIT_OF_WORD, BIT_OF_WORD},
    {"1", "1", "V_bit", NO_UNITS, NO_UNITS},
    {"1", "32", "V_bit", NO_UNITS, NO_UNITS},
    {"1", "", "V_bit", NO_UNITS, NO_UNITS},
    {"16", "16", "V", WORD_UNIT, WORD_UNIT},
    {"16", "1", "V", WORD_UNIT, WORD_UNIT},
    {"16", "", "V", WORD_UNIT, WORD_UNIT},
    {"16", "16", "V_bit", WORD_UNIT, WORD_UNIT},
    {"16", "8", "V", BYTE_PAIR, BYTE_PAIR},
    {"16", "8", "V_bit", BYTE_PAIR, BYTE_PAIR},
    {"32", "16", "V", WORD_PAIR, WORD_PAIR},
    {"32", "16", "V_bit", WORD_PAIR, WORD_PAIR},
    {"32", "32", "V", DOUBLE_UNIT, DOUBLE_UNIT},
    {"32", "", "V", DOUBLE_UNIT, DOUBLE_UNIT},
    // Reading and writing part ways here.
    {"8", "8", "V", BIT_UNIT, BYTE_UNIT},
    {"8", "16", "V", BIT_UNIT, BYTE_UNIT},
    {"8", "8", "V_bit", BIT_OF_BYTE, BYTE_UNIT},
    {"8", "16", "V_bit", BIT_OF_WORD, BYTE_UNIT},
    {"8", "1", "V_bit", NO_UNITS, BYTE_UNIT},
    {"32", "8", "V", BYTE_QUAD, DOUBLE_UNIT},
    // Widths are compared as texts.
    {"", "", "V", NO_UNITS, NO_UNITS},
    {"", "16", "V_bit", NO_UNITS, NO_UNITS},
    {"0", "16", "V", NO_UNITS, NO_UNITS},
    {"64", "16", "V", NO_UNITS, NO_UNITS},
    {"016", "16", "V", NO_UNITS, NO_UNITS},
    {" 1", "1", "V", NO_UNITS, NO_UNITS},
};

std::string describe(const LAYOUT_CASE& row)
{
    return std::string(row.dataWidth) + "/" + row.unitBits + " " + row.name;
}

} // namespace

TEST(UnitLayouts, EveryPairOfWidthsHasItsLayoutForReading)
{
    for (const LAYOUT_CASE& row : LAYOUTS)
        EXPECT_EQ(row.reading,
                  layoutForReading(OtherRow(row.dataWidth, row.unitBits), text(row.name)))
            << describe(row);
}

TEST(UnitLayouts, EveryPairOfWidthsHasItsLayoutForWriting)
{
    for (const LAYOUT_CASE& row : LAYOUTS)
        EXPECT_EQ(row.writing,
                  layoutForWriting(OtherRow(row.dataWidth, row.unitBits), text(row.name)))
            << describe(row);
}

TEST(UnitLayouts, TheDevicesAreasAreBitsAndWords)
{
    for (const char* name : {"MX", "IX", "QX"}) {
        EXPECT_EQ(BIT_UNIT, layoutForReading(areaRow(text(name)), text(name))) << name;
        EXPECT_EQ(BIT_UNIT, layoutForWriting(areaRow(text(name)), text(name))) << name;
    }
    for (const char* name : {"MW", "IW", "QW"}) {
        EXPECT_EQ(WORD_UNIT, layoutForReading(areaRow(text(name)), text(name))) << name;
        EXPECT_EQ(WORD_UNIT, layoutForWriting(areaRow(text(name)), text(name))) << name;
    }
}

TEST(UnitLayouts, ANameThatIsNoAreasHasNoUnits)
{
    for (const char* name : {"MW_bit", "MX_bit", "MW_D", "mw", "XX", ""}) {
        EXPECT_EQ(NO_UNITS, layoutForReading(areaRow(text(name)), text(name))) << name;
        EXPECT_EQ(NO_UNITS, layoutForWriting(areaRow(text(name)), text(name))) << name;
    }
}
