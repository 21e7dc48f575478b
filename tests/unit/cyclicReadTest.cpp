#include "cacheHelpers.h"
#include "exchangeTest.h"

namespace {

class CyclicRead : public ExchangeTest
{
protected:
    static int plan(QList<KEY_ADDRESS> keys)
    {
        return intf_addrMerge(keys);
    }

    static Bytes shown(const char* regName, int address, int count, int bytesEach)
    {
        std::vector<unsigned char> out(size_t(count * bytesEach), 0xEE);
        EXPECT_EQ(1, intf_getData(1, text(regName), address, count, out.data()));
        return Bytes(out.begin(), out.end());
    }

    static Notification told(const char* regName, int address)
    {
        return {CONTEXT, 1, regName, address};
    }
};

} // namespace

// Frames and replies in hexadecimal digits were made by pymodbus 3.0's RTU framer.

TEST_F(CyclicRead, WordsAreReadReportedAndShown)
{
    ASSERT_EQ(1, plan({key(1, "MW", 3000, 2)}));
    EXPECT_EQ("01 03 0B B8 00 02 46 0A", request());
    EXPECT_EQ(9, frame.recvLen);
    EXPECT_EQ(4, frame.var.varId);
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 04 01 02 03 04 5B 3C"));
    EXPECT_EQ((Notifications{told("MW", 3000), told("MW", 3001)}), takeNotifications());
    EXPECT_EQ((Bytes{2, 1, 4, 3}), shown("MW", 3000, 2, 2));
}

TEST_F(CyclicRead, InputsAreReadByFunctionFour)
{
    ASSERT_EQ(1, plan({key(1, "IW", 5, 1)}));
    EXPECT_EQ("01 04 00 05 00 01 21 CB", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 04 02 12 34 B4 47"));
    EXPECT_EQ((Bytes{0x34, 0x12}), shown("IW", 5, 1, 2));
}

TEST_F(CyclicRead, BitsAreReadAsRegistersReportedAndShown)
{
    ASSERT_EQ(1, plan({key(1, "MX", 3016, 16, -1)}));
    EXPECT_EQ("01 03 0B B9 00 01 57 CB", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 02 80 01 18 44"));
    EXPECT_EQ((Notifications{told("MX", 3016), told("MX", 3031)}), takeNotifications());
    EXPECT_EQ((Bytes{1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}), shown("MX", 3016, 16, 1));
}

TEST_F(CyclicRead, OnlyChangesAreReported)
{
    plan({key(1, "MW", 3000, 2)});
    request();
    answer("01 03 04 01 02 03 04 5B 3C");
    takeNotifications();
    request();
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 04 01 02 03 04 5B 3C"));
    EXPECT_EQ(Notifications(), takeNotifications());
    request();
    EXPECT_EQ(REPLY_ACCEPTED, answer(withChecksum({1, 3, 4, 1, 2, 3, 5})));
    EXPECT_EQ((Notifications{told("MW", 3001)}), takeNotifications());
}

TEST_F(CyclicRead, AnEmptyPlanReportsNothingMore)
{
    plan({key(1, "MW", 3000, 2)});
    request();
    plan({});
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 03 04 01 02 03 04 5B 3C"));
    EXPECT_EQ(Notifications(), takeNotifications());
    EXPECT_EQ((Bytes{2, 1, 4, 3}), shown("MW", 3000, 2, 2));
    EXPECT_EQ("none", request());
}

TEST_F(CyclicRead, BlocksAreReadInTurn)
{
    poll(3);
    std::string order;
    for (int i = 0; i < 7; ++i) {
        request();
        order += " " + std::to_string(frame.var.addr);
        EXPECT_EQ(REPLY_ACCEPTED, answerWord(0));
    }
    EXPECT_EQ(" 3000 3001 3002 3000 3001 3002 3000", order);
}

TEST_F(CyclicRead, TheOnlyBlockIsReadAgainAndAgain)
{
    poll(1);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(hex(withChecksum({1, 3, 0x0B, 0xB8, 0, 1})), request());
        EXPECT_EQ(REPLY_ACCEPTED, answerWord(i));
    }
}

TEST_F(CyclicRead, ABlockGivenUpDoesNotHoldUpTheOthers)
{
    poll(2);
    request();
    silence();
    EXPECT_EQ("3000 3001", addresses(driver.readList));
    giveUp();
    EXPECT_EQ("0,1,3000,MW", errorText.toStdString());
    EXPECT_EQ("3001 3000", addresses(driver.readList));
    request();
    EXPECT_EQ(3001, frame.var.addr);
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(1));
    EXPECT_EQ(0, driver.commFailed);
}

TEST_F(CyclicRead, ABlockGivenUpKeepsItsValues)
{
    putUnit(1, "MW", 3000, 0x1234, 1);
    poll(1);
    request();
    giveUp();
    EXPECT_EQ((Bytes{0x34, 0x12}), shown("MW", 3000, 1, 2));
    EXPECT_EQ(Notifications(), takeNotifications());
}

TEST_F(CyclicRead, ABroadcastReadEndsWithoutAValue)
{
    driver.readList.append(variable(0, "MW", 3000, 1));
    poll(1);
    request();
    EXPECT_EQ(REPLY_ACCEPTED, silence());
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(2, int(driver.readList.size()));
    EXPECT_EQ(1, driver.readList.at(0).station);
}

TEST_F(CyclicRead, AnUnconfirmedWriteIsShownUntilAReadBringsAnotherValue)
{
    putPendingWrite(1, "MW", 3000, 7, 0x1234);
    poll(1);
    request();
    answerWord(7);
    EXPECT_EQ((Bytes{0x34, 0x12}), shown("MW", 3000, 1, 2));
    request();
    answerWord(8);
    EXPECT_EQ((Bytes{8, 0}), shown("MW", 3000, 1, 2));
}

TEST_F(CyclicRead, TheHostSeesTheOldValueWhileItIsTold)
{
    static int seen;
    seen = -1;
    putUnit(1, "MW", 3000, 0x11, 1);
    intf_setAddrValueChangeCallBack([](int, int, QString& name, int addr) {
        unsigned char value[2];
        intf_getData(1, name, addr, 1, value);
        seen = value[0];
    });
    poll(1);
    request();
    answerWord(0x22);
    EXPECT_EQ(0x11, seen);
    EXPECT_EQ((Bytes{0x22, 0}), shown("MW", 3000, 1, 2));
}

namespace {

QByteArray* hostBuffer = nullptr;

void clearHostBuffer(int, int, QString&, int)
{
    hostBuffer->clear();
}

} // namespace

TEST_F(CyclicRead, ACallbackThatClearsTheHostsBufferLosesNoWord)
{
    plan({key(1, "MW", 3000, 2)});
    request();
    QByteArray reply = QByteArray::fromHex("010304010203045B3C");
    hostBuffer = &reply;
    intf_setAddrValueChangeCallBack(clearHostBuffer);
    EXPECT_EQ(REPLY_ACCEPTED, intf_dealRcvFrame(reply, errorText));
    EXPECT_EQ((Bytes{2, 1, 4, 3}), shown("MW", 3000, 2, 2));
}
