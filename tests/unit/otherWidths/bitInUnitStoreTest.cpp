#include "writtenArea.h"

namespace {

/// "V_bit" variables: bits inside the byte or word units of an area V.
class BitInUnitStore : public WrittenAreaTest
{
protected:
    void queue(int station, const char* regName, int addr, int count, int times = 1)
    {
        for (int i = 0; i < times; ++i)
            driver.writeList.append(variable(station, regName, addr, count));
    }
};

} // namespace

TEST_F(BitInUnitStore, ABitOfAWordIsSetOrClearedInTheCurrentWord)
{
    putUnit(STATION, "V", 2, 0x0F0F);
    storeBits("16", 37, {1}); // 37 = 2 x 16 + 5
    EXPECT_EQ((Bytes{0x2F, 0x0F, 0, 0}), written(2));
    EXPECT_EQ(1, pending(2));
    EXPECT_EQ((Bytes{0x0F, 0x0F, 0, 0}), read(2));

    putUnit(STATION, "V", 3, 0x0F0F);
    storeBits("16", 57, {0}); // 57 = 3 x 16 + 9
    EXPECT_EQ((Bytes{0x0F, 0x0D, 0, 0}), written(3));
}

TEST_F(BitInUnitStore, ABitOfAByteIsSetOrClearedInTheCurrentByte)
{
    putUnit(STATION, "V", 4, 0x0F);
    storeBits("8", 37, {1}); // 37 = 4 x 8 + 5
    EXPECT_EQ((Bytes{0x2F, 0, 0, 0}), written(4));
    EXPECT_EQ(1, pending(4));
    EXPECT_EQ((Bytes{0x0F, 0, 0, 0}), read(4));
    storeBits("8", 33, {0});
    EXPECT_EQ((Bytes{0x2D, 0, 0, 0}), written(4));
}

TEST_F(BitInUnitStore, OnlyTheByteOneSetsABit)
{
    for (const char* unitBits : {"8", "16"}) {
        driver.dataAreas.clear();
        putUnit(STATION, "V", 0, 0xFF);
        storeBits(unitBits, 0, {2, 255, 1, 0});
        EXPECT_EQ((Bytes{0xF4, 0, 0, 0}), written(0)) << unitBits;
    }
}

TEST_F(BitInUnitStore, BitsRunOnIntoTheNextUnit)
{
    storeBits("16", 15, {1, 1});
    EXPECT_EQ((Bytes{0, 0x80, 0, 0}), written(0));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written(1));

    driver.dataAreas.clear();
    storeBits("8", 7, {1, 1});
    EXPECT_EQ((Bytes{0x80, 0, 0, 0}), written(0));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written(1));
    EXPECT_EQ(2, int(driver.dataAreas.size()));
}

TEST_F(BitInUnitStore, TheOtherByteOfAWordFallsBackToTheReadOne)
{
    putPendingWrite(STATION, "V", 0, 0x2211, 0x8844);
    storeBits("16", 0, {1});
    EXPECT_EQ((Bytes{0x45, 0x22, 0, 0}), written(0));

    putPendingWrite(STATION, "V", 1, 0x2211, 0x8844);
    storeBits("16", 24, {1});
    EXPECT_EQ((Bytes{0x11, 0x89, 0, 0}), written(1));
}

TEST_F(BitInUnitStore, AByteBuildsOnThePendingOne)
{
    putPendingWrite(STATION, "V", 0, 0x11, 0x44);
    storeBits("8", 0, {1});
    EXPECT_EQ((Bytes{0x45, 0, 0, 0}), written(0));
}

TEST_F(BitInUnitStore, AChangedBitIsReportedAsBitAndAsUnit)
{
    putUnit(STATION, "V", 2, 0, 1, 0xFFFF);
    storeBits("16", 41, {1});
    EXPECT_EQ((Notifications{told("V_bit", 41), told("V", 2)}), takeNotifications());

    driver.dataAreas.clear();
    putUnit(STATION, "V", 2, 0, 1, 0xFF);
    storeBits("8", 17, {1});
    EXPECT_EQ((Notifications{told("V_bit", 17), told("V_B", 2)}), takeNotifications());
}

TEST_F(BitInUnitStore, ABitThatIsAlreadySoIsPendingButNotReported)
{
    for (const char* unitBits : {"8", "16"}) {
        driver.dataAreas.clear();
        putUnit(STATION, "V", 0, 0x10, 1, 0xFF);
        storeBits(unitBits, 4, {1});
        EXPECT_EQ(Notifications(), takeNotifications());
        EXPECT_EQ(1, pending(0));
        EXPECT_EQ(1u << 8, pendingBits(0));
    }
}

