#include "exchange/unansweredRequests.h"

#include "exchangeMachineFixture.h"

// A time-out is 100 and requests take no time.

namespace {

enum { TIME_OUT = 100, UNSEEN = 1000, SHORT = 9 };

// MODBUS Application Protocol V1.1b3, 6.3; checksums by pymodbus' computeCRC.
const QByteArray READ_WIDE = fromHex("01030BB8000387CA");
const QByteArray OTHER_STATION = fromHex("02030BB800024639");

const QByteArray NOTHING;

QByteArray signatureOf(const QByteArray& request, int length = SHORT)
{
    return replySignature(request, length);
}

} // namespace

class UnansweredRequestsTest : public testing::Test
{
protected:
    void sendAt(qint64 time, const QByteArray& request = READ_A, int length = SHORT)
    {
        requests.add(request, length, time, TIME_OUT, 0);
    }

    void sendThree()
    {
        sendAt(0);
        sendAt(TIME_OUT);
        sendAt(2 * TIME_OUT);
    }

    bool takeLate(QByteArray bytes, qint64 now)
    {
        return requests.takeLate(bytes, NOTHING, now).has_value();
    }

    UnansweredRequests requests;
};

TEST_F(UnansweredRequestsTest, OneIsWaitedForTwoTimeOuts)
{
    sendAt(5);
    EXPECT_EQ(5 + 2 * TIME_OUT, requests.until());
    EXPECT_EQ(5 + 2 * TIME_OUT, requests.until(signatureOf(READ_A)));
    EXPECT_LT(requests.until(signatureOf(ECHO, 8)), 0);
}

TEST_F(UnansweredRequestsTest, OneOverALineThatIsNotSeenIsWaitedForAsMuchLonger)
{
    requests.add(READ_A, SHORT, 0, TIME_OUT, UNSEEN);
    EXPECT_EQ(2 * TIME_OUT + UNSEEN, requests.until());
    EXPECT_EQ(2 * TIME_OUT + UNSEEN, requests.probablyUntil());
}

TEST_F(UnansweredRequestsTest, EachOneIsAnsweredAfterTheOneBefore)
{
    sendThree();
    EXPECT_EQ(3 * 2 * TIME_OUT, requests.until());
}

TEST_F(UnansweredRequestsTest, TheyAreServedOneByOneWhateverTheyAskFor)
{
    sendAt(0);
    sendAt(10, OTHER_STATION);
    EXPECT_EQ(2 * 2 * TIME_OUT, requests.until(signatureOf(OTHER_STATION)));
    EXPECT_EQ(2 * TIME_OUT, requests.until(signatureOf(READ_A)));
}

TEST_F(UnansweredRequestsTest, WithoutAnyAnswerTheLastOneIsExpectedNoLongerThanTheFirst)
{
    sendThree();
    EXPECT_EQ(2 * TIME_OUT + 2 * TIME_OUT, requests.probablyUntil());
}

TEST_F(UnansweredRequestsTest, AnAnswerInTimeLeavesNothing)
{
    sendAt(0);
    EXPECT_EQ(30, requests.answered(signatureOf(READ_A), 30));
    EXPECT_TRUE(requests.attempts().empty());
}

TEST_F(UnansweredRequestsTest, AnAnswerToARepeatedRequestIsItsFirstAttemptsAndTheOthersTakeAsLong)
{
    sendThree();
    requests.answered(signatureOf(READ_A), 220);
    EXPECT_EQ(220 + 2 * (220 + TIME_OUT), requests.until());
    EXPECT_EQ(requests.until(), requests.probablyUntil());
}

TEST_F(UnansweredRequestsTest, AnAnswerAtOnceAfterALossLeavesTheOtherTwoTimeOuts)
{
    sendAt(0);
    sendAt(5);
    requests.answered(signatureOf(READ_A), 10);
    EXPECT_EQ(10 + 2 * TIME_OUT, requests.until());
}

TEST_F(UnansweredRequestsTest, AnAnswerTellsWhatTheLineThatIsNotSeenTakes)
{
    requests.add(READ_A, SHORT, 0, TIME_OUT, UNSEEN);
    requests.add(READ_A, SHORT, TIME_OUT, TIME_OUT, UNSEEN);
    requests.answered(signatureOf(READ_A), 120);
    EXPECT_EQ(120 + 120 + TIME_OUT, requests.until());
}

