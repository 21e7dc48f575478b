#include "decodedReply.h"
#include "replyBytes.h"

#include <map>

namespace {

class ReplyDecoding : public DecodedReplyTest
{
protected:
    static void decodeAs(const char* unitBits, const QByteArray& reply, int count,
                         const char* regName, int addr)
    {
        decodeReplyOfArea(OtherRow("", unitBits), reply, count, 3,
                          variable(1, regName, addr, count));
    }
};

} // namespace

TEST_F(ReplyDecoding, AWordIsTurnedRoundAndReportedWhenEitherByteChanges)
{
    putUnit(1, "MW", 100, 0x1233, 1);
    decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
    EXPECT_EQ(Notifications({told("MW", 100)}), takeNotifications());
    decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
    EXPECT_EQ(Notifications(), takeNotifications());
    decode(withChecksum({1, 3, 2, 0x13, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Notifications({told("MW", 100)}), takeNotifications());
}

TEST_F(ReplyDecoding, OnlyMonitoredWordsAreReported)
{
    putUnit(1, "MW", 101, 0, 1);
    decode(withChecksum({1, 3, 6, 0, 1, 0, 2, 0, 3}), 3, "MW", 100);
    EXPECT_EQ(Notifications({told("MW", 101)}), takeNotifications());
}

TEST_F(ReplyDecoding, TheFirstReadOfAUnitReportsAnythingButZero)
{
    putUnit(1, "MW", 100, 0, 1);
    putUnit(1, "MW", 101, 0, 1);
    decode(withChecksum({1, 3, 4, 0, 0, 0, 9}), 2, "MW", 100);
    EXPECT_EQ(Notifications({told("MW", 101)}), takeNotifications());
}

TEST_F(ReplyDecoding, EveryWordOfABlockIsStoredAndReportedInOrder)
{
    for (int i = 0; i < 3; ++i)
        putUnit(1, "IW", 7 + i, 0, 1);
    decode(withChecksum({1, 4, 6, 0x01, 0x02, 0x03, 0x04, 0x05, 0x06}), 3, "IW", 7);
    EXPECT_EQ(Bytes({0x02, 0x01, 0, 0}), readBytes(1, "IW", 7));
    EXPECT_EQ(Bytes({0x04, 0x03, 0, 0}), readBytes(1, "IW", 8));
    EXPECT_EQ(Bytes({0x06, 0x05, 0, 0}), readBytes(1, "IW", 9));
    EXPECT_EQ(Notifications({told("IW", 7), told("IW", 8), told("IW", 9)}), takeNotifications());
}

TEST_F(ReplyDecoding, UnitsTheReplyDoesNotCoverAreLeft)
{
    putUnit(1, "MW", 99, 0x1111, 1);
    putUnit(1, "MW", 101, 0x2222, 1);
    putUnit(2, "MW", 100, 0x3333, 1);
    putUnit(1, "QW", 100, 0x4444, 1);
    decode(withChecksum({1, 3, 2, 0, 5}), 1, "MW", 100);
    EXPECT_EQ(Bytes({0x11, 0x11, 0, 0}), readBytes(1, "MW", 99));
    EXPECT_EQ(Bytes({0x22, 0x22, 0, 0}), readBytes(1, "MW", 101));
    EXPECT_EQ(Bytes({0x33, 0x33, 0, 0}), readBytes(2, "MW", 100));
    EXPECT_EQ(Bytes({0x44, 0x44, 0, 0}), readBytes(1, "QW", 100));
    EXPECT_EQ(5, int(driver.dataAreas.size()));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(ReplyDecoding, DecodingChangesNoMarksAndNoWrittenValue)
{
    const int index = putPendingWrite(1, "MW", 100, 0, 0x5678);
    driver.dataAreas[index].monitorFlags = 0x41;
    driver.dataAreas[index].bitMonitorMask = 0x8000;
    decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Marks({{1, "MW", 100, 0x41, 0x8000}}), allMarks());
    EXPECT_EQ(Bytes({0x78, 0x56, 0, 0}), imageBytes(driver.dataAreas.at(index).writeImage));
}

TEST_F(ReplyDecoding, UnitsMissingInAShortReplyAreZero)
{
    for (int i = 0; i < 3; ++i)
        putUnit(1, "MW", 100 + i, 0x7777, 1);
    decode(bytes({1, 3, 6, 0x12, 0x34, 0x56}), 3, "MW", 100);
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
    EXPECT_EQ(Bytes({0x00, 0x56, 0, 0}), readBytes(1, "MW", 101));
    EXPECT_EQ(Bytes({0x00, 0x00, 0, 0}), readBytes(1, "MW", 102));
    EXPECT_EQ(Notifications({told("MW", 100), told("MW", 101), told("MW", 102)}),
              takeNotifications());
}

TEST_F(ReplyDecoding, AnEmptyReplyIsAllZero)
{
    for (const char* unitBits : {"1", "8", "16", "32"}) {
        putUnit(1, "V", 0, 1);
        decodeAs(unitBits, QByteArray(), 1, "V", 0);
        EXPECT_EQ(Bytes({0, 0, 0, 0}), readBytes(1, "V", 0)) << unitBits;
    }
}

TEST_F(ReplyDecoding, ACountBelowOneStoresNothing)
{
    for (const char* unitBits : {"1", "8", "16", "32"}) {
        for (int count : {0, -1, int(LOWEST)})
            decodeAs(unitBits, bytes({1, 3, 2, 1, 1}), count, "V", 0);
    }
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(ReplyDecoding, TheFirstDataByteIsWhereTheFrameSays)
{
    analyzeFrameOfVal(bytes({9, 9, 9, 9, 9, 0x12, 0x34}), 1, 5, variable(1, "MW", 100, 1));
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
}

TEST_F(ReplyDecoding, ADataStartOutsideTheReplyReadsZeros)
{
    const std::map<int, Bytes> words = {
        {int(LOWEST), {0, 0, 0, 0}}, {-2, {0, 0, 0, 0}},
        {-1, {9, 0, 0, 0}},          {0, {9, 9, 0, 0}},
        {5, {9, 9, 0, 0}},           {6, {0, 9, 0, 0}},
        {7, {0, 0, 0, 0}},           {int(HIGHEST), {0, 0, 0, 0}},
    };
    for (const auto& [start, word] : words) {
        putUnit(1, "MW", 100, 0x7777);
        analyzeFrameOfVal(bytes({9, 9, 9, 9, 9, 9, 9}), 1, start, variable(1, "MW", 100, 1));
        EXPECT_EQ(word, readBytes(1, "MW", 100)) << start;
    }
}

TEST_F(ReplyDecoding, OutsideAReplyThereAreOnlyZeros)
{
    const QByteArray reply = bytes({0xAA, 0xBB});
    EXPECT_EQ(0xAA, int(replyByte(reply, 0)));
    EXPECT_EQ(0xBB, int(replyByte(reply, 1)));
    for (qint64 at : {qint64(2), qint64(3), qint64(-1), qint64(1) << 32, -(qint64(1) << 32)})
        EXPECT_EQ(0, int(replyByte(reply, at))) << at;
}

TEST_F(ReplyDecoding, ANameThatIsNoAreasStoresNothing)
{
    for (const char* name : {"MW_bit", "mw", "XX", ""})
        decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, name, 0);
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(ReplyDecoding, AnAreaOfAnyOtherElementWidthStoresNothing)
{
    for (const char* unitBits : {"", "0", "2", "24", "64"})
        decodeAs(unitBits, withChecksum({1, 3, 2, 0x12, 0x34}), 1, "V", 0);
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(ReplyDecoding, AddressesWrapAroundBehindTheHighest)
{
    decode(bytes({1, 3, 4, 0, 1, 0, 2}), 2, "MW", HIGHEST);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "MW", HIGHEST));
    EXPECT_EQ(Bytes({2, 0, 0, 0}), readBytes(1, "MW", LOWEST));
}

TEST_F(ReplyDecoding, UnitsOfEightBitsOrMoreAreStoredUnderTheAreaOfTheName)
{
    for (const char* unitBits : {"8", "16", "32"}) {
        driver.dataAreas.clear();
        decodeAs(unitBits, bytes({1, 3, 4, 1, 1, 1, 1}), 1, "V_bit", 40);
        EXPECT_EQ(Marks({{1, "V", 40, 0, 0}}), allMarks());
    }
}

TEST_F(ReplyDecoding, BytesAreStoredOneAUnit)
{
    decodeAs("8", bytes({1, 3, 3, 0x11, 0x00, 0xFF}), 4, "V", 0);
    EXPECT_EQ(Bytes({0x11, 0, 0, 0}), readBytes(1, "V", 0));
    EXPECT_EQ(Bytes({0x00, 0, 0, 0}), readBytes(1, "V", 1));
    EXPECT_EQ(Bytes({0xFF, 0, 0, 0}), readBytes(1, "V", 2));
    EXPECT_EQ(Bytes({0x00, 0, 0, 0}), readBytes(1, "V", 3));
}

TEST_F(ReplyDecoding, AByteReportsWhatChangedFromTheOldToTheNewValue)
{
    putUnit(1, "V", 2, 0x81, 1, 0xFF);
    putUnit(1, "V", 3, 0x55, 1, 0xFF);
    decodeAs("8", bytes({1, 3, 2, 0x80, 0x55}), 2, "V", 2);
    EXPECT_EQ(Notifications({told("V_bit", 16), told("V_B", 2)}), takeNotifications());
}

TEST_F(ReplyDecoding, DoubleWordsKeepTheOrderOfTheReply)
{
    decodeAs("32", bytes({1, 3, 8, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66}), 2, "V", 0);
    EXPECT_EQ(Bytes({0x11, 0x22, 0x33, 0x44}), readBytes(1, "V", 0));
    EXPECT_EQ(Bytes({0x55, 0x66, 0x00, 0x00}), readBytes(1, "V", 1));
}

TEST_F(ReplyDecoding, ADoubleWordReportsWhatChangedFromTheOldToTheNewValue)
{
    putUnit(1, "V", 2, 0x00000001, 1, 0xFFFFFFFFu);
    putUnit(1, "V", 3, 0x44332211, 1, 0xFFFFFFFFu);
    decodeAs("32", bytes({1, 3, 8, 0x01, 0x00, 0x00, 0x80, 0x11, 0x22, 0x33, 0x44}), 2, "V", 2);
    EXPECT_EQ(Notifications({told("V_bit", 95), told("V", 2)}), takeNotifications());
}

TEST_F(ReplyDecoding, AWordReportsWhatChangedFromTheOldToTheNewValue)
{
    putUnit(1, "V", 2, 0x0001, 7, 0xFFFF);
    decodeAs("16", bytes({1, 3, 2, 0x80, 0x01}), 1, "V_D", 2);
    EXPECT_EQ(Notifications({told("V_bit", 47), told("V", 2), told("V_D", 2), told("V_D", 1)}),
              takeNotifications());
}

TEST_F(ReplyDecoding, InsideTheCallbackTheHostStillReadsTheOldWord)
{
    putUnit(1, "MW", 100, 0x1111, 1);
    intf_setAddrValueChangeCallBack(readBack);
    decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Bytes({0x11, 0x11}), seenByHost());
    EXPECT_EQ(Bytes({0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
}

TEST_F(ReplyDecoding, InsideTheCallbackAPendingWriteIsAlreadyWithdrawn)
{
    const int index = putPendingWrite(1, "MW", 100, 0x1111, 0x2222);
    driver.dataAreas[index].monitorFlags = 1;
    intf_setAddrValueChangeCallBack(readBack);
    decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Bytes({0x11, 0x11}), seenByHost());
}

TEST_F(ReplyDecoding, InsideTheCallbackAPendingWriteThatStaysIsWhatTheHostReads)
{
    const int index = putPendingWrite(1, "MW", 100, 0x1111, 0x2222);
    driver.dataAreas[index].monitorFlags = 1;
    driver.dataAreas[index].pendingBitWrites = 1;
    driver.writeList.append(variable(1, "MW", 100, 1));
    intf_setAddrValueChangeCallBack(readBack);
    decode(withChecksum({1, 3, 2, 0x12, 0x34}), 1, "MW", 100);
    EXPECT_EQ(Bytes({0x22, 0x22}), seenByHost());
}

TEST_F(ReplyDecoding, TheCallbackMayMakeTheCacheGrow)
{
    for (int i = 0; i < 3; ++i)
        putUnit(1, "MW", 100 + i, 0, 1);
    intf_setAddrValueChangeCallBack(readManyUnits);
    decode(withChecksum({1, 3, 6, 0, 1, 0, 2, 0, 3}), 3, "MW", 100);
    EXPECT_EQ(Bytes({1, 0, 0, 0}), readBytes(1, "MW", 100));
    EXPECT_EQ(Bytes({2, 0, 0, 0}), readBytes(1, "MW", 101));
    EXPECT_EQ(Bytes({3, 0, 0, 0}), readBytes(1, "MW", 102));
}
