#include "exchangeMachineFixture.h"

// Registers may hold the bytes of a frame, for example where a controller stores frames that its
// port received. An answer with such data is one answer, in whatever pieces its bytes come.

class ExchangeMachineInnerFramesTest : public InStepTest
{
protected:
    const QByteArray BLOCK = readOf(3000, 20);

    /// The answer to BLOCK whose registers hold these bytes, from the third one on.
    QByteArray answerAround(const QByteArray& inner) const
    {
        QByteArray reply = answerTo(BLOCK);
        reply.chop(2);
        return frameWith(reply.replace(7, inner.size(), inner));
    }

    void expectTaken(const QByteArray& inner, int piece)
    {
        ended.clear();
        const QByteArray reply = answerAround(inner);
        ask(BLOCK);
        ASSERT_EQ(BLOCK, behindFences());
        for (int at = 0; at < reply.size(); at += piece)
            come(reply.mid(at, piece), at == 0 ? int(ANSWERED) : 260 * piece);
        ASSERT_EQ(Ends{END_ANSWERED}, ends()) << inner.toHex().toStdString() << ' ' << piece;
        EXPECT_EQ(reply, last().reply);
        exchange(readOf(3500, 70));
    }
};

TEST_F(ExchangeMachineInnerFramesTest, RefusalBytesInsideAnAnswerAreData)
{
    for (int piece = 1; piece < 45; ++piece)
        expectTaken(REFUSAL, piece);
}

TEST_F(ExchangeMachineInnerFramesTest, WriteEchoInsideAnAnswerIsData)
{
    for (int piece = 1; piece < 45; ++piece)
        expectTaken(WRITE, piece);
}

TEST_F(ExchangeMachineInnerFramesTest, ReadAnswerInsideAnAnswerIsData)
{
    for (int piece = 1; piece < 45; ++piece)
        expectTaken(REPLY, piece);
}

TEST_F(ExchangeMachineInnerFramesTest, RefusalBehindABrokenAnswerEndsWithinTheTimeOut)
{
    ask(BLOCK);
    come(answerTo(BLOCK).left(10));
    come(REFUSAL, 1000);
    waitInVain();
    EXPECT_EQ(1u, ends().size());
    EXPECT_LE(now, sentAt + 3 * ANSWER);
}

TEST_F(ExchangeMachineInnerFramesTest, WholeAnswerBehindABrokenAnswerIsTaken)
{
    ask(BLOCK);
    come(answerTo(BLOCK).left(40));
    come(answerTo(BLOCK), 10);
    EXPECT_EQ(Ends{END_ANSWERED}, ends());
    EXPECT_EQ(answerTo(BLOCK), last().reply);
}
