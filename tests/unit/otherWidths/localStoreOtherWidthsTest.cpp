#include "writtenArea.h"

namespace {

class LocalStoreOtherWidths : public WrittenAreaTest
{
};

struct STORED_CASE
{
    const char* dataWidth;
    std::vector<const char*> unitBits;
    std::vector<unsigned char> values; ///< of two elements
    std::vector<Bytes> units;          ///< from V 10 on
};

const STORED_CASE STORED[] = {
    {"8", {"8", "16", "1", ""}, {5, 6}, {{5, 0, 0, 0}, {6, 0, 0, 0}}},
    {"16", {"8"}, {1, 2, 3, 4}, {{1, 0, 0, 0}, {2, 0, 0, 0}, {3, 0, 0, 0}, {4, 0, 0, 0}}},
    {"16", {"16", "32", "1", ""}, {1, 2, 3, 4}, {{1, 2, 0, 0}, {3, 4, 0, 0}}},
    {"32", {"32", "8", "1", ""}, {1, 2, 3, 4, 5, 6, 7, 8}, {{1, 2, 3, 4}, {5, 6, 7, 8}}},
    {"32",
     {"16"},
     {1, 2, 3, 4, 5, 6, 7, 8},
     {{1, 2, 0, 0}, {3, 4, 0, 0}, {5, 6, 0, 0}, {7, 8, 0, 0}}},
};

} // namespace

TEST_F(LocalStoreOtherWidths, ElementsTakeTheUnitsAndBytesOfTheirLayout)
{
    for (const STORED_CASE& tested : STORED) {
        for (const char* unitBits : tested.unitBits) {
            for (const char* name : {"V", "V_D"}) {
                SCOPED_TRACE(testing::Message() << tested.dataWidth << "/" << unitBits);
                driver.dataAreas.clear();
                store(tested.dataWidth, unitBits, name, 10, 2, tested.values);
                ASSERT_EQ(tested.units.size(), size_t(driver.dataAreas.size()));
                for (size_t i = 0; i < tested.units.size(); ++i) {
                    EXPECT_EQ(tested.units[i], written(10 + int(i)));
                    EXPECT_EQ(1, pending(10 + int(i)));
                }
            }
        }
    }
}

