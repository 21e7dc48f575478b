#include "dataAreas.h"
#include "cacheHelpers.h"

namespace {

class DataAreas : public DriverTest
{
protected:
    int indexOf(int station, const char* regName, int address)
    {
        return getIndexOfDataArea(station, text(regName), address, units);
    }
    int indexAfter(int previous, int station, const char* regName, int address)
    {
        return getIndexOfDataAreaAfter(previous, station, text(regName), address, units);
    }

    QList<_DATA_> units;
};

} // namespace

TEST_F(DataAreas, AMissingRecordIsAppendedWithAllElseZero)
{
    EXPECT_EQ(0, indexOf(5, "MW", 3010));
    ASSERT_EQ(1, int(units.size()));
    const _DATA_& unit = units.at(0);
    EXPECT_EQ(5, unit.station);
    EXPECT_EQ(text("MW"), unit.regName);
    EXPECT_EQ(3010, unit.address);
    EXPECT_EQ(0, int(unit.spare));
    EXPECT_EQ(0, int(unit.writePending));
    EXPECT_EQ(0u, unit.pendingBitWrites);
    EXPECT_EQ(0u, unit.monitorFlags);
    EXPECT_EQ(0u, unit.bitMonitorMask);
    EXPECT_EQ(Bytes({0, 0, 0, 0}), imageBytes(unit.readImage));
    EXPECT_EQ(Bytes({0, 0, 0, 0}), imageBytes(unit.writeImage));
}

TEST_F(DataAreas, TheSameKeyTwiceGivesTheSameIndexAndOneRecord)
{
    indexOf(1, "IX", 0);
    const int first = indexOf(1, "MW", 3010);
    EXPECT_EQ(1, first);
    EXPECT_EQ(first, indexOf(1, "MW", 3010));
    EXPECT_EQ(2, int(units.size()));
}

TEST_F(DataAreas, AFoundRecordIsLeftAsItIs)
{
    putUnit(1, "MW", 3010, 0x1234, 1, 9);
    EXPECT_EQ(0, getIndexOfDataArea(1, text("MW"), 3010, driver.dataAreas));
    EXPECT_EQ(Marks({{1, "MW", 3010, 1, 9}}), allMarks());
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 3010));
}

TEST_F(DataAreas, KeysThatDifferInOnePartOnlyAreDifferentRecords)
{
    EXPECT_EQ(0, indexOf(1, "MW", 10));
    EXPECT_EQ(1, indexOf(2, "MW", 10));
    EXPECT_EQ(2, indexOf(1, "IW", 10));
    EXPECT_EQ(3, indexOf(1, "MW", 11));
    EXPECT_EQ(4, indexOf(1, "mw", 10));
    EXPECT_EQ(5, indexOf(1, "MW_bit", 10));
    EXPECT_EQ(6, indexOf(1, "", 10));
    EXPECT_EQ(7, int(units.size()));
    EXPECT_EQ(0, indexOf(1, "MW", 10));
    EXPECT_EQ(4, indexOf(1, "mw", 10));
}

TEST_F(DataAreas, AnyNumberIsAKey)
{
    const int numbers[] = {LOWEST, -1, 0, HIGHEST};
    int next = 0;
    for (int station : numbers) {
        for (int address : numbers)
            EXPECT_EQ(next++, indexOf(station, "MW", address));
    }
    EXPECT_EQ(0, indexOf(LOWEST, "MW", LOWEST));
    EXPECT_EQ(15, indexOf(HIGHEST, "MW", HIGHEST));
}

TEST_F(DataAreas, TheFirstOfTwoEqualRecordsIsTheAnswer)
{
    _DATA_ unit;
    unit.station = 1;
    unit.regName = text("QW");
    unit.address = 4;
    indexOf(1, "QW", 3);
    units.append(unit);
    units.append(unit);
    EXPECT_EQ(1, indexOf(1, "QW", 4));
}

TEST_F(DataAreas, OnlyTheListHandedInIsSearchedAndGrows)
{
    putUnit(1, "MW", 3010, 1);
    putUnit(1, "MW", 3011, 1);
    EXPECT_EQ(0, indexOf(1, "MW", 3011));
    EXPECT_EQ(1, int(units.size()));
    EXPECT_EQ(2, int(driver.dataAreas.size()));
}

TEST_F(DataAreas, AWalkFindsTheSameRecordsFromWhereverItComes)
{
    const int scattered[] = {12, 10, 11, 14, 13};
    for (int address : scattered)
        indexOf(1, "MW", address);
    for (int previous = -1; previous <= int(units.size()); ++previous) {
        SCOPED_TRACE(previous);
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(i, indexAfter(previous, 1, "MW", scattered[i]));
    }
    EXPECT_EQ(5, int(units.size()));
}

TEST_F(DataAreas, AWalkThroughAnEmptyListAppendsOneRecordAStep)
{
    int index = -1;
    for (int i = 0; i < 3; ++i) {
        index = indexAfter(index, 1, "QX", 8 + i);
        EXPECT_EQ(i, index);
    }
    ASSERT_EQ(3, int(units.size()));
    EXPECT_EQ(8, units.at(0).address);
    EXPECT_EQ(10, units.at(2).address);
}

TEST_F(DataAreas, AWalkTakesNoNeighbourOfAnotherKey)
{
    indexOf(1, "MW", 10);
    indexOf(2, "MW", 11);
    EXPECT_EQ(2, indexAfter(0, 1, "MW", 11));
    EXPECT_EQ(3, indexAfter(0, 2, "IW", 11));
    EXPECT_EQ(4, indexAfter(0, 2, "MW", 12));
    EXPECT_EQ(1, indexAfter(0, 2, "MW", 11));
}

TEST_F(DataAreas, ClearingTakesEveryMarkAndPendingBitOffEveryUnit)
{
    for (int i = 0; i < 3; ++i) {
        const int index = putUnit(i, "MW", 3000, 7, 0xFFFFFFFFu, 0xFFFFFFFFu);
        driver.dataAreas[index].pendingBitWrites = 0xFFFFFFFFu;
    }
    clearMonitorFlags();
    EXPECT_EQ(Marks({{0, "MW", 3000, 0, 0}, {1, "MW", 3000, 0, 0}, {2, "MW", 3000, 0, 0}}),
              allMarks());
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(0u, driver.dataAreas.at(i).pendingBitWrites);
}

TEST_F(DataAreas, ClearingMarksKeepsValuesAndPendingWrites)
{
    const int index = putPendingWrite(1, "MW", 3000, 0x1234, 0x5678);
    clearMonitorFlags();
    const _DATA_& unit = driver.dataAreas.at(index);
    EXPECT_EQ(1, int(unit.writePending));
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), imageBytes(unit.readImage));
    EXPECT_EQ(Bytes({0x78, 0x56, 0, 0}), imageBytes(unit.writeImage));
}

TEST_F(DataAreas, ClearingMarksOfAnEmptyCacheMakesNoRecord)
{
    clearMonitorFlags();
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(DataAreas, TheHostSeesTheReadValueWhileNoWriteIsPending)
{
    _DATA_ unit;
    unit.writeImage[0] = 9;
    EXPECT_EQ(unit.readImage, shownImage(unit));
}

TEST_F(DataAreas, TheHostSeesItsOwnWriteWhileItIsPending)
{
    _DATA_ unit;
    unit.readImage[0] = 9;
    for (int pending : {1, 2, 255}) {
        unit.writePending = static_cast<quint8>(pending);
        EXPECT_EQ(unit.writeImage, shownImage(unit)) << pending;
    }
}
