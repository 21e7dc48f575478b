#include "writeCompletion.h"
#include "toldHost.h"

namespace {

class WriteCompletion : public ToldHostTest
{
protected:
    /// A write on its way to a monitored unit.
    static void putMonitored(const char* regName, int addr, unsigned readValue, unsigned written)
    {
        const int index = putPendingWrite(STATION, regName, addr, readValue, written);
        driver.dataAreas[index].monitorFlags = 1;
    }

    void complete(const char* regName, int addr, int count, int ok)
    {
        _write_FailOrSuc(STATION, text(regName), addr, count, ok);
    }
};

} // namespace

TEST_F(WriteCompletion, AConfirmedWordBecomesTheReadValueSilently)
{
    putMonitored("MW", 5, 7, 0x1234);
    complete("MW", 5, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), read("MW", 5));
    EXPECT_EQ(0, pending("MW", 5));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteCompletion, AFailedWordFallsBackToTheReadValueAndIsReported)
{
    putMonitored("MW", 5, 7, 0x1234);
    complete("MW", 5, 1, FAILED);
    EXPECT_EQ((Bytes{7, 0, 0, 0}), read("MW", 5));
    EXPECT_EQ(0, pending("MW", 5));
    EXPECT_EQ((Notifications{told("MW", 5)}), takeNotifications());
}

TEST_F(WriteCompletion, AFailedWordIsReportedEvenIfNothingChanges)
{
    putMonitored("MW", 5, 7, 7);
    complete("MW", 5, 1, FAILED);
    EXPECT_EQ((Notifications{told("MW", 5)}), takeNotifications());
}

TEST_F(WriteCompletion, AFailedWordThatNobodyMonitorsIsNotReported)
{
    putPendingWrite(STATION, "MW", 5, 7, 0x1234);
    complete("MW", 5, 1, FAILED);
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteCompletion, BitsOfAFailedWordAreReportedWhereTheyChangeBack)
{
    const int index = putPendingWrite(STATION, "MW", 5, 0x0101, 0x8102);
    driver.dataAreas[index].bitMonitorMask = 0x8103; // bits 0, 1 and 15 differ, bit 8 does not
    complete("MW", 5, 1, FAILED);
    EXPECT_EQ((Notifications{told("MW_bit", 80), told("MW_bit", 81), told("MW_bit", 95)}),
              takeNotifications());
}

TEST_F(WriteCompletion, AConfirmedBitBecomesTheReadValueSilently)
{
    putPendingWrite(STATION, "MX", 3000, 0, 1);
    complete("MX", 3000, 1, CONFIRMED);
    EXPECT_EQ((Bytes{1, 0, 0, 0}), read("MX", 3000));
    EXPECT_EQ(0, pending("MX", 3000));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteCompletion, AFailedBitFallsBackAndIsReportedOnceMonitoredOrNot)
{
    for (unsigned flags : {0u, 1u}) {
        const int index = putPendingWrite(STATION, "MX", 3000, 0, 1);
        driver.dataAreas[index].monitorFlags = flags;
        complete("MX", 3000, 1, FAILED);
        EXPECT_EQ((Bytes{0, 0, 0, 0}), read("MX", 3000));
        EXPECT_EQ(0, pending("MX", 3000));
        EXPECT_EQ((Notifications{told("MX", 3000)}), takeNotifications());
    }
}

TEST_F(WriteCompletion, AFailedBitIsReportedOnceEvenIfNothingChanges)
{
    putPendingWrite(STATION, "QX", 9, 1, 1);
    complete("QX", 9, 1, FAILED);
    EXPECT_EQ((Notifications{told("QX", 9)}), takeNotifications());
}

TEST_F(WriteCompletion, OnlyTheResultOneConfirms)
{
    for (int result : {0, -1, 2, int(HIGHEST)}) {
        putPendingWrite(STATION, "MW", 5, 7, 9);
        putPendingWrite(STATION, "QX", 5, 0, 1);
        complete("MW", 5, 1, result);
        complete("QX", 5, 1, result);
        EXPECT_EQ((Bytes{7, 0, 0, 0}), read("MW", 5)) << result;
        EXPECT_EQ((Bytes{0, 0, 0, 0}), read("QX", 5)) << result;
        EXPECT_EQ((Notifications{told("QX", 5)}), takeNotifications());
    }
}

TEST_F(WriteCompletion, OnlyTheElementsOwnBytesAreTakenOver)
{
    putPendingWrite(STATION, "MW", 5, 0x04030201, 0xDDCCBBAA);
    putPendingWrite(STATION, "QX", 5, 0x04030201, 0xDDCCBBAA);
    complete("MW", 5, 1, CONFIRMED);
    complete("QX", 5, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0xAA, 0xBB, 3, 4}), read("MW", 5));
    EXPECT_EQ((Bytes{0xAA, 2, 3, 4}), read("QX", 5));
}

TEST_F(WriteCompletion, TheWrittenBytesStayBehind)
{
    putPendingWrite(STATION, "MW", 5, 0, 0x1234);
    complete("MW", 5, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), written("MW", 5));
    putPendingWrite(STATION, "QX", 5, 0, 1);
    complete("QX", 5, 1, FAILED);
    EXPECT_EQ((Bytes{1, 0, 0, 0}), written("QX", 5));
}

