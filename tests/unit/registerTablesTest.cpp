#include "areaClass.h"
#include "driverFixture.h"
#include "serviceForProtocol.h"

class RegisterTables : public DriverTest
{
};

namespace {

struct ExpectedArea
{
    const char* name;
    const char* columns[AREA_COLUMN_COUNT]; ///< format, min, max, width, access, unit bits
    bool bits;
};

const ExpectedArea EXPECTED[] = {
    {"MW", {"DDDD", "0", "8190", "16", "RW", "16"}, false},
    {"IW", {"DDDD", "0", "510", "16", "R", "16"}, false},
    {"QW", {"DDDD", "0", "510", "16", "RW", "16"}, false},
    {"MX", {"DDDDO", "0.0", "7816.7", "1", "RW", "1"}, true},
    {"IX", {"DDDDO", "0.0", "511.7", "1", "R", "1"}, true},
    {"QX", {"DDDDO", "0.0", "511.7", "1", "RW", "1"}, true},
};

const char* const NO_AREA[] = {"", "mw", "Mw", "M", "MWX", "MW ", " MW", "RWI", "MB", "QX_bit"};

} // namespace

TEST_F(RegisterTables, ColumnsAreInTheHostsOrder)
{
    EXPECT_EQ(0, FORMAT);
    EXPECT_EQ(1, MIN_TEXT);
    EXPECT_EQ(2, MAX_TEXT);
    EXPECT_EQ(3, DATA_WIDTH);
    EXPECT_EQ(4, ACCESS);
    EXPECT_EQ(5, UNIT_BITS);
    EXPECT_EQ(6, AREA_COLUMN_COUNT);
}

TEST_F(RegisterTables, NamesHaveTheirIndex)
{
    for (int i = 0; i < 6; ++i) {
        EXPECT_EQ(EXPECTED[i].name, areaName(i).toStdString());
        EXPECT_EQ(i, areaIndex(text(EXPECTED[i].name)));
    }
}

TEST_F(RegisterTables, RowsHoldWhatTheDeviceHas)
{
    for (int i = 0; i < 6; ++i) {
        for (int column = 0; column < AREA_COLUMN_COUNT; ++column) {
            SCOPED_TRACE(std::string(EXPECTED[i].name) + " column " + std::to_string(column));
            const char* expected = EXPECTED[i].columns[column];
            EXPECT_EQ(expected, areaRow(text(EXPECTED[i].name))[column].toStdString());
            EXPECT_EQ(expected, areaRow(i)[column].toStdString());
        }
    }
}

TEST_F(RegisterTables, SeventhRowIsEmpty)
{
    for (int column = 0; column < AREA_COLUMN_COUNT; ++column)
        EXPECT_EQ("", areaRow(6)[column].toStdString()) << "column " << column;
}

TEST_F(RegisterTables, UnknownNamesFindTheEmptyRow)
{
    for (const char* name : NO_AREA) {
        SCOPED_TRACE(name);
        EXPECT_EQ(6, areaIndex(text(name)));
        EXPECT_EQ(areaRow(6), areaRow(text(name)));
    }
}

TEST_F(RegisterTables, StateHoldsTheSameNamesInTheSameOrder)
{
    ASSERT_EQ(6, int(driver.regNames.size()));
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(EXPECTED[i].name, driver.regNames.at(i).toStdString());
}

TEST_F(RegisterTables, AnAreaIsOfBitsOrOfWords)
{
    for (const ExpectedArea& area : EXPECTED) {
        SCOPED_TRACE(area.name);
        EXPECT_EQ(area.bits, isBitArea(text(area.name)));
        EXPECT_EQ(!area.bits, isWordArea(text(area.name)));
    }
}

TEST_F(RegisterTables, UnknownNamesAreOfNeither)
{
    for (const char* name : NO_AREA) {
        SCOPED_TRACE(name);
        EXPECT_FALSE(isBitArea(text(name)));
        EXPECT_FALSE(isWordArea(text(name)));
    }
}