TEST_F(BitInUnitStore, AFirstWriteSetsTheFirstMarkOfItsBit)
{
    storeBits("16", 0, {1});
    storeBits("16", 15, {1});
    EXPECT_EQ(0x40000001u, pendingBits(0));

    driver.dataAreas.clear();
    storeBits("8", 0, {1});
    storeBits("8", 7, {1});
    EXPECT_EQ(0x4001u, pendingBits(0));
}

TEST_F(BitInUnitStore, ASecondMarkIsSetWhenExactlyTwoWritesAreQueued)
{
    for (const char* unitBits : {"8", "16"}) {
        for (int queuedWrites : {0, 1, 2, 3}) {
            SCOPED_TRACE(queuedWrites);
            driver.dataAreas.clear();
            driver.writeList.clear();
            queue(STATION, "V_bit", 3, 1, queuedWrites);
            storeBits(unitBits, 3, {1});
            EXPECT_EQ(0x40u, pendingBits(0)) << "a first write looks at no queue";
            storeBits(unitBits, 3, {0});
            EXPECT_EQ(queuedWrites == 2 ? 0xC0u : 0x40u, pendingBits(0));
        }
    }
}

TEST_F(BitInUnitStore, TheHighestBitOfAWordHasASecondMarkToo)
{
    queue(STATION, "V_bit", 15, 1, 2);
    storeBits("16", 15, {1});
    storeBits("16", 15, {0});
    EXPECT_EQ(0xC0000000u, pendingBits(0));
}

TEST_F(BitInUnitStore, OnlyWritesWithTheCallsOwnKeyAreCounted)
{
    queue(STATION, "V_bit", 3, 1);
    queue(STATION + 1, "V_bit", 3, 1);
    queue(STATION, "V", 3, 1);
    queue(STATION, "v_bit", 3, 1);
    queue(STATION, "V_bit", 4, 1);
    queue(STATION, "V_bit", 3, 2);
    storeBits("16", 3, {1});
    storeBits("16", 3, {0});
    EXPECT_EQ(0x40u, pendingBits(0));
    queue(STATION, "V_bit", 3, 1);
    storeBits("16", 3, {1});
    EXPECT_EQ(0xC0u, pendingBits(0));
}

TEST_F(BitInUnitStore, TheWholeCallIsCountedAndNotItsElements)
{
    queue(STATION, "V_bit", 3, 2, 2);
    storeBits("16", 3, {1, 1});
    storeBits("16", 3, {0, 0});
    EXPECT_EQ(0x3C0u, pendingBits(0)); // bits 3 and 4, both marks
}

TEST_F(BitInUnitStore, TheQueueIsFreeAfterwards)
{
    storeBits("16", 3, {1});
    storeBits("16", 3, {0});
    ASSERT_TRUE(driver.queueMutex.tryLock());
    driver.queueMutex.unlock();
}

TEST_F(BitInUnitStore, AnotherUnitWidthStoresNothing)
{
    for (const char* unitBits : {"1", "32", "", "016"})
        storeBits(unitBits, 3, {1, 1});
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(BitInUnitStore, ABitNumberBelowZeroChangesNoBit)
{
    for (const char* unitBits : {"8", "16"}) {
        putUnit(STATION, "V", 0, 0x5A5A, 1, 0xFFFF);
        for (int addr : {-1, -4, -7}) {
            storeBits(unitBits, addr, {1});
            storeBits(unitBits, addr, {0});
        }
        EXPECT_EQ((Bytes{0x5A, 0x5A, 0, 0}), read(0));
        EXPECT_EQ(0u, pendingBits(0));
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(BitInUnitStore, AGroupBelowZeroIsAUnitLikeOthers)
{
    storeBits("16", -16, {1});
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written(-1));
    storeBits("8", -16, {1});
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written(-2));
}

TEST_F(BitInUnitStore, HugeAddressesAreUnitsLikeOthers)
{
    storeBits("16", HIGHEST, {1}); // bit 15
    EXPECT_EQ((Bytes{0, 0x80, 0, 0}), written(HIGHEST / 16));
    storeBits("8", HIGHEST, {1}); // bit 7
    EXPECT_EQ((Bytes{0x80, 0, 0, 0}), written(HIGHEST / 8));
}
