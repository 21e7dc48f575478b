#include "replyHandling.h"
#include "cacheHelpers.h"
#include "exchangeTest.h"
#include "requestFrames.h"

namespace {

class ReplyHandling : public ExchangeTest
{
protected:
    /// Requests MW 100 and 101 of station 1; the reply has 9 bytes.
    void requestTwoWords()
    {
        driver.readList.append(variable(1, "MW", 100, 2));
        ASSERT_EQ(hex(withChecksum({1, 3, 0, 100, 0, 2})), request());
    }
};

QByteArray twoWords(int first, int second)
{
    return withChecksum({1, 3, 4, first >> 8, first & 0xFF, second >> 8, second & 0xFF});
}

} // namespace

TEST_F(ReplyHandling, WithoutARequestTheReplyIsIgnored)
{
    errorText = text("old");
    driver.failCount = 1;
    driver.commFailed = 1;
    EXPECT_EQ(REPLY_NOTHING_PENDING, answer(twoWords(1, 2)));
    EXPECT_EQ("", errorText.toStdString());
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ(1, driver.failCount);
    EXPECT_EQ(1, driver.commFailed);
}

TEST_F(ReplyHandling, AReadReplyIsStored)
{
    requestTwoWords();
    errorText = text("old");
    driver.commFailed = 1;
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords(0x1234, 0x5678)));
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
    EXPECT_EQ((Bytes{0x78, 0x56, 0, 0}), readBytes(1, "MW", 101));
    EXPECT_EQ("", errorText.toStdString());
    EXPECT_EQ(0, driver.commFailed);
    EXPECT_EQ(0, int(driver.frameQueue.size()));
}

TEST_F(ReplyHandling, AnEchoAcknowledgesAWrite)
{
    queueWrites(1);
    request();
    driver.commFailed = 1;
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ("", errorText.toStdString());
    EXPECT_EQ(0, driver.commFailed);
    EXPECT_EQ(0, int(driver.frameQueue.size()));
    EXPECT_EQ(0, int(driver.writeList.size()));
}

TEST_F(ReplyHandling, ABroadcastIsDoneWithoutAReply)
{
    putPendingWrite(0, "QW", 5, 1, 2);
    driver.writeList.append(variable(0, "QW", 5, 1, {2, 0}));
    request();
    EXPECT_EQ(REPLY_ACCEPTED, silence());
    EXPECT_EQ((Bytes{2, 0, 0, 0}), readBytes(0, "QW", 5));
    EXPECT_EQ(0, cachedUnit(0, "QW", 5).writePending);
    EXPECT_EQ(0, int(driver.writeList.size()));
}

TEST_F(ReplyHandling, AReadOfNothingEndsAsAnAcknowledgement)
{
    driver.readList.append(variable(1, "MW", 100, 0));
    poll(1);
    request();
    EXPECT_EQ(REPLY_ACCEPTED, answer(withChecksum({1, 3, 0})));
    EXPECT_EQ(0, int(driver.dataAreas.size()));
    EXPECT_EQ("3000 100", addresses(driver.readList));
}

TEST_F(ReplyHandling, BadRepliesAreRetriedUpToTheLimit)
{
    requestTwoWords();
    const QByteArray cut = twoWords(1, 2).left(7);
    EXPECT_EQ(REPLY_RETRY, answer(cut));
    EXPECT_EQ("", errorText.toStdString());
    EXPECT_EQ(1, int(driver.frameQueue.size()));
    EXPECT_EQ(REPLY_RETRY, answer(cut));
    EXPECT_EQ(REPLY_GIVEN_UP, answer(cut));
    EXPECT_EQ("7,1,100,MW", errorText.toStdString());
    EXPECT_EQ(0, int(driver.frameQueue.size()));
    EXPECT_EQ(0, driver.failCount);
    EXPECT_EQ(1, driver.commFailed);
    EXPECT_EQ(REPLY_NOTHING_PENDING, answer(cut));
    EXPECT_EQ("", errorText.toStdString());
}

TEST_F(ReplyHandling, ALimitOfOneOrLessGivesUpAtTheFirstBadReplyAndOfTwoAtTheSecond)
{
    for (int retryLimit : {2, 1, 0, -1, int(LOWEST)}) {
        SCOPED_TRACE(retryLimit);
        initialise(retryLimit);
        requestTwoWords();
        if (retryLimit == 2) {
            EXPECT_EQ(REPLY_RETRY, silence());
        }
        EXPECT_EQ(REPLY_GIVEN_UP, silence());
        EXPECT_EQ("0,1,100,MW", errorText.toStdString());
    }
}

TEST_F(ReplyHandling, AGoodReplyAfterBadOnesIsAccepted)
{
    requestTwoWords();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords(1, 2)));
    EXPECT_EQ((Bytes{1, 0, 0, 0}), readBytes(1, "MW", 100));
}

TEST_F(ReplyHandling, BadRepliesAreCountedForEachRequestAnew)
{
    requestTwoWords();
    silence();
    silence();
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords(1, 2)));
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ(REPLY_GIVEN_UP, silence());
    request();
    EXPECT_EQ(REPLY_RETRY, silence());
}

TEST_F(ReplyHandling, TheErrorTextNamesTheLastReplyAndTheVariable)
{
    initialise(1);
    driver.writeList.append(variable(-3, "QX", -20, 1, {1}));
    request();
    EXPECT_EQ(REPLY_GIVEN_UP, answer("01 02 03"));
    EXPECT_EQ("3,-3,-20,QX", errorText.toStdString());
    driver.readList.append(variable(2, "%1 %4", 5, 1)); // any area name
    request();
    EXPECT_EQ(REPLY_GIVEN_UP, silence());
    EXPECT_EQ("0,2,5,%1 %4", errorText.toStdString());
}