TEST_F(WriteCompletion, AConfirmedWriteCountsThoughAReadEndedItsPendingStateBefore)
{
    const int word = putPendingWrite(STATION, "MW", 5, 7, 0x1234);
    driver.dataAreas[word].writePending = 0;
    complete("MW", 5, 1, CONFIRMED);
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), read("MW", 5));
}

TEST_F(WriteCompletion, EveryElementIsCompletedInOrder)
{
    for (int i = 0; i < 4; ++i) {
        putPendingWrite(STATION, "MW", i, 0, unsigned(10 + i));
        putPendingWrite(STATION, "QX", i, 0, 1);
    }
    complete("MW", 1, 2, CONFIRMED);
    EXPECT_EQ(1, pending("MW", 0));
    EXPECT_EQ((Bytes{11, 0, 0, 0}), read("MW", 1));
    EXPECT_EQ((Bytes{12, 0, 0, 0}), read("MW", 2));
    EXPECT_EQ(1, pending("MW", 3));
    complete("QX", 1, 2, FAILED);
    EXPECT_EQ((Notifications{told("QX", 1), told("QX", 2)}), takeNotifications());
    EXPECT_EQ(1, pending("QX", 0));
    EXPECT_EQ(0, pending("QX", 2));
    EXPECT_EQ(1, pending("QX", 3));
}

TEST_F(WriteCompletion, AUnitThatIsMissingIsMade)
{
    complete("MW", 5, 1, CONFIRMED);
    complete("QX", 5, 1, FAILED);
    EXPECT_EQ(2, int(driver.dataAreas.size()));
    EXPECT_EQ((Bytes{0, 0, 0, 0}), read("MW", 5));
    EXPECT_EQ((Bytes{0, 0, 0, 0}), read("QX", 5));
    EXPECT_EQ((Notifications{told("QX", 5)}), takeNotifications());
}

TEST_F(WriteCompletion, TheHostSeesTheReadValueWhenItIsTold)
{
    putMonitored("MW", 5, 0x0707, 0x1234);
    int seen = -1;
    tellTo([&] { seen = shown("MW", 5); });
    complete("MW", 5, 1, FAILED);
    EXPECT_EQ(0x0707, seen);

    putPendingWrite(STATION, "QX", 5, 0, 1);
    seen = -1;
    tellTo([&] { seen = shown("QX", 5); });
    complete("QX", 5, 1, FAILED);
    EXPECT_EQ(0, seen);
}

TEST_F(WriteCompletion, ACacheThatGrowsInsideTheCallbackIsCompletedAllTheSame)
{
    putPendingWrite(STATION, "QX", 5, 0, 1);
    putPendingWrite(STATION, "QX", 6, 0, 1);
    int fresh = 0;
    tellTo([&] {
        unsigned char values[64];
        intf_getData(STATION, text("IX"), fresh += 64, 64, values);
    });
    complete("QX", 5, 2, FAILED);
    EXPECT_EQ(0, pending("QX", 5));
    EXPECT_EQ(0, pending("QX", 6));
}

TEST_F(WriteCompletion, WithoutACallbackTheCacheFallsBackAllTheSame)
{
    intf_setAddrValueChangeCallBack(nullptr);
    putMonitored("MW", 5, 7, 9);
    putPendingWrite(STATION, "QX", 5, 0, 1);
    complete("MW", 5, 1, FAILED);
    complete("QX", 5, 1, FAILED);
    EXPECT_EQ(0, pending("MW", 5));
    EXPECT_EQ(0, pending("QX", 5));
}

TEST_F(WriteCompletion, AnUnknownAreaCompletesNothing)
{
    for (const char* area : {"", "XX", "mw", "MW_bit", "MX_bit", "MW_W"}) {
        driver.dataAreas.clear();
        putPendingWrite(STATION, area, 5, 7, 9);
        complete(area, 5, 1, CONFIRMED);
        complete(area, 5, 1, FAILED);
        EXPECT_EQ(1, pending(area, 5)) << area;
        EXPECT_EQ((Bytes{7, 0, 0, 0}), read(area, 5)) << area;
        EXPECT_EQ(1, int(driver.dataAreas.size())) << area;
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteCompletion, NoElementsCompleteNothing)
{
    for (const char* area : {"MW", "QX"}) {
        for (int count : {0, -1, int(LOWEST)}) {
            complete(area, 5, count, FAILED);
            complete(area, 5, count, CONFIRMED);
        }
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteCompletion, AddressesAreNotChecked)
{
    for (int address : {-3, int(LOWEST), int(HIGHEST)}) {
        for (const char* area : {"MW", "QX"}) {
            putPendingWrite(STATION, area, address, 0, 1);
            complete(area, address, 1, CONFIRMED);
            EXPECT_EQ(0, pending(area, address));
            EXPECT_EQ((Bytes{1, 0, 0, 0}), read(area, address));
        }
    }
}
