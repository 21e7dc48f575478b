#include "cacheHelpers.h"
#include "exchangeTest.h"

namespace {

/// Writes of MW 3005 and QX 20, from the host's call to the PLC's answer.
class WriteTransfer : public ExchangeTest
{
protected:
    WriteTransfer()
    {
        putUnit(1, "MW", 3005, 7, 1);
        putUnit(1, "QX", 20, 0, 1);
    }

    static void writeWord(int value, int station = 1)
    {
        unsigned char bytes[] = {static_cast<unsigned char>(value & 0xFF),
                                 static_cast<unsigned char>(value >> 8)};
        EXPECT_EQ(1, intf_setData(station, text("MW"), 3005, 1, bytes, 9));
    }

    static void writeBit(int value)
    {
        unsigned char byte = static_cast<unsigned char>(value);
        EXPECT_EQ(1, intf_setData(1, text("QX"), 20, 1, &byte, 9));
    }

    static int shownWord(int station = 1)
    {
        unsigned char value[2];
        intf_getData(station, text("MW"), 3005, 1, value);
        return value[0] + 256 * value[1];
    }

    static int shownBit()
    {
        unsigned char value = 9;
        intf_getData(1, text("QX"), 20, 1, &value);
        return value;
    }

    const Notifications WORD_TOLD = {{CONTEXT, 1, "MW", 3005}};
    const Notifications BIT_TOLD = {{CONTEXT, 1, "QX", 20}};
    const Notifications NOTHING_TOLD;

    static _DATA_ word()
    {
        return cachedUnit(1, "MW", 3005);
    }
};

} // namespace

// Frames and replies in hexadecimal digits were made by pymodbus 3.0's RTU framer.

TEST_F(WriteTransfer, AConfirmedWordIsShownAtOnceAndReportedOnce)
{
    writeWord(0x1234);
    EXPECT_EQ(0x1234, shownWord());
    EXPECT_EQ(WORD_TOLD, takeNotifications());
    EXPECT_EQ("01 06 0B BD 12 34 16 BD", request());
    EXPECT_EQ(9, frame.var.varId);
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 06 0B BD 12 34 16 BD"));
    EXPECT_EQ(0x1234, shownWord());
    EXPECT_EQ(0, word().writePending);
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), imageBytes(word().readImage));
    EXPECT_EQ(NOTHING_TOLD, takeNotifications());
    EXPECT_EQ("none", request());
}

TEST_F(WriteTransfer, AFailedWordFallsBackAndIsReportedAgain)
{
    writeWord(0x1234);
    takeNotifications();
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_RETRY, answer("01 86 02 C3 A1")); // an exception
    EXPECT_EQ(0x1234, shownWord());
    EXPECT_EQ(NOTHING_TOLD, takeNotifications());
    EXPECT_EQ(REPLY_GIVEN_UP, silence());
    EXPECT_EQ("0,1,3005,MW", errorText.toStdString());
    EXPECT_EQ(7, shownWord());
    EXPECT_EQ(WORD_TOLD, takeNotifications());
    EXPECT_EQ("none", request());
}

TEST_F(WriteTransfer, AConfirmedBitIsShownAtOnceAndReportedOnce)
{
    writeBit(1);
    EXPECT_EQ(1, shownBit());
    EXPECT_EQ(BIT_TOLD, takeNotifications());
    EXPECT_EQ("01 05 00 14 FF 00 CC 3E", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 05 00 14 FF 00 CC 3E"));
    EXPECT_EQ(1, shownBit());
    EXPECT_EQ(NOTHING_TOLD, takeNotifications());
    writeBit(0);
    EXPECT_EQ("01 05 00 14 00 00 8D CE", request());
}

TEST_F(WriteTransfer, AFailedBitFallsBackAndIsReportedAgain)
{
    writeBit(1);
    takeNotifications();
    request();
    giveUp();
    EXPECT_EQ(0, shownBit());
    EXPECT_EQ(BIT_TOLD, takeNotifications());
}

TEST_F(WriteTransfer, ABroadcastIsConfirmedWithoutAReply)
{
    writeWord(0x1234, 0);
    EXPECT_EQ("00 06 0B BD 12 34 17 6C", request());
    EXPECT_EQ(0, frame.recvLen);
    EXPECT_EQ(REPLY_ACCEPTED, silence());
    EXPECT_EQ(0x1234, shownWord(0));
    EXPECT_EQ(0, cachedUnit(0, "MW", 3005).writePending);
    EXPECT_EQ("none", request());
}

TEST_F(WriteTransfer, AWriteOfAnElementInFlightIsSentBehindItsFirst)
{
    writeWord(0x1234);
    EXPECT_EQ("01 06 0B BD 12 34 16 BD", request());
    writeWord(0x5678);
    EXPECT_EQ("01 06 0B BD 12 34 16 BD", request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ("01 06 0B BD 56 78 24 48", request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ("none", request());
    EXPECT_EQ(0x5678, shownWord());
}

TEST_F(WriteTransfer, TheFirstOfTwoWritesConfirmsTheValueOfTheSecond)
{
    writeWord(0x1234);
    request();
    writeWord(0x5678);
    echo();
    EXPECT_EQ((Bytes{0x78, 0x56, 0, 0}), imageBytes(word().readImage));
    EXPECT_EQ(0, word().writePending);
    EXPECT_EQ(1, int(driver.writeList.size()));
}

TEST_F(WriteTransfer, TheFirstOfTwoWritesFailsForBothInTheCacheButNotInTheQueue)
{
    writeWord(0x1234);
    request();
    writeWord(0x5678);
    giveUp();
    EXPECT_EQ(7, shownWord());
    EXPECT_EQ("01 06 0B BD 56 78 24 48", request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(0x5678, shownWord());
}

TEST_F(WriteTransfer, AWriteInFlightIsNotReplacedInItsFrame)
{
    writeWord(0x1234);
    request();
    silence();
    writeWord(0x5678);
    EXPECT_EQ("01 06 0B BD 12 34 16 BD", request());
}

TEST_F(WriteTransfer, EveryElementHasItsOwnRequest)
{
    unsigned char values[] = {0x34, 0x12, 0x78, 0x56};
    intf_setData(1, text("MW"), 3005, 2, values, 9);
    EXPECT_EQ("01 06 0B BD 12 34 16 BD", request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(1, cachedUnit(1, "MW", 3006).writePending);
    EXPECT_EQ("01 06 0B BE 56 78 D4 48", request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(0, cachedUnit(1, "MW", 3006).writePending);
}

TEST_F(WriteTransfer, AFailedElementLeavesTheOthersQueued)
{
    unsigned char values[] = {0x34, 0x12, 0x78, 0x56};
    intf_setData(1, text("MW"), 3005, 2, values, 9);
    request();
    giveUp();
    EXPECT_EQ("01 06 0B BE 56 78 D4 48", request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
}

TEST_F(WriteTransfer, ALocalWriteIsShownAndNeverSent)
{
    initialise(3, 32, 1);
    writeWord(0x1234);
    EXPECT_EQ(0x1234, shownWord());
    EXPECT_EQ("none", request());
}

TEST_F(WriteTransfer, ARestartDropsWritesAndTheirRequest)
{
    writeWord(0x1234);
    request();
    initialise();
    EXPECT_EQ(REPLY_NOTHING_PENDING, answer("01 06 0B BD 12 34 16 BD"));
    EXPECT_EQ("none", request());
    EXPECT_EQ(0, shownWord());
}
