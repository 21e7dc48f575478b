#include "localStore.h"
#include "toldHost.h"

namespace {

class LocalStore : public ToldHostTest
{
protected:
    void store(const char* regName, int addr, int count, std::vector<unsigned char> values)
    {
        write_saveDataToArea(STATION, text(regName), addr, count, values.data());
    }
};

} // namespace

TEST_F(LocalStore, AWordIsPendingLowByteFirst)
{
    store("MW", 10, 1, {0x34, 0x12});
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), written("MW", 10));
    EXPECT_EQ(1, pending("MW", 10));
}

TEST_F(LocalStore, ABitIsPendingInTheFirstByte)
{
    store("QX", 10, 1, {1});
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("QX", 10));
    EXPECT_EQ(1, pending("QX", 10));
}

TEST_F(LocalStore, TheValueReadFromThePlcIsKept)
{
    putUnit(STATION, "MW", 10, 0x04030201);
    putUnit(STATION, "MX", 3000, 1);
    store("MW", 10, 1, {0x34, 0x12});
    store("MX", 3000, 1, {0});
    EXPECT_EQ((Bytes{1, 2, 3, 4}), read("MW", 10));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), read("MX", 3000));
}

TEST_F(LocalStore, OnlyTheElementsOwnBytesAreStored)
{
    putPendingWrite(STATION, "MW", 10, 0, 0xDDCCBBAA);
    putPendingWrite(STATION, "QX", 10, 0, 0xDDCCBBAA);
    store("MW", 10, 1, {1, 2});
    store("QX", 10, 1, {1});
    EXPECT_EQ((Bytes{1, 2, 0xCC, 0xDD}), written("MW", 10));
    EXPECT_EQ((Bytes{1, 0xBB, 0xCC, 0xDD}), written("QX", 10));
}

TEST_F(LocalStore, ElementsGoToNeighbouringUnits)
{
    store("QW", 5, 3, {1, 0, 2, 0, 3, 4});
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("QW", 5));
    EXPECT_EQ((Bytes{2, 0, 0, 0}), written("QW", 6));
    EXPECT_EQ((Bytes{3, 4, 0, 0}), written("QW", 7));
    store("QX", 5, 2, {0, 1});
    EXPECT_EQ((Bytes{0, 0, 0, 0}), written("QX", 5));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("QX", 6));
    EXPECT_EQ(5, int(driver.dataAreas.size()));
}

TEST_F(LocalStore, OnlyTheUnitWithTheWholeKeyIsTouched)
{
    putUnit(STATION + 1, "MW", 10, 1);
    putUnit(STATION, "QW", 10, 1);
    store("MW", 10, 1, {2, 0});
    EXPECT_EQ(0, cachedUnit(STATION + 1, "MW", 10).writePending);
    EXPECT_EQ(0, pending("QW", 10));
    EXPECT_EQ(3, int(driver.dataAreas.size()));
}

TEST_F(LocalStore, AMonitoredWordIsReported)
{
    putUnit(STATION, "MW", 10, 0, 1);
    putUnit(STATION, "MW", 11, 0, 0);
    putUnit(STATION, "MW", 12, 0, 1);
    store("MW", 10, 3, {1, 0, 1, 0, 1, 0});
    EXPECT_EQ((Notifications{told("MW", 10), told("MW", 12)}), takeNotifications());
}

TEST_F(LocalStore, ABitIsReportedWhetherItIsMonitoredOrNot)
{
    putUnit(STATION, "MX", 3000, 0, 1);
    store("MX", 3000, 2, {1, 1});
    EXPECT_EQ((Notifications{told("MX", 3000), told("MX", 3001)}), takeNotifications());
}

TEST_F(LocalStore, OnlyElementsThatDifferFromTheReadValueAreReported)
{
    for (int address = 10; address < 13; ++address) {
        putUnit(STATION, "MW", address, 0x1234, 1);
        putUnit(STATION, "QX", address, 1, 1);
    }
    store("MW", 10, 3, {0x34, 0x12, 0x35, 0x12, 0x34, 0x13});
    EXPECT_EQ((Notifications{told("MW", 11), told("MW", 12)}), takeNotifications());
    store("QX", 10, 3, {1, 0, 1});
    EXPECT_EQ((Notifications{told("QX", 11)}), takeNotifications());
    EXPECT_EQ(1, pending("MW", 10));
    EXPECT_EQ(1, pending("QX", 10));
}

TEST_F(LocalStore, APendingValueIsWhatANewOneIsComparedWith)
{
    const int word = putPendingWrite(STATION, "MW", 10, 0x1111, 0x2222);
    driver.dataAreas[word].monitorFlags = 1;
    putPendingWrite(STATION, "QX", 10, 0, 1);
    store("MW", 10, 1, {0x22, 0x22});
    store("QX", 10, 1, {1});
    EXPECT_EQ(Notifications(), takeNotifications());
    store("MW", 10, 1, {0x11, 0x11});
    store("QX", 10, 1, {0});
    EXPECT_EQ((Notifications{told("MW", 10), told("QX", 10)}), takeNotifications());
}

