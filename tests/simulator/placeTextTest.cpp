#include "placeText.h"

#include <gtest/gtest.h>

// Addresses and numbers are those of the table in docs/wire.md.

namespace {

std::string troubleOf(const std::string& text)
{
    Place place;
    return parsePlace(text, place);
}

std::string rangeTrouble(const std::string& text)
{
    Place first;
    Place last;
    return parseRange(text, first, last);
}

} // namespace

TEST(PlaceText, AddressIsThatOfAUser)
{
    struct
    {
        const char* text;
        int station;
        Area area;
        int number;
    } const rows[] = {
        {"IW0", 1, AREA_IW, 0},       {"IW510", 1, AREA_IW, 255},
        {"QW40", 1, AREA_QW, 20},     {"QW510", 1, AREA_QW, 255},
        {"MW0", 1, AREA_MW, 3000},    {"MW100", 1, AREA_MW, 3050},
        {"MW8190", 1, AREA_MW, 7095}, {"IX8.1", 1, AREA_IX, 65},
        {"QX0.5", 1, AREA_QX, 5},     {"QX511.7", 1, AREA_QX, 4095},
        {"MX12.3", 1, AREA_MX, 3099}, {"MX7816.7", 1, AREA_MX, 65535},
        {"2:QW8", 2, AREA_QW, 4},     {"mw100", 1, AREA_MW, 3050},
        {"2:%qX0.5", 2, AREA_QX, 5},  {"247:MX0.0", 247, AREA_MX, 3000},
    };
    for (const auto& row : rows) {
        Place place;
        EXPECT_EQ("", parsePlace(row.text, place));
        EXPECT_EQ(row.station, place.station) << row.text;
        EXPECT_EQ(row.area, place.area) << row.text;
        EXPECT_EQ(row.number, place.number) << row.text;
    }
}

TEST(PlaceText, WrongAddressIsNamedWithItsFault)
{
    EXPECT_EQ("'MW101' is odd: a word starts at an even number", troubleOf("MW101"));
    EXPECT_EQ("'MW8192' is past the end of MW, whose last address is 8190", troubleOf("MW8192"));
    EXPECT_EQ("'IW512' is past the end of IW, whose last address is 510", troubleOf("IW512"));
    EXPECT_EQ("'QX512.0' is past the end of QX, whose last address is 511.7", troubleOf("QX512.0"));
    EXPECT_EQ("'MX7817.0' is past the end of MX, whose last address is 7816.7",
              troubleOf("MX7817.0"));
    EXPECT_EQ("'MW99999999999999999998' is past the end of MW, whose last address is 8190",
              troubleOf("2:MW99999999999999999998"));
    EXPECT_EQ("station '0' is not in 1 to 247", troubleOf("0:MW0"));
    EXPECT_EQ("station '248' is not in 1 to 247", troubleOf("248:MW0"));
    for (const char* text : {"", "M", "%", "%%MW0", "XW0", "MW", "MW-2", "MW1.0", "MW 2", "MW2x",
                             "MX12", "MX12.8", "MX12.", "MX.3", "MX12.33", "MX-1.0", ":MW0"})
        EXPECT_NE("", troubleOf(text)) << text;
}

TEST(PlaceText, RangeHasOneAreaAndAnOrder)
{
    Place first;
    Place last;
    EXPECT_EQ("", parseRange("2:MW500..MW600", first, last));
    EXPECT_EQ(2, first.station);
    EXPECT_EQ(3250, first.number);
    EXPECT_EQ(3300, last.number);
    EXPECT_EQ("", parseRange("MX12.3", first, last));
    EXPECT_EQ(3099, first.number);
    EXPECT_EQ(3099, last.number);
    EXPECT_EQ("", parseRange("MX12.3..MX12.3", first, last));
    EXPECT_EQ("'MW0..MX0.0' begins and ends in different areas", rangeTrouble("MW0..MX0.0"));
    EXPECT_EQ("'MW2..MW0' ends ahead of its begin", rangeTrouble("MW2..MW0"));
    for (const char* text : {"", "..", "MW0..", "..MW0", "MW0..2:MW4", "MW0...MW4", "MW0..MW9000"})
        EXPECT_NE("", rangeTrouble(text)) << text;
}

TEST(PlaceText, AssignedValueFitsItsPlace)
{
    struct
    {
        const char* text;
        int value;
    } const rows[] = {{"MW100=0", 0},        {"MW100=65535", 65535}, {"IW0=-1", 65535},
                      {"QW0=-32768", 32768}, {"MX12.3=1", 1},        {"IX0.0=0", 0}};
    for (const auto& row : rows) {
        PlaceValue assigned;
        EXPECT_EQ("", parseAssignment(row.text, assigned)) << row.text;
        EXPECT_EQ(row.value, assigned.value) << row.text;
    }
    for (const char* text : {"MW100", "MW100=", "=5", "MW100=65536", "MW100=-32769", "MW100=1.5",
                             "MX12.3=2", "MX12.3=-1", "MW100=5 ", "MW100=0x5"}) {
        PlaceValue assigned;
        EXPECT_NE("", parseAssignment(text, assigned)) << text;
    }
}
