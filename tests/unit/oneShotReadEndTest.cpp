#include "cacheHelpers.h"
#include "exchangeTest.h"

namespace {

int queuedWhenTold;
std::string nameSeen;

void noteQueue(int, int, QString& name, int)
{
    queuedWhenTold = int(driver.condReadList.size());
    nameSeen += name.toStdString();
    name = text("spoilt");
}

class OneShotReadEnd : public ExchangeTest
{
protected:
    OneShotReadEnd()
    {
        initialise(2, 1);
    }

    /// Asks for words of IW from 5 on, one block each.
    void ask(int words, int station = 1)
    {
        KEY_ADDRESS wanted = key(station, "IW", 5, words);
        intf_addConditionRead(wanted, 9);
    }

    static int queued()
    {
        return int(driver.condReadList.size());
    }
};

const Notifications DONE = {{-1, -1, "-1", 0}};
const Notifications FAILED = {{-1, -1, "-1", -1}};

} // namespace

TEST_F(OneShotReadEnd, AGoodReplyIsStoredAndReported)
{
    ask(1);
    EXPECT_EQ("01 04 00 05 00 01 21 CB", request());
    EXPECT_EQ(REPLY_ACCEPTED, answer("01 04 02 12 34 B4 47")); // both by pymodbus 3.0
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), readBytes(1, "IW", 5));
    EXPECT_EQ(DONE, takeNotifications());
    EXPECT_EQ(0, queued());
    EXPECT_EQ("none", request());
}

TEST_F(OneShotReadEnd, AChangedValueIsReportedBeforeTheEnd)
{
    putUnit(1, "IW", 5, 0, 1);
    ask(1);
    request();
    answerWord(0x1234);
    EXPECT_EQ((Notifications{{CONTEXT, 1, "IW", 5}, DONE[0]}), takeNotifications());
}

TEST_F(OneShotReadEnd, OnlyTheLastBlockEndsTheRequest)
{
    ask(3);
    for (int left = 2; left >= 0; --left) {
        request();
        EXPECT_EQ(REPLY_ACCEPTED, answerWord(0));
        EXPECT_EQ(left, queued());
        EXPECT_EQ(left == 0 ? DONE : Notifications(), takeNotifications());
    }
}

TEST_F(OneShotReadEnd, AGivenUpReadIsReportedAsFailed)
{
    ask(1);
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(Notifications(), takeNotifications());
    EXPECT_EQ(1, queued());
    EXPECT_EQ(REPLY_GIVEN_UP, silence());
    EXPECT_EQ("0,1,5,IW", errorText.toStdString());
    EXPECT_EQ(FAILED, takeNotifications());
    EXPECT_EQ(0, queued());
}

TEST_F(OneShotReadEnd, AFailureDropsEveryQueuedReadUnreportedUnlessTheLastFailed)
{
    ask(3);
    request();
    giveUp();
    EXPECT_EQ(Notifications(), takeNotifications());
    EXPECT_EQ(0, queued());
    EXPECT_EQ("none", request());
}

TEST_F(OneShotReadEnd, AnEarlierFailureElsewhereDoesNotFailTheRead)
{
    queueWrites(1);
    request();
    giveUp();
    EXPECT_EQ(1, driver.commFailed);
    ask(1);
    request();
    answerWord(0);
    EXPECT_EQ(DONE, takeNotifications());
}

TEST_F(OneShotReadEnd, AHeadThatDiffersFromTheLastRequestIsNotReported)
{
    const VARIABLE others[] = {
        variable(2, "IW", 5, 1),
        variable(1, "QW", 5, 1),
        variable(1, "IW", 6, 1),
        variable(1, "IW", 5, 2),
    };
    for (const VARIABLE& other : others) {
        for (bool good : {true, false}) {
            driver.priorityCount = 0;
            ask(1);
            driver.condVar = other;
            request();
            if (good)
                answerWord(0);
            else
                giveUp();
            EXPECT_EQ(Notifications(), takeNotifications());
            EXPECT_EQ(0, queued());
        }
    }
}

TEST_F(OneShotReadEnd, TheIdDoesNotTellRequestsApart)
{
    ask(1);
    driver.condVar.varId = 1000;
    request();
    answerWord(0);
    EXPECT_EQ(DONE, takeNotifications());
}

TEST_F(OneShotReadEnd, ARequestForTheSameRangeInFlightIsReadAgain)
{
    ask(1);
    request();
    ask(1);
    EXPECT_EQ(2, queued());
    answerWord(0);
    EXPECT_EQ(DONE, takeNotifications());
    EXPECT_EQ(1, queued());
    EXPECT_EQ("01 04 00 05 00 01 21 CB", request());
}

TEST_F(OneShotReadEnd, AnotherRequestInFlightIsTheOneThatEnds)
{
    ask(1);
    request();
    KEY_ADDRESS wanted = key(1, "IW", 7, 1);
    intf_addConditionRead(wanted, 10);
    answerWord(0);
    EXPECT_EQ(Notifications(), takeNotifications());
    request();
    answerWord(0);
    EXPECT_EQ(DONE, takeNotifications());
}

TEST_F(OneShotReadEnd, AListEmptiedMeanwhileIsSkipped)
{
    for (bool good : {true, false}) {
        ask(1);
        request();
        driver.condReadList.clear();
        if (good)
            EXPECT_EQ(REPLY_ACCEPTED, answerWord(0));
        else
            giveUp();
        EXPECT_EQ(Notifications(), takeNotifications());
        EXPECT_EQ(0, queued());
    }
}

TEST_F(OneShotReadEnd, ABroadcastEndsAtOnce)
{
    ask(1, 0);
    request();
    EXPECT_EQ(REPLY_ACCEPTED, silence());
    EXPECT_EQ(DONE, takeNotifications());
    EXPECT_EQ(0, int(driver.dataAreas.size()));
}

TEST_F(OneShotReadEnd, TheHostIsToldBeforeTheReadLeavesItsList)
{
    intf_setAddrValueChangeCallBack(noteQueue);
    for (bool good : {true, false}) {
        queuedWhenTold = -1;
        ask(1);
        request();
        if (good)
            answerWord(0);
        else
            giveUp();
        EXPECT_EQ(1, queuedWhenTold);
    }
}

TEST_F(OneShotReadEnd, TheReportedTextIsTheHostsToChange)
{
    intf_setAddrValueChangeCallBack(noteQueue);
    nameSeen.clear();
    for (int i = 0; i < 2; ++i) {
        ask(1);
        request();
        answerWord(0);
    }
    EXPECT_EQ("-1-1", nameSeen);
}

TEST_F(OneShotReadEnd, WithoutACallbackTheReadEndsAllTheSame)
{
    intf_setAddrValueChangeCallBack(nullptr);
    ask(1);
    request();
    EXPECT_EQ(REPLY_ACCEPTED, answerWord(0));
    EXPECT_EQ(0, queued());
}
