#include "writtenArea.h"

namespace {

class WriteCompletionOtherWidths : public WrittenAreaTest
{
protected:
    /// Units of V from 10 on, read as 01 02 03 04 and written as A1 A2 A3 A4.
    void putUnits(int units, unsigned monitorFlags = 0, unsigned bitMonitorMask = 0)
    {
        driver.dataAreas.clear();
        for (int i = 0; i < units; ++i) {
            const int index = putPendingWrite(STATION, "V", 10 + i, 0x04030201, 0xA4A3A2A1);
            driver.dataAreas[index].monitorFlags = monitorFlags;
            driver.dataAreas[index].bitMonitorMask = bitMonitorMask;
        }
    }
};

struct TAKEN_CASE
{
    const char* dataWidth;
    const char* unitBits;
    int units;  ///< completed by two elements
    Bytes read; ///< of each
};

const TAKEN_CASE TAKEN[] = {
    {"8", "8", 2, {0xA1, 2, 3, 4}},
    {"8", "16", 2, {0xA1, 2, 3, 4}},
    {"16", "8", 4, {0xA1, 2, 3, 4}},
    {"16", "16", 2, {0xA1, 0xA2, 3, 4}},
    {"16", "32", 2, {0xA1, 0xA2, 3, 4}},
    {"32", "16", 4, {0xA1, 0xA2, 3, 4}},
    {"32", "32", 2, {0xA1, 0xA2, 0xA3, 0xA4}},
    {"32", "8", 2, {0xA1, 0xA2, 0xA3, 0xA4}},
    {"1", "1", 2, {0xA1, 2, 3, 4}},
};

} // namespace

TEST_F(WriteCompletionOtherWidths, ConfirmedElementsTakeOverTheirOwnBytesAndFailedOnesFallBack)
{
    for (const TAKEN_CASE& tested : TAKEN) {
        for (int ok : {CONFIRMED, FAILED}) {
            SCOPED_TRACE(testing::Message()
                         << tested.dataWidth << "/" << tested.unitBits << " " << ok);
            putUnits(tested.units + 1, ok == CONFIRMED ? UNIT | PAIR_FIRST : 0,
                     ok == CONFIRMED ? 0xFFFFFFFF : 0);
            complete(tested.dataWidth, tested.unitBits, "V", 10, 2, ok);
            for (int i = 0; i < tested.units; ++i) {
                EXPECT_EQ(ok == CONFIRMED ? tested.read : Bytes({1, 2, 3, 4}), read(10 + i));
                EXPECT_EQ(0, pending(10 + i));
            }
            EXPECT_EQ((Bytes{1, 2, 3, 4}), read(10 + tested.units));
            EXPECT_EQ(1, pending(10 + tested.units));
            const Notifications notifications = takeNotifications();
            EXPECT_TRUE(ok == FAILED || notifications.empty());
        }
    }
}

TEST_F(WriteCompletionOtherWidths, AFailedByteIsReportedWithTheBitsThatChangeBack)
{
    putUnits(1, UNIT, 0xFF); // 0xA1 and 0x01 differ in bits 5 and 7
    complete("8", "8", "V", 10, 1, FAILED);
    EXPECT_EQ((Notifications{told("V_bit", 85), told("V_bit", 87), told("V_B", 10)}),
              takeNotifications());
}

TEST_F(WriteCompletionOtherWidths, AFailedWordOfByteUnitsIsReportedByteByByte)
{
    putUnits(2);
    driver.dataAreas[0].monitorFlags = PAIR_FIRST;
    driver.dataAreas[1].monitorFlags = PAIR_SECOND;
    complete("16", "8", "V_W", 10, 1, FAILED);
    EXPECT_EQ((Notifications{told("V_W", 10), told("V_W", 10)}), takeNotifications());
}

TEST_F(WriteCompletionOtherWidths, AFailedDoubleUnitIsReportedWithTheBitsThatChangeBack)
{
    putUnits(1, UNIT, 0xFF000000); // 0xA4 and 0x04 differ in bits 29 and 31
    complete("32", "32", "V", 10, 1, FAILED);
    EXPECT_EQ((Notifications{told("V_bit", 349), told("V_bit", 351), told("V", 10)}),
              takeNotifications());
}

TEST_F(WriteCompletionOtherWidths, AFailedDoubleOfWordUnitsIsReportedOnceAtItsFirstUnit)
{
    putUnits(2, UNIT);
    // 0xA2A1A2A1 and 0x02010201 differ in bits 21, 23, 29 and 31 of the upper word
    driver.dataAreas[0].bitMonitorMask = 0xFFFF0000;
    complete("32", "16", "V_D", 10, 1, FAILED);
    EXPECT_EQ((Notifications{told("V_bit", 341), told("V_bit", 343), told("V_bit", 349),
                             told("V_bit", 351), told("V", 10)}),
              takeNotifications());
}

TEST_F(WriteCompletionOtherWidths, FailedElementsAreReportedEvenIfNothingChanges)
{
    for (const char* width : {"8", "32"}) {
        for (const char* unitBits : {"16", "32"}) {
            driver.dataAreas.clear();
            for (int i = 0; i < 2; ++i)
                driver.dataAreas[putPendingWrite(STATION, "V", 10 + i, 5, 5)].monitorFlags = UNIT;
            complete(width, unitBits, "V", 10, 1, FAILED);
            EXPECT_EQ(1u, takeNotifications().size()) << width << " " << unitBits;
        }
    }
}

TEST_F(WriteCompletionOtherWidths, SuffixedWordsAndBitsAreLookedUpByTheirWholeName)
{
    for (const char* width : {"1", "16"}) {
        driver.dataAreas.clear();
        putPendingWrite(STATION, "V_W", 10, 0, 1);
        putPendingWrite(STATION, "V", 10, 0, 1);
        complete(width, width, "V_W", 10, 1, CONFIRMED);
        EXPECT_EQ(0, cachedUnit(STATION, "V_W", 10).writePending) << width;
        EXPECT_EQ(1, pending(10)) << width;
    }
}

TEST_F(WriteCompletionOtherWidths, OtherSuffixedElementsAreLookedUpByTheirArea)
{
    for (const char* width : {"8", "32"}) {
        for (const char* unitBits : {"8", "16", "32"}) {
            putUnits(2);
            complete(width, unitBits, "V_D", 10, 1, CONFIRMED);
            EXPECT_EQ(0, pending(10)) << width << " " << unitBits;
            EXPECT_EQ(2, int(driver.dataAreas.size())) << width << " " << unitBits;
        }
    }
}

TEST_F(WriteCompletionOtherWidths, AWidthThatNobodyKnowsCompletesNothing)
{
    for (const char* width : {"", "0", "2", "64", "016"}) {
        putUnits(1, UNIT);
        complete(width, "16", "V", 10, 1, CONFIRMED);
        complete(width, "16", "V", 10, 1, FAILED);
        EXPECT_EQ(1, pending(10)) << width;
        EXPECT_EQ((Bytes{1, 2, 3, 4}), read(10)) << width;
    }
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(WriteCompletionOtherWidths, NoElementsCompleteNothing)
{
    for (const char* width : {"1", "8", "16", "32"}) {
        for (const char* unitBits : {"1", "8", "16", "32"}) {
            for (int count : {0, -1}) {
                complete(width, unitBits, "V", 10, count, FAILED);
                complete(width, unitBits, "V_bit", 10, count, FAILED);
            }
        }
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(Notifications(), takeNotifications());
}
