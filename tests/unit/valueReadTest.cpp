#include "cacheHelpers.h"

namespace {

enum { GUARD = 8, UNTOUCHED = 0xEE };

class ValueRead : public DriverTest
{
protected:
    /// What intf_getData wrote: the bytes in front of the last one that is still UNTOUCHED.
    static Bytes read(const char* regName, int address, int count)
    {
        std::vector<unsigned char> out(size_t(2 * qMax(count, 0) + GUARD), UNTOUCHED);
        EXPECT_EQ(1, intf_getData(1, text(regName), address, count, out.data()));
        while (!out.empty() && out.back() == UNTOUCHED)
            out.pop_back();
        return Bytes(out.begin(), out.end());
    }
};

} // namespace

TEST_F(ValueRead, WordsNeverReadAreZeroAndLeaveRecordsBehind)
{
    EXPECT_EQ(Bytes({0, 0, 0, 0}), read("MW", 10, 2));
    EXPECT_EQ(Marks({{1, "MW", 10, 0, 0}, {1, "MW", 11, 0, 0}}), allMarks());
}

TEST_F(ValueRead, WordsComeLowByteFirstAndNoByteMore)
{
    for (const char* name : {"MW", "IW", "QW"}) {
        putUnit(1, name, 3010, 0xAABB1234u);
        putUnit(1, name, 3011, 0xCCDD5678u);
        EXPECT_EQ(Bytes({0x34, 0x12, 0x78, 0x56}), read(name, 3010, 2)) << name;
    }
}

TEST_F(ValueRead, BitsComeOneByteEachAndNoByteMore)
{
    for (const char* name : {"MX", "IX", "QX"}) {
        for (int i = 0; i < 8; ++i)
            putUnit(1, name, 3 + i, 0x37u >> i & 1u);
        EXPECT_EQ(Bytes({1, 1, 1, 0, 1, 1, 0, 0}), read(name, 3, 8)) << name;
    }
}

TEST_F(ValueRead, AnUnconfirmedWriteComesInPlaceOfTheReadValue)
{
    initialise();
    putUnit(1, "MW", 10, 0x1111);
    unsigned char values[] = {0x34, 0x12};
    intf_setData(1, text("MW"), 10, 1, values, 0);
    EXPECT_EQ(Bytes({0x34, 0x12}), read("MW", 10, 1));
}

TEST_F(ValueRead, AConfirmedWriteCountsNoLonger)
{
    const int index = putPendingWrite(1, "MW", 10, 0x1111, 0x2222);
    EXPECT_EQ(Bytes({0x22, 0x22}), read("MW", 10, 1));
    driver.dataAreas[index].writePending = 0;
    EXPECT_EQ(Bytes({0x11, 0x11}), read("MW", 10, 1));
}

TEST_F(ValueRead, EachUnitShowsItsOwnUnconfirmedWrite)
{
    putUnit(1, "QX", 0, 1);
    putPendingWrite(1, "QX", 1, 0, 1);
    putPendingWrite(1, "QX", 2, 1, 0);
    EXPECT_EQ(Bytes({1, 1, 0}), read("QX", 0, 3));
}

TEST_F(ValueRead, OnlyTheStationAskedForIsRead)
{
    putUnit(2, "MW", 10, 0x1111);
    putUnit(1, "MW", 10, 0x2222);
    EXPECT_EQ(Bytes({0x22, 0x22}), read("MW", 10, 1));
}

TEST_F(ValueRead, ReadingChangesNoRecord)
{
    const int index = putPendingWrite(1, "MW", 10, 0x1111, 0x2222);
    driver.dataAreas[index].monitorFlags = 3;
    driver.dataAreas[index].bitMonitorMask = 5;
    read("MW", 10, 1);
    EXPECT_EQ(Marks({{1, "MW", 10, 3, 5}}), allMarks());
    EXPECT_EQ(1, int(driver.dataAreas.at(index).writePending));
    EXPECT_EQ(Bytes({0x11, 0x11, 0, 0}), readBytes(1, "MW", 10));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(ValueRead, AnUnknownAreaLeavesTheBufferUntouched)
{
    for (const char* name : {"MW_bit", "MX_bit", "MW_D", "mw", "XX", ""})
        EXPECT_EQ(Bytes(), read(name, 10, 4)) << name;
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(ValueRead, ACountBelowOneLeavesTheBufferUntouched)
{
    for (int count : {0, -1, int(LOWEST)}) {
        EXPECT_EQ(Bytes(), read("MW", 10, count));
        EXPECT_EQ(Bytes(), read("MX", 10, count));
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(ValueRead, WithoutABufferNothingIsRead)
{
    EXPECT_EQ(1, intf_getData(1, text("MW"), 10, 2, 0));
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(ValueRead, NegativeAddressesAreReadAsTheyAre)
{
    putUnit(1, "MW", -1, 0x1111);
    putUnit(1, "MW", 0, 0x2222);
    EXPECT_EQ(Bytes({0x11, 0x11, 0x22, 0x22}), read("MW", -1, 2));
}

TEST_F(ValueRead, AddressesWrapAroundBehindTheHighest)
{
    putUnit(1, "MW", HIGHEST, 0x1111);
    putUnit(1, "MW", LOWEST, 0x2222);
    EXPECT_EQ(Bytes({0x11, 0x11, 0x22, 0x22}), read("MW", HIGHEST, 2));
    putUnit(1, "QX", HIGHEST, 1);
    putUnit(1, "QX", LOWEST, 1);
    EXPECT_EQ(Bytes({1, 1}), read("QX", HIGHEST, 2));
}