TEST_F(LocalStore, AnEarlierSettledWriteIsNotComparedWith)
{
    const int word = putPendingWrite(STATION, "MW", 10, 0x1111, 0x2222);
    driver.dataAreas[word].monitorFlags = 1;
    driver.dataAreas[word].writePending = 0;
    const int bit = putPendingWrite(STATION, "QX", 10, 0, 1);
    driver.dataAreas[bit].writePending = 0;
    store("MW", 10, 1, {0x11, 0x11});
    store("QX", 10, 1, {0});
    EXPECT_EQ(Notifications(), takeNotifications());
    EXPECT_EQ((Bytes{0x11, 0x11, 0, 0}), written("MW", 10));
}

TEST_F(LocalStore, BitBytesAreComparedAndStoredAsTheyAre)
{
    putUnit(STATION, "QX", 10, 1);
    store("QX", 10, 1, {2});
    EXPECT_EQ((Notifications{told("QX", 10)}), takeNotifications());
    EXPECT_EQ((Bytes{2, 0, 0, 0}), written("QX", 10));
}

TEST_F(LocalStore, BitsOfAWordAreReportedWhereTheyDiffer)
{
    putUnit(STATION, "MW", 10, 0x0101, 1, 0x8103);
    store("MW", 10, 1, {0x02, 0x81}); // bits 0, 1 and 15 differ, bit 8 does not
    EXPECT_EQ((Notifications{told("MW_bit", 160), told("MW_bit", 161), told("MW_bit", 175),
                             told("MW", 10)}),
              takeNotifications());
}

TEST_F(LocalStore, TheHostIsToldBeforeTheValueIsStored)
{
    putUnit(STATION, "MW", 10, 0x1111, 1);
    int seen = -1;
    tellTo([&] { seen = shown("MW", 10); });
    store("MW", 10, 1, {0x22, 0x22});
    EXPECT_EQ(0x1111, seen);

    seen = -1;
    tellTo([&] { seen = shown("QX", 5); });
    store("QX", 5, 1, {1});
    EXPECT_EQ(0, seen);
}

TEST_F(LocalStore, ACacheThatGrowsInsideTheCallbackTakesTheValuesAllTheSame)
{
    putUnit(STATION, "MW", 10, 0, 1);
    int fresh = 5000;
    tellTo([&] {
        unsigned char values[64];
        intf_getData(STATION, text("IX"), fresh += 64, 64, values);
    });
    store("MW", 10, 2, {1, 0, 2, 0});
    store("QX", 10, 2, {1, 1});
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("MW", 10));
    EXPECT_EQ((Bytes{2, 0, 0, 0}), written("MW", 11));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("QX", 10));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("QX", 11));
}

TEST_F(LocalStore, TheQueueIsNotLockedWhileTheHostIsTold)
{
    bool free = false;
    tellTo([&] {
        free = driver.queueMutex.tryLock();
        if (free) driver.queueMutex.unlock();
    });
    store("QX", 10, 1, {1});
    EXPECT_TRUE(free);
}

TEST_F(LocalStore, WithoutACallbackTheValuesAreStoredAllTheSame)
{
    intf_setAddrValueChangeCallBack(nullptr);
    putUnit(STATION, "MW", 10, 0, 1);
    store("MW", 10, 1, {1, 0});
    store("QX", 10, 1, {1});
    EXPECT_EQ(1, pending("MW", 10));
    EXPECT_EQ(1, pending("QX", 10));
}

TEST_F(LocalStore, PendingBitWritesAreNotCountedForWholeUnits)
{
    store("MW", 10, 1, {1, 0});
    store("QX", 10, 1, {1});
    EXPECT_EQ(0u, unit("MW", 10).pendingBitWrites);
    EXPECT_EQ(0u, unit("QX", 10).pendingBitWrites);
}

TEST_F(LocalStore, AnUnknownAreaStoresNothing)
{
    for (const char* area : {"", "XX", "mw", "MW_bit", "MX_bit", "MW_W"}) {
        store(area, 10, 2, {1, 1, 1, 1});
        EXPECT_EQ(0, int(driver.dataAreas.size())) << area;
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(LocalStore, NoElementsStoreNothing)
{
    for (const char* area : {"MW", "QX"}) {
        for (int count : {0, -1, int(LOWEST)}) {
            store(area, 10, count, {1, 1});
            EXPECT_EQ(0, int(driver.dataAreas.size())) << area << " " << count;
        }
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(LocalStore, AddressesAreNotChecked)
{
    for (const char* area : {"MW", "QX"}) {
        for (int address : {-3, int(LOWEST), int(HIGHEST)}) {
            store(area, address, 1, {1, 0});
            EXPECT_EQ(1, pending(area, address));
        }
    }
}
