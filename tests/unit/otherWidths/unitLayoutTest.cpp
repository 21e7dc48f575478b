#include "unitLayout.h"
#include "cacheHelpers.h"
#include "serviceForProtocol.h"

#include <map>

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

} // namespace

TEST(UnitLayouts, EveryPairOfWidthsHasItsLayout)
{
    for (const LAYOUT_CASE& row : LAYOUTS) {
        SCOPED_TRACE(testing::Message() << row.dataWidth << "/" << row.unitBits << " " << row.name);
        const OtherRow widths(row.dataWidth, row.unitBits);
        EXPECT_EQ(row.reading, layoutForReading(widths, text(row.name)));
        EXPECT_EQ(row.writing, layoutForWriting(widths, text(row.name)));
    }
}

TEST(UnitLayouts, TheDevicesAreasAreBitsAndWordsAndAnyOtherNameHasNoUnits)
{
    const std::map<UnitLayout, std::vector<const char*>> names = {
        {BIT_UNIT, {"MX", "IX", "QX"}},
        {WORD_UNIT, {"MW", "IW", "QW"}},
        {NO_UNITS, {"MW_bit", "MX_bit", "MW_D", "mw", "XX", ""}},
    };
    for (const auto& [layout, itsNames] : names) {
        for (const char* name : itsNames) {
            EXPECT_EQ(layout, layoutForReading(areaRow(text(name)), text(name))) << name;
            EXPECT_EQ(layout, layoutForWriting(areaRow(text(name)), text(name))) << name;
        }
    }
}