TEST_F(LocalStoreOtherWidths, AByteIsReportedWhenItDiffers)
{
    putUnit(STATION, "V", 10, 5, UNIT, 0xFF);
    putUnit(STATION, "V", 11, 5, UNIT, 0xFF);
    store("8", "8", "V", 10, 2, {5, 0x85});
    EXPECT_EQ((Notifications{told("V_bit", 95), told("V_B", 11)}), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, AByteIsComparedWithThePendingOne)
{
    const int index = putPendingWrite(STATION, "V", 10, 1, 2);
    driver.dataAreas[index].monitorFlags = UNIT;
    store("8", "8", "V", 10, 1, {2});
    EXPECT_EQ(Notifications(), takeNotifications());
    store("8", "8", "V", 10, 1, {1});
    EXPECT_EQ((Notifications{told("V_B", 10)}), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, AWordOfByteUnitsIsReportedByteByByte)
{
    putUnit(STATION, "V", 10, 1, PAIR_FIRST);
    putUnit(STATION, "V", 11, 2, PAIR_SECOND);
    store("16", "8", "V_W", 10, 1, {1, 3});
    EXPECT_EQ((Notifications{told("V_W", 10)}), takeNotifications());
    store("16", "8", "V_W", 10, 1, {4, 5});
    EXPECT_EQ((Notifications{told("V_W", 10), told("V_W", 10)}), takeNotifications());
    store("16", "8", "V_W", 10, 1, {4, 5});
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, ADoubleUnitIsReportedWhenAnyByteDiffers)
{
    for (int byte = 0; byte < 4; ++byte) {
        putUnit(STATION, "V", byte, 0x04030201, UNIT);
        std::vector<unsigned char> values = {1, 2, 3, 4};
        store("32", "32", "V", byte, 1, values);
        EXPECT_EQ(Notifications(), takeNotifications());
        values[size_t(byte)] = 9;
        store("32", "32", "V", byte, 1, values);
        EXPECT_EQ((Notifications{told("V", byte)}), takeNotifications());
    }
}

TEST_F(LocalStoreOtherWidths, BitsOfADoubleUnitAreReportedUpToTheHighest)
{
    putUnit(STATION, "V", 2, 0x00000001, 0, 0x80010001);
    store("32", "32", "V", 2, 1, {1, 0, 1, 0x80});
    EXPECT_EQ((Notifications{told("V_bit", 80), told("V_bit", 95)}), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, ADoubleOfWordUnitsIsReportedOnceAtItsFirstUnit)
{
    for (int byte = 0; byte < 4; ++byte) {
        driver.dataAreas.clear();
        putUnit(STATION, "V", 10, 0x0201, UNIT);
        putUnit(STATION, "V", 11, 0x0403, UNIT);
        std::vector<unsigned char> values = {1, 2, 3, 4};
        store("32", "16", "V_D", 10, 1, values);
        EXPECT_EQ(Notifications(), takeNotifications());
        values[size_t(byte)] = 9;
        store("32", "16", "V_D", 10, 1, values);
        EXPECT_EQ((Notifications{told("V", 10)}), takeNotifications());
    }
}

TEST_F(LocalStoreOtherWidths, ADoubleOfWordUnitsIsComparedUnitByUnitWithWhatTheHostSees)
{
    const int low = putPendingWrite(STATION, "V", 10, 0x9999, 0x0201);
    driver.dataAreas[low].monitorFlags = UNIT;
    putUnit(STATION, "V", 11, 0x0403);
    store("32", "16", "V", 10, 1, {1, 2, 3, 4});
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, ReadValuesAreKept)
{
    putUnit(STATION, "V", 10, 0x04030201);
    putUnit(STATION, "V", 11, 0x08070605);
    for (const char* width : {"8", "16", "32"}) {
        for (const char* unitBits : {"8", "16", "32"})
            store(width, unitBits, "V", 10, 1, {9, 9, 9, 9});
    }
    EXPECT_EQ((Bytes{1, 2, 3, 4}), read(10));
    EXPECT_EQ((Bytes{5, 6, 7, 8}), read(11));
}

TEST_F(LocalStoreOtherWidths, ASuffixedBitIsStoredUnderItsAreaAndReportedByItsName)
{
    store("1", "1", "V_B", 10, 1, {1});
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written(10));
    EXPECT_EQ((Notifications{told("V_B", 10)}), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, ASuffixedWordIsStoredAndReportedUnderItsArea)
{
    putUnit(STATION, "V", 10, 0, UNIT);
    store("16", "16", "V_W", 10, 1, {1, 2});
    EXPECT_EQ((Bytes{1, 2, 0, 0}), written(10));
    EXPECT_EQ((Notifications{told("V", 10)}), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, AWidthThatNobodyKnowsStoresNothing)
{
    for (const char* width : {"", "0", "2", "64", "016", " 16"}) {
        for (const char* unitBits : {"", "8", "16"})
            store(width, unitBits, "V", 10, 2, {1, 1, 1, 1, 1, 1, 1, 1});
        EXPECT_EQ(0, int(driver.dataAreas.size())) << width;
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(LocalStoreOtherWidths, NoElementsStoreNothing)
{
    for (const char* width : {"1", "8", "16", "32"}) {
        for (const char* unitBits : {"1", "8", "16", "32"}) {
            for (int count : {0, -1}) {
                store(width, unitBits, "V", 10, count, {1, 1, 1, 1});
                store(width, unitBits, "V_bit", 10, count, {1, 1, 1, 1});
            }
        }
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}