TEST_F(ReplyHandling, AnOldErrorTextIsEmptiedByARetry)
{
    requestTwoWords();
    errorText = text("old");
    EXPECT_EQ(REPLY_RETRY, silence());
    EXPECT_EQ("", errorText.toStdString());
}

TEST_F(ReplyHandling, AnExceptionReplyIsABadReply)
{
    requestTwoWords();
    EXPECT_EQ(REPLY_RETRY, answer("01 83 02 C0 F1")); // by pymodbus 3.0
}

TEST_F(ReplyHandling, NoiseDoesNotStopTheExchange)
{
    const QByteArray garbage[] = {
        QByteArray(),          QByteArray(1, '\0'),    QByteArray(2, '\xFF'),
        QByteArray(9, '\0'),   QByteArray(9, '\xFF'),  twoWords(1, 2) + '\0',
        QByteArray(5000, 'x'), QByteArray(70000, 'x'), twoWords(1, 2) + twoWords(1, 2),
    };
    for (const QByteArray& noise : garbage) {
        SCOPED_TRACE(int(noise.size()));
        driver.readList.clear();
        requestTwoWords();
        EXPECT_EQ(REPLY_RETRY, answer(noise));
        EXPECT_EQ(0, int(driver.dataAreas.size()));
        EXPECT_EQ(REPLY_RETRY, answer(noise));
        EXPECT_EQ(REPLY_GIVEN_UP, answer(noise));
    }
    requestTwoWords();
    EXPECT_EQ(REPLY_ACCEPTED, answer(twoWords(1, 2)));
    EXPECT_EQ((Bytes{2, 0, 0, 0}), readBytes(1, "MW", 101));
}

TEST_F(ReplyHandling, AReplyToABroadcastIsABadReply)
{
    driver.writeList.append(variable(0, "QW", 5, 1, {2, 0}));
    request();
    EXPECT_EQ(REPLY_RETRY, echo());
}

TEST_F(ReplyHandling, TheHostsReplyIsLeftAsItIs)
{
    requestTwoWords();
    QByteArray reply = twoWords(1, 2);
    const QByteArray before = reply;
    intf_dealRcvFrame(reply, errorText);
    EXPECT_EQ(hex(before), hex(reply));
}

TEST_F(ReplyHandling, FramesBehindTheFirstAreKeptUntilTheirOwnReply)
{
    queueWrites(1);
    getWriteFrame(variable(1, "QW", 0, 1, {1, 0}));
    getWriteFrame(variable(1, "QW", 1, 1, {2, 0}));
    driver.frameKind = FRAME_WRITE;
    request();
    silence();
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(0, driver.failCount);
    EXPECT_EQ(1, int(driver.writeList.size()));
    EXPECT_EQ(hex(withChecksum({1, 6, 0, 1, 0, 2})), request());
    EXPECT_EQ(REPLY_ACCEPTED, echo());
    EXPECT_EQ(0, int(driver.writeList.size()));
    EXPECT_EQ("none", request());
}

TEST_F(ReplyHandling, GivingUpDropsEveryQueuedFrame)
{
    queueWrites(1);
    getWriteFrame(variable(1, "QW", 0, 1, {1, 0}));
    getWriteFrame(variable(1, "QW", 1, 1, {2, 0}));
    driver.frameKind = FRAME_WRITE;
    giveUp();
    EXPECT_EQ("0,1,0,QW", errorText.toStdString());
    EXPECT_EQ(0, int(driver.frameQueue.size()));
}

TEST_F(ReplyHandling, OnlyAWriteIsCompletedInTheCache)
{
    for (int kind = FRAME_IDLE; kind <= FRAME_RECIPE_UPLOAD; ++kind) {
        for (bool good : {true, false}) {
            SCOPED_TRACE(kind);
            initialise(1);
            putPendingWrite(1, "QX", 5, 0, 1);
            getWriteFrame(variable(1, "QX", 5, 1, {1}));
            driver.frameKind = kind;
            request();
            EXPECT_EQ(good ? REPLY_ACCEPTED : REPLY_GIVEN_UP, good ? echo() : silence());
            const bool completed = kind == FRAME_WRITE;
            EXPECT_EQ(completed ? 0 : 1, cachedUnit(1, "QX", 5).writePending);
            EXPECT_EQ((Bytes{completed && good ? 1 : 0, 0, 0, 0}), readBytes(1, "QX", 5));
            EXPECT_EQ(completed && !good ? 1u : 0u, takeNotifications().size());
        }
    }
}

TEST_F(ReplyHandling, AWriteIsCompletedAsItsFrameSaysAndNotAsTheQueue)
{
    driver.writeList.append(variable(1, "QW", 5, 1, {2, 0}));
    putPendingWrite(1, "QW", 5, 1, 2);
    putPendingWrite(1, "QW", 6, 1, 2);
    request();
    driver.writeList[0].addr = 6;
    echo();
    EXPECT_EQ(0, cachedUnit(1, "QW", 5).writePending);
    EXPECT_EQ(1, cachedUnit(1, "QW", 6).writePending);
}

TEST_F(ReplyHandling, ReplyDataAreDecodedAsTheHeadFrameSays)
{
    getReadFrame({variable(1, "MW", 100, 2)});
    driver.frameQueue[0].dataStart = 1;
    driver.frameQueue[0].itemCount = 1;
    EXPECT_EQ(0, dealReadFrameReturnSaveData(bytes({9, 0x12, 0x34, 9})));
    EXPECT_EQ((Bytes{0x34, 0x12, 0, 0}), readBytes(1, "MW", 100));
    EXPECT_EQ(1, int(driver.dataAreas.size()));
    EXPECT_EQ(1, int(driver.frameQueue.size()));
}
