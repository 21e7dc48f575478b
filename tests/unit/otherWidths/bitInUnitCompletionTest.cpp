#include "writtenArea.h"

namespace {

int readByteWhenTold;

void noteReadByte(int, int, QString&, int)
{
    readByteWhenTold = driver.dataAreas.at(0).readImage[0];
}

/// "V_bit" variables: bits inside the byte or word units of an area V.
class BitInUnitCompletion : public WrittenAreaTest
{
protected:
    /// Unit 0 of V with a write on its way.
    void putWritten(unsigned readValue, unsigned writtenValue, unsigned pendingBitWrites)
    {
        driver.dataAreas.clear();
        _DATA_& unit = driver.dataAreas[putPendingWrite(STATION, "V", 0, readValue, writtenValue)];
        unit.pendingBitWrites = pendingBitWrites;
        unit.monitorFlags = 1;
        unit.bitMonitorMask = 0x8005;
    }
};

} // namespace

TEST_F(BitInUnitCompletion, AConfirmedBitIsTakenOverAlone)
{
    putWritten(0x00F0, 0xFF0F, 1u << 18);
    completeBits("16", 9, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0xF0, 0x02, 0, 0}), read(0));

    putWritten(0xF0, 0x0F, 1u << 10);
    completeBits("8", 5, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0xD0, 0, 0, 0}), read(0));
}

TEST_F(BitInUnitCompletion, AFailedBitLeavesTheReadValue)
{
    for (const char* unitBits : {"8", "16"}) {
        putWritten(0xF0F0, 0x0F0F, 1u);
        completeBits(unitBits, 0, 1, FAILED);
        EXPECT_EQ((Bytes{0xF0, 0xF0, 0, 0}), read(0));
        EXPECT_EQ(0, pending(0));
    }
}

TEST_F(BitInUnitCompletion, AddressesNameUnitAndBit)
{
    putPendingWrite(STATION, "V", 2, 0, 0xFFFF);
    completeBits("16", 41, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0, 2, 0, 0}), read(2));

    putPendingWrite(STATION, "V", 3, 0, 0xFF);
    completeBits("8", 29, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0x20, 0, 0, 0}), read(3));
}

TEST_F(BitInUnitCompletion, BitsRunOnIntoTheNextUnit)
{
    putPendingWrite(STATION, "V", 0, 0, 0xFFFF);
    putPendingWrite(STATION, "V", 1, 0, 0xFFFF);
    completeBits("16", 15, 2, CONFIRMED);
    EXPECT_EQ((Bytes{0, 0x80, 0, 0}), read(0));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), read(1));
    EXPECT_EQ(2, int(driver.dataAreas.size()));
}

TEST_F(BitInUnitCompletion, TheFirstMarkIsReleasedBeforeTheSecond)
{
    for (const char* unitBits : {"8", "16"}) {
        putWritten(0, 4, 0x30); // both marks of bit 2
        completeBits(unitBits, 2, 1, CONFIRMED);
        EXPECT_EQ(0x20u, pendingBits(0));
        EXPECT_EQ(1, pending(0));
        completeBits(unitBits, 2, 1, CONFIRMED);
        EXPECT_EQ(0u, pendingBits(0));
        EXPECT_EQ(0, pending(0));
    }
}

TEST_F(BitInUnitCompletion, MarksOfOtherBitsStay)
{
    putWritten(0, 0x8000, 0xFFFFFFFF);
    completeBits("16", 15, 1, CONFIRMED);
    EXPECT_EQ(0xBFFFFFFFu, pendingBits(0));
    completeBits("16", 15, 1, FAILED);
    EXPECT_EQ(0x3FFFFFFFu, pendingBits(0));
    completeBits("16", 0, 1, FAILED);
    EXPECT_EQ(0x3FFFFFFEu, pendingBits(0));
}

TEST_F(BitInUnitCompletion, AUnitWithBitsStillOnTheirWayStaysPendingAndUnreported)
{
    for (const char* unitBits : {"8", "16"}) {
        for (int ok : {CONFIRMED, FAILED}) {
            putWritten(0, 5, 0x11); // bits 0 and 2
            completeBits(unitBits, 0, 1, ok);
            EXPECT_EQ(1, pending(0));
            EXPECT_EQ((Bytes{ok == CONFIRMED ? 1 : 0, 0, 0, 0}), read(0));
            EXPECT_EQ(Notifications(), takeNotifications());
        }
    }
}

TEST_F(BitInUnitCompletion, ASettledUnitIsReportedAfreshWithEveryMonitoredBit)
{
    for (int ok : {CONFIRMED, FAILED}) {
        putWritten(5, 5, 0x10);
        completeBits("16", 2, 1, ok);
        EXPECT_EQ(
            (Notifications{told("V_bit", 0), told("V_bit", 2), told("V_bit", 15), told("V", 0)}),
            takeNotifications());
        putWritten(5, 5, 0x10);
        completeBits("8", 2, 1, ok);
        EXPECT_EQ((Notifications{told("V_bit", 0), told("V_bit", 2), told("V_B", 0)}),
                  takeNotifications());
    }
}

TEST_F(BitInUnitCompletion, ABitWithoutMarksSettlesItsUnit)
{
    putWritten(0, 1, 0);
    completeBits("16", 0, 1, CONFIRMED);
    EXPECT_EQ(0u, pendingBits(0));
    EXPECT_EQ(0, pending(0));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), read(0));
}

TEST_F(BitInUnitCompletion, AConfirmedBitIsStoredBeforeTheHostIsTold)
{
    intf_setAddrValueChangeCallBack(noteReadByte);
    for (const char* unitBits : {"8", "16"}) {
        readByteWhenTold = -1;
        putWritten(0, 4, 0x10);
        completeBits(unitBits, 2, 1, CONFIRMED);
        EXPECT_EQ(4, readByteWhenTold) << unitBits;
    }
}

TEST_F(BitInUnitCompletion, AnotherUnitWidthCompletesNothing)
{
    putWritten(0, 1, 1);
    for (const char* unitBits : {"1", "32", ""})
        completeBits(unitBits, 0, 1, CONFIRMED);
    EXPECT_EQ(1, pending(0));
    EXPECT_EQ(1u, pendingBits(0));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(BitInUnitCompletion, ABitNumberBelowZeroChangesNoBit)
{
    for (const char* unitBits : {"8", "16"}) {
        putWritten(0x5A5A, 0xFFFF, 0xFFFFFFFF);
        completeBits(unitBits, -1, 1, CONFIRMED);
        completeBits(unitBits, -7, 1, FAILED);
        EXPECT_EQ((Bytes{0x5A, 0x5A, 0, 0}), read(0));
        EXPECT_EQ(0xFFFFFFFFu, pendingBits(0));
    }
}

TEST_F(BitInUnitCompletion, HugeAddressesAreUnitsLikeOthers)
{
    putPendingWrite(STATION, "V", HIGHEST / 16, 0, 0xFFFF);
    completeBits("16", HIGHEST, 1, CONFIRMED); // bit 15
    EXPECT_EQ((Bytes{0, 0x80, 0, 0}), read(HIGHEST / 16));
}
