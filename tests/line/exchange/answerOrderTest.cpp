#include "exchange/answerOrder.h"

#include "exchangeMachineFixture.h"

// R and S are requests of the caller, with the numbers 1 and 2; F is a fence.

namespace {

enum { FENCE = 0, FIRST = 1, SECOND = 2 };

const QByteArray R = readOf(3000, 2);
const QByteArray S = readOf(3100, 5);
const QByteArray F = readOf(3000, 9);
const QByteArray G = readOf(3000, 11);
const QByteArray W = writeOf(3001, 1234);

/// The signature of the reply to a read: station, function and number of data bytes.
QByteArray signatureTo(const QByteArray& read)
{
    return answerTo(read).left(3);
}

class AnswerOrderTest : public testing::Test
{
protected:
    /// Answers a fence, so that no request is outstanding.
    AnswerOrderTest()
    {
        order.ask(F, 0, FENCE);
        order.take(answerTo(F));
    }

    AnswerOrder order;
};

} // namespace

TEST(NewAnswerOrder, StartsInDoubtUntilAFenceIsAnswered)
{
    AnswerOrder order;
    EXPECT_FALSE(order.isClean());
    order.ask(F, 0, FENCE);
    EXPECT_FALSE(order.isClean());
    order.take(answerTo(F));
    EXPECT_TRUE(order.isClean());
}

TEST(NewAnswerOrder, IsSureOnlyOfTheAnswerToAFence)
{
    AnswerOrder order;
    order.ask(R, 0, FIRST);
    const AnswerOrder::Taken taken = order.take(answerTo(R));
    EXPECT_TRUE(taken.isAsked);
    EXPECT_FALSE(taken.isSure);
    EXPECT_FALSE(order.isClean());
    order.ask(F, 0, FENCE);
    EXPECT_TRUE(order.take(answerTo(F)).isSure);
}

TEST_F(AnswerOrderTest, TheAnswerToTheOnlyRequestIsSure)
{
    order.ask(R, 77, FIRST);
    EXPECT_FALSE(order.isClean());
    const AnswerOrder::Taken taken = order.take(answerTo(R));
    EXPECT_TRUE(taken.isAsked);
    EXPECT_TRUE(taken.isSure);
    EXPECT_EQ(R, taken.asked.sent);
    EXPECT_EQ(77, taken.asked.at);
    EXPECT_EQ(quint64(FIRST), taken.asked.request);
    EXPECT_FALSE(taken.asked.isFence());
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, RefusalAnswersTheRequest)
{
    order.ask(W, 0, FIRST);
    const AnswerOrder::Taken taken = order.take(refusalOf(W));
    EXPECT_TRUE(taken.isSure);
    EXPECT_EQ(W, taken.asked.sent);
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, AnswerDropsAllEarlierRequests)
{
    order.ask(R, 0, FIRST);
    order.ask(F, 0, FENCE);
    EXPECT_TRUE(order.take(answerTo(F)).asked.isFence());
    EXPECT_TRUE(order.isClean());
    EXPECT_FALSE(order.take(answerTo(R)).isAsked);
}

TEST_F(AnswerOrderTest, AnswerLeavesLaterRequestsOutstanding)
{
    order.ask(R, 0, FIRST);
    order.ask(F, 0, FENCE);
    EXPECT_TRUE(order.take(answerTo(R)).isSure);
    EXPECT_FALSE(order.isClean());
    EXPECT_TRUE(order.mayCome(signatureTo(F)));
    EXPECT_TRUE(order.take(answerTo(F)).isSure);
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, AnswerToEarlierFenceLeavesLaterFenceOutstanding)
{
    order.ask(F, 0, FENCE);
    order.ask(G, 0, FENCE);
    order.take(answerTo(F));
    EXPECT_FALSE(order.isClean());
    order.take(answerTo(G));
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, RefusalOfOneOfTwoRequestsGoesToTheOlderAndIsNotSure)
{
    order.ask(R, 0, FIRST);
    order.ask(F, 0, FENCE);
    const AnswerOrder::Taken taken = order.take(refusalOf(R));
    EXPECT_EQ(R, taken.asked.sent);
    EXPECT_FALSE(taken.isSure);
    EXPECT_FALSE(order.isClean());
}

TEST_F(AnswerOrderTest, SecondEqualRefusalAnswersNoRequest)
{
    order.ask(R, 0, FIRST);
    order.ask(F, 0, FENCE);
    order.take(refusalOf(R));
    EXPECT_FALSE(order.take(refusalOf(F)).isAsked);
    EXPECT_FALSE(order.isClean());
    order.take(answerTo(F));
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, RefusalOfAnotherFunctionIsSure)
{
    order.ask(W, 0, FIRST);
    order.ask(F, 0, FENCE);
    EXPECT_TRUE(order.take(refusalOf(W)).isSure);
    EXPECT_TRUE(order.take(refusalOf(F)).isSure);
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, DoubledAnswerLeavesAnswerInFlightSure)
{
    order.ask(R, 0, FIRST);
    order.take(answerTo(R));
    EXPECT_FALSE(order.take(answerTo(R)).isAsked);
    EXPECT_FALSE(order.isClean());
    order.ask(S, 0, SECOND);
    EXPECT_TRUE(order.take(answerTo(S)).isSure);
    EXPECT_FALSE(order.isClean());
}

