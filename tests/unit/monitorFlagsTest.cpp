#include "monitorFlags.h"
#include "cacheHelpers.h"
#include "replyDecoding.h"

namespace {

class MonitorFlags : public DriverTest
{
protected:
    void mark(const char* regName, int start, int count)
    {
        _setDataAreaMonitorFlag(1, text(regName), start, count);
    }
};

} // namespace

TEST_F(MonitorFlags, AWordVariableMarksEveryWordItSpans)
{
    mark("MW", 10, 3);
    EXPECT_EQ(Marks({{1, "MW", 10, 1, 0}, {1, "MW", 11, 1, 0}, {1, "MW", 12, 1, 0}}), allMarks());
}

TEST_F(MonitorFlags, EveryAreaIsMarkedUnitByUnit)
{
    for (const char* name : {"MW", "IW", "QW", "MX", "IX", "QX"}) {
        driver.dataAreas.clear();
        mark(name, 3015, 2);
        EXPECT_EQ(Marks({{1, name, 3015, 1, 0}, {1, name, 3016, 1, 0}}), allMarks());
    }
}

TEST_F(MonitorFlags, ANewlyMarkedUnitIsZeroOtherwise)
{
    mark("MW", 10, 1);
    const _DATA_ unit = cachedUnit(1, "MW", 10);
    EXPECT_EQ(0, int(unit.writePending));
    EXPECT_EQ(0u, unit.pendingBitWrites);
    EXPECT_EQ(Bytes({0, 0, 0, 0}), imageBytes(unit.readImage));
}

TEST_F(MonitorFlags, AMarkIsAddedToThoseTheUnitHas)
{
    putUnit(1, "MW", 10, 0x1234, 0x40, 0x8001);
    mark("MW", 10, 1);
    EXPECT_EQ(Marks({{1, "MW", 10, 0x41, 0x8001}}), allMarks());
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 10));
}

TEST_F(MonitorFlags, MarkingTwiceIsMarkingOnce)
{
    mark("QX", 8, 2);
    mark("QX", 9, 1);
    EXPECT_EQ(Marks({{1, "QX", 8, 1, 0}, {1, "QX", 9, 1, 0}}), allMarks());
}

TEST_F(MonitorFlags, OnlyUnitsOfTheStationAreMarked)
{
    putUnit(2, "MW", 10, 0);
    mark("MW", 10, 1);
    EXPECT_EQ(Marks({{2, "MW", 10, 0, 0}, {1, "MW", 10, 1, 0}}), allMarks());
}

TEST_F(MonitorFlags, ANameThatIsNoAreasMarksNothing)
{
    putUnit(1, "MW", 0, 0);
    for (const char* name : {"MW_bit", "MX_bit", "MW_B", "MW_D", "mw", "XX", ""})
        mark(name, 0, 4);
    EXPECT_EQ(Marks({{1, "MW", 0, 0, 0}}), allMarks());
}

TEST_F(MonitorFlags, ACountBelowOneMarksNothing)
{
    for (int count : {0, -1, -16, int(LOWEST)}) {
        mark("MW", 10, count);
        mark("MX", 10, count);
    }
    EXPECT_EQ(Marks(), allMarks());
}

TEST_F(MonitorFlags, NegativeAddressesAreMarkedAsTheyAre)
{
    mark("IX", -2, 3);
    EXPECT_EQ(Marks({{1, "IX", -2, 1, 0}, {1, "IX", -1, 1, 0}, {1, "IX", 0, 1, 0}}), allMarks());
}

TEST_F(MonitorFlags, AddressesWrapAroundBehindTheHighest)
{
    mark("MW", HIGHEST, 2);
    EXPECT_EQ(Marks({{1, "MW", HIGHEST, 1, 0}, {1, "MW", LOWEST, 1, 0}}), allMarks());
}

TEST_F(MonitorFlags, AnEmptyKeyListTakesEveryMarkOffAndNothingIsReportedAnyMore)
{
    initialise();
    QList<KEY_ADDRESS> keys = {key(1, "MW", 3010, 1), key(1, "IX", 0, 1, -1)};
    intf_addrMerge(keys);
    EXPECT_EQ(Marks({{1, "MW", 3010, 1, 0}, {1, "IX", 0, 1, 0}}), allMarks());

    keys.clear();
    EXPECT_EQ(0, intf_addrMerge(keys));
    EXPECT_EQ(Marks({{1, "MW", 3010, 0, 0}, {1, "IX", 0, 0, 0}}), allMarks());

    analyzeFrameOfVal(bytes({1, 3, 2, 0, 1}), 1, 3, variable(1, "MW", 3010, 1));
    analyzeFrameOfVal(bytes({1, 4, 2, 0, 1}), 1, 3, variable(1, "IX", 0, 1));
    EXPECT_EQ(Notifications(), takeNotifications());
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "MW", 3010));
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "IX", 0));
}

TEST_F(MonitorFlags, ANewKeyListReplacesTheMarksAndKeepsTheValues)
{
    initialise();
    QList<KEY_ADDRESS> keys = {key(1, "MW", 3010, 2)};
    intf_addrMerge(keys);
    putUnit(1, "MW", 3010, 5, 1);
    keys = {key(1, "MW", 3011, 2)};
    intf_addrMerge(keys);
    EXPECT_EQ(Marks({{1, "MW", 3010, 0, 0}, {1, "MW", 3011, 1, 0}, {1, "MW", 3012, 1, 0}}),
              allMarks());
    EXPECT_EQ(Bytes({5, 0, 0, 0}), readBytes(1, "MW", 3010));
}
