#include "cacheHelpers.h"
#include "localStore.h"

namespace {

enum { STATION = 4 };

// Marks of a unit; see dataAreas.h.
enum { UNIT = 1, PAIR_FIRST = 2, PAIR_SECOND = 4 };

/// An area V of a device with other widths than this one's.
class LocalStoreOtherWidths : public DriverTest
{
protected:
    LocalStoreOtherWidths()
    {
        driver.callbackContext = CONTEXT;
    }

    void store(const char* dataWidth, const char* unitBits, const char* regName, int addr,
               int count, std::vector<unsigned char> values)
    {
        storeWritesOfArea(OtherRow(dataWidth, unitBits), STATION, text(regName), addr, count,
                          values.data());
    }

    static Bytes written(int address)
    {
        return imageBytes(cachedUnit(STATION, "V", address).writeImage);
    }

    static int pending(int address)
    {
        return cachedUnit(STATION, "V", address).writePending;
    }

    static Notification told(const char* regName, int address)
    {
        return {CONTEXT, STATION, regName, address};
    }
};

} // namespace

TEST_F(LocalStoreOtherWidths, AByteAreaTakesOneByteAUnit)
{
    for (const char* unitBits : {"8", "16", "1", ""}) {
        driver.dataAreas.clear();
        store("8", unitBits, "V", 10, 2, {5, 6});
        EXPECT_EQ((Bytes{5, 0, 0, 0}), written(10)) << unitBits;
        EXPECT_EQ((Bytes{6, 0, 0, 0}), written(11)) << unitBits;
        EXPECT_EQ(1, pending(10));
        EXPECT_EQ(1, pending(11));
        EXPECT_EQ(2, int(driver.dataAreas.size()));
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

TEST_F(LocalStoreOtherWidths, AWordOfByteUnitsTakesTwoUnits)
{
    store("16", "8", "V_W", 10, 2, {1, 2, 3, 4});
    ASSERT_EQ(4, int(driver.dataAreas.size()));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ((Bytes{i + 1, 0, 0, 0}), written(10 + i));
        EXPECT_EQ(1, pending(10 + i));
    }
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

TEST_F(LocalStoreOtherWidths, AWordUnitOfAnotherUnitWidthTakesTwoBytes)
{
    for (const char* unitBits : {"16", "32", "1", ""}) {
        driver.dataAreas.clear();
        store("16", unitBits, "V", 10, 2, {1, 2, 3, 4});
        EXPECT_EQ((Bytes{1, 2, 0, 0}), written(10)) << unitBits;
        EXPECT_EQ((Bytes{3, 4, 0, 0}), written(11)) << unitBits;
    }
}

TEST_F(LocalStoreOtherWidths, ADoubleUnitTakesFourBytes)
{
    for (const char* unitBits : {"32", "8", "1", ""}) {
        driver.dataAreas.clear();
        store("32", unitBits, "V_D", 10, 2, {1, 2, 3, 4, 5, 6, 7, 8});
        EXPECT_EQ((Bytes{1, 2, 3, 4}), written(10)) << unitBits;
        EXPECT_EQ((Bytes{5, 6, 7, 8}), written(11)) << unitBits;
        EXPECT_EQ(1, pending(11));
        EXPECT_EQ(2, int(driver.dataAreas.size()));
    }
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

TEST_F(LocalStoreOtherWidths, ADoubleOfWordUnitsTakesTwoUnits)
{
    store("32", "16", "V_D", 10, 2, {1, 2, 3, 4, 5, 6, 7, 8});
    ASSERT_EQ(4, int(driver.dataAreas.size()));
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ((Bytes{2 * i + 1, 2 * i + 2, 0, 0}), written(10 + i));
        EXPECT_EQ(1, pending(10 + i));
    }
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
    EXPECT_EQ((Bytes{1, 2, 3, 4}), readBytes(STATION, "V", 10));
    EXPECT_EQ((Bytes{5, 6, 7, 8}), readBytes(STATION, "V", 11));
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