TEST_F(AnswerOrderTest, AfterUnaskedAnswerOnlyAFencesAnswerIsSure)
{
    order.ask(R, 0, FIRST);
    EXPECT_FALSE(order.take(answerTo(S)).isAsked);
    EXPECT_FALSE(order.take(answerTo(R)).isSure);
    EXPECT_FALSE(order.isClean());
    order.ask(G, 0, FENCE);
    EXPECT_TRUE(order.take(answerTo(G)).isSure);
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, OnlyAFencesAnswerEndsADoubt)
{
    for (AnswerOrder::Doubt doubt : {AnswerOrder::CAME_AGAIN, AnswerOrder::UNEXPLAINED}) {
        order.doubt(doubt);
        EXPECT_FALSE(order.isClean());
        order.ask(R, 0, FIRST);
        order.take(answerTo(R));
        EXPECT_FALSE(order.isClean());
        order.ask(G, 0, FENCE);
        order.take(answerTo(G));
        EXPECT_TRUE(order.isClean());
    }
}

TEST_F(AnswerOrderTest, LesserDoubtDoesNotReplaceGreaterDoubt)
{
    order.doubt(AnswerOrder::UNEXPLAINED);
    order.doubt(AnswerOrder::CAME_AGAIN);
    order.ask(R, 0, FIRST);
    EXPECT_FALSE(order.take(answerTo(R)).isSure);
}

// Replies that may still come. The answer to the next request must differ from them.

TEST_F(AnswerOrderTest, AnswerAndRefusalOfAnOutstandingRequestMayCome)
{
    order.ask(R, 0, FIRST);
    order.ask(G, 0, FENCE);
    EXPECT_TRUE(order.mayCome(signatureTo(R)));
    EXPECT_TRUE(order.mayCome(signatureTo(G)));
    EXPECT_TRUE(order.mayCome(refusalOf(R).left(2)));
    EXPECT_FALSE(order.mayCome(signatureTo(S)));
    EXPECT_FALSE(order.mayCome(refusalOf(W).left(2)));
}

TEST_F(AnswerOrderTest, OnlyTheLastAcceptedAnswerMayComeAgain)
{
    order.ask(R, 0, FIRST);
    order.take(answerTo(R));
    EXPECT_TRUE(order.mayCome(signatureTo(R)));
    EXPECT_FALSE(order.mayCome(signatureTo(F)));
}

TEST_F(AnswerOrderTest, UnaskedReplyMayComeAgainUntilAFenceIsAnswered)
{
    order.take(answerTo(S));
    order.take(answerTo(R));
    EXPECT_TRUE(order.mayCome(signatureTo(S)));
    EXPECT_TRUE(order.mayCome(signatureTo(R)));
    order.ask(G, 0, FENCE);
    order.take(answerTo(G));
    EXPECT_FALSE(order.mayCome(signatureTo(S)));
    EXPECT_FALSE(order.mayCome(signatureTo(R)));
}

TEST_F(AnswerOrderTest, RemembersTheRequestThatWasAnsweredLast)
{
    order.ask(R, 0, FIRST);
    order.take(answerTo(R));
    EXPECT_TRUE(order.isLast(R));
    EXPECT_FALSE(order.isLast(readOf(3050, 2))); // its answer has the same signature
    EXPECT_FALSE(order.isLast(F));
}

// Requests that were sent several times.

TEST_F(AnswerOrderTest, RepeatedRequestIsOneEntryWithACount)
{
    order.ask(G, 10, FENCE);
    order.ask(G, 20, FENCE);
    EXPECT_EQ(2, order.newest().times);
    EXPECT_EQ(20, order.newest().at);
    EXPECT_EQ(2, order.take(answerTo(G)).asked.times);
}

TEST_F(AnswerOrderTest, RequestSentTwiceStaysOutstandingUntilALaterAnswer)
{
    order.ask(R, 0, FIRST);
    order.ask(G, 0, FENCE);
    order.ask(G, 0, FENCE);
    order.take(answerTo(G));
    EXPECT_FALSE(order.isClean());
    EXPECT_TRUE(order.mayCome(signatureTo(G)));
    EXPECT_FALSE(order.mayCome(signatureTo(R)));
    order.ask(F, 0, FENCE);
    order.take(answerTo(F));
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, IsFullWith24Entries)
{
    for (int i = 0; i < 24; ++i) {
        EXPECT_FALSE(order.isFull());
        order.ask(readOf(3000, 1 + i), 0, FENCE);
    }
    EXPECT_TRUE(order.isFull());
    EXPECT_EQ(readOf(3000, 24), order.newest().sent);
    order.take(answerTo(readOf(3000, 1)));
    EXPECT_FALSE(order.isFull());
}

// Copies of requests on a link that echoes.

TEST_F(AnswerOrderTest, FirstReplyToAnEchoedWriteIsItsCopy)
{
    order.ask(W, 0, FIRST, true);
    const AnswerOrder::Taken copy = order.take(answerTo(W));
    EXPECT_TRUE(copy.isCopy);
    EXPECT_FALSE(copy.isAsked);
    EXPECT_FALSE(order.isClean());
    const AnswerOrder::Taken taken = order.take(answerTo(W));
    EXPECT_TRUE(taken.isSure);
    EXPECT_FALSE(taken.isCopy);
    EXPECT_TRUE(order.isClean());
}

TEST_F(AnswerOrderTest, RefusalOfAnEchoedWriteIsNotItsCopy)
{
    order.ask(W, 0, FIRST, true);
    EXPECT_TRUE(order.take(refusalOf(W)).isSure);
}

TEST_F(AnswerOrderTest, CopyLeavesAllOtherRequestsOutstanding)
{
    order.ask(R, 0, FIRST);
    order.ask(W, 0, SECOND, true);
    order.ask(G, 0, FENCE);
    order.take(answerTo(W));
    EXPECT_TRUE(order.mayCome(signatureTo(R)));
    EXPECT_TRUE(order.take(answerTo(W)).isAsked);
    EXPECT_FALSE(order.mayCome(signatureTo(R)));
    EXPECT_FALSE(order.isClean());
    EXPECT_TRUE(order.take(answerTo(G)).isSure);
}