TEST_F(UnansweredRequestsTest, ItTookNoLongerAtLeastThanSinceTheLastAttempt)
{
    sendThree();
    EXPECT_EQ(20, requests.answered(signatureOf(READ_A), 220));
}

TEST_F(UnansweredRequestsTest, ALateAnswerIsCutOutAndPutsOffTheOthers)
{
    sendThree();
    QByteArray received = fromHex("55") + REPLY + fromHex("AA");
    const auto late = requests.takeLate(received, NOTHING, 550);
    ASSERT_TRUE(late);
    EXPECT_EQ(SHORT, late->length);
    EXPECT_EQ(350, late->took);
    EXPECT_EQ(fromHex("55AA"), received);
    EXPECT_EQ(550 + 2 * (550 + TIME_OUT), requests.until());
}

TEST_F(UnansweredRequestsTest, ALateAnswerIsTimedFromTheOneBefore)
{
    sendThree();
    takeLate(REPLY, 550);
    QByteArray received = REPLY;
    EXPECT_EQ(300, requests.takeLate(received, NOTHING, 850)->took);
}

TEST_F(UnansweredRequestsTest, LateAnswersShortenNoWaitAsTheyMayHaveComeTwice)
{
    sendThree();
    for (int i = 0; i < 3; ++i)
        EXPECT_TRUE(takeLate(REPLY, 10));
    EXPECT_FALSE(takeLate(REPLY, 10));
    EXPECT_EQ(3 * 2 * TIME_OUT, requests.until());
}

TEST_F(UnansweredRequestsTest, WhatIsAskedJustNowIsNotLate)
{
    sendAt(0);
    QByteArray received = REPLY;
    EXPECT_FALSE(requests.takeLate(received, signatureOf(READ_A), 550));
    EXPECT_EQ(REPLY, received);
}

TEST_F(UnansweredRequestsTest, ALateAnswerBehindARefusalIsFound)
{
    sendAt(0);
    EXPECT_TRUE(takeLate(REFUSAL + REPLY, 150));
}

TEST_F(UnansweredRequestsTest, ALateAnswerPutsOffNoOtherStations)
{
    sendAt(0);
    sendAt(10, OTHER_STATION);
    takeLate(REPLY, 150);
    EXPECT_EQ(2 * 2 * TIME_OUT, requests.until());
}

TEST_F(UnansweredRequestsTest, AnAnswerEndsTheWaitForWhatItsStationWasAskedBefore)
{
    sendAt(0);
    sendAt(10, OTHER_STATION);
    sendAt(20, READ_WIDE, 11);
    requests.forgetBefore(signatureOf(READ_WIDE, 11));
    ASSERT_EQ(2u, requests.attempts().size());
    EXPECT_EQ(OTHER_STATION, requests.attempts()[0].request);
    EXPECT_EQ(READ_WIDE, requests.attempts()[1].request);
}

TEST_F(UnansweredRequestsTest, WhatWasWaitedForInVainIsForgotten)
{
    sendAt(0);
    sendAt(0, OTHER_STATION);
    requests.forgetExpired(2 * TIME_OUT);
    ASSERT_EQ(1u, requests.attempts().size());
    EXPECT_EQ(OTHER_STATION, requests.attempts()[0].request);
}

TEST_F(UnansweredRequestsTest, OneIsAloneWhateverOtherStationsAreAsked)
{
    sendAt(0);
    sendAt(0, OTHER_STATION);
    EXPECT_TRUE(requests.isAlone(signatureOf(READ_A)));
    sendAt(0, READ_WIDE, 11);
    EXPECT_FALSE(requests.isAlone(signatureOf(READ_A)));
}

TEST_F(UnansweredRequestsTest, OfAThousandInARowTheLastTwentyAreReckonedWith)
{
    for (int i = 0; i < 1000; ++i)
        sendAt(i);
    EXPECT_EQ(size_t(UnansweredRequests::MOST_KEPT), requests.attempts().size());
}
