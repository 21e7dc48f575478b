#include "session/sharedValues.h"

#include <gtest/gtest.h>

// What the board makes of a link's exchanges, losses and use of the wire.

namespace {

enum { SECOND = 1000000 };

FINISHED_EXCHANGE exchangeOf(int result, qint64 replyTime, int exceptionCode = 0)
{
    FINISHED_EXCHANGE finished;
    finished.result = result;
    finished.replyTime = replyTime;
    finished.exceptionCode = exceptionCode;
    if (exceptionCode != 0) finished.end = END_REFUSED;
    return finished;
}

} // namespace

class SharedValuesFiguresTest : public testing::Test
{
protected:
    SharedValuesFiguresTest() : shared(0, false) {}

    SharedValues shared;
};

TEST_F(SharedValuesFiguresTest, FiguresCountEachExchangeByItsEnd)
{
    shared.exchanged(exchangeOf(REPLY_ACCEPTED, 1000), 0);
    shared.exchanged(exchangeOf(REPLY_RETRY, -1), 0);
    shared.exchanged(exchangeOf(REPLY_RETRY, -1), 0);
    shared.exchanged(exchangeOf(REPLY_GIVEN_UP, -1), 0);
    shared.exchanged(exchangeOf(REPLY_GIVEN_UP, 1000, 2), 0);
    const LinkFigures figures = shared.figures(2000000);
    EXPECT_EQ(3, figures.exchanges);
    EXPECT_EQ(2, figures.retries);
    EXPECT_EQ(1, figures.giveUps);
    EXPECT_EQ(1, figures.refusals);
    EXPECT_DOUBLE_EQ(1, figures.wholeRun.exchangesPerSecond); // the accepted and the refused
}

TEST_F(SharedValuesFiguresTest, FencesAreCountedWhateverBecameOfThemAndAreNoExchanges)
{
    EndedExchange fence = {};
    fence.isFence = true;
    for (const ExchangeEnd end : {END_ANSWERED, END_SILENT}) {
        fence.end = end;
        shared.fenced(fence, 0);
    }
    const LinkFigures figures = shared.figures(SECOND);
    EXPECT_EQ(2, figures.fences);
    EXPECT_EQ(0, figures.exchanges);
    EXPECT_EQ(0, figures.giveUps);
}

TEST_F(SharedValuesFiguresTest, TheRateCountsFromTheFirstOpeningOfTheLink)
{
    shared.linkChanged(true, QString(), 1000000);
    shared.exchanged(exchangeOf(REPLY_ACCEPTED, 1000), 0);
    shared.linkChanged(false, QString(), 2000000);
    shared.linkChanged(true, QString(), 2500000);
    EXPECT_DOUBLE_EQ(0.5, shared.figures(3000000).wholeRun.exchangesPerSecond);
}

TEST_F(SharedValuesFiguresTest, ReplyTimesAreThoseOfAnswersOnly)
{
    for (int i = 0; i < 98; ++i)
        shared.exchanged(exchangeOf(REPLY_ACCEPTED, 1000), 0);
    shared.exchanged(exchangeOf(REPLY_ACCEPTED, 50000), 0);
    shared.exchanged(exchangeOf(REPLY_ACCEPTED, 50000), 0);
    for (int i = 0; i < 200; ++i)
        shared.exchanged(exchangeOf(REPLY_GIVEN_UP, -1), 0);
    const LinkFigures figures = shared.figures(1);
    EXPECT_NEAR(1000, double(figures.wholeRun.replyMedian), 20);
    EXPECT_NEAR(50000, double(figures.wholeRun.reply99), 1000);
}

TEST_F(SharedValuesFiguresTest, FiguresAtTheStartAreZeroOrUnknown)
{
    const LinkFigures figures = shared.figures(0);
    EXPECT_EQ(0, figures.exchanges);
    EXPECT_EQ(0.0, figures.wholeRun.exchangesPerSecond);
    EXPECT_EQ(-1, figures.wholeRun.replyMedian);
    EXPECT_EQ(-1.0, figures.wholeRun.wireShare);
    EXPECT_FALSE(figures.connected);
}

TEST_F(SharedValuesFiguresTest, TheWiresShareIsTheTimeThatItWasTaken)
{
    shared.wireTaken(0, 100);
    shared.wireTaken(300, 450);
    EXPECT_DOUBLE_EQ(0.25, shared.figures(1000).wholeRun.wireShare);
}

TEST_F(SharedValuesFiguresTest, ALinkThatWasNeverThereIsNotLost)
{
    shared.linkChanged(false, QLatin1String("no device"), 1);
    EXPECT_EQ(0, shared.figures(1).losses);
}

TEST_F(SharedValuesFiguresTest, LossesOfTheLinkAreCounted)
{
    for (int i = 0; i < 3; ++i) {
        shared.linkChanged(true, QString(), 10 * i);
        shared.linkChanged(false, QLatin1String("unplugged"), 10 * i + 5);
    }
    EXPECT_EQ(3, shared.figures(100).losses);
    EXPECT_FALSE(shared.figures(100).connected);
    const News news = shared.takeNews();
    ASSERT_EQ(6u, news.linkEvents.size());
    EXPECT_TRUE(news.linkEvents[4].connected);
    EXPECT_EQ(QLatin1String("unplugged"), news.linkEvents[5].trouble);
    EXPECT_EQ(25, news.linkEvents[5].time);
}

TEST_F(SharedValuesFiguresTest, RatesOfLateAreThoseOfTheLastTenSecondsAndTotalsAreOfTheRun)
{
    shared.linkChanged(true, QString(), 0);
    for (int i = 1; i <= 100; ++i) {
        shared.exchanged(exchangeOf(REPLY_ACCEPTED, 60), i * SECOND);
        shared.wireTaken(i * SECOND - SECOND / 2, i * SECOND);
    }
    shared.exchanged(exchangeOf(REPLY_RETRY, -1), 100 * SECOND);
    const LinkFigures figures = shared.figures(105 * SECOND);
    EXPECT_DOUBLE_EQ(0.5, figures.lately.exchangesPerSecond);
    EXPECT_DOUBLE_EQ(0.25, figures.lately.wireShare);
    EXPECT_EQ(60, figures.lately.replyMedian);
    EXPECT_EQ(60, figures.lately.reply99);
    EXPECT_DOUBLE_EQ(100.0 / 105, figures.wholeRun.exchangesPerSecond);
    EXPECT_DOUBLE_EQ(50.0 / 105, figures.wholeRun.wireShare);
    EXPECT_EQ(100, figures.exchanges);
    EXPECT_EQ(1, figures.retries);
}

TEST_F(SharedValuesFiguresTest, ASilentPlcsRateOfLateFallsToZeroThoughItIsAsked)
{
    shared.linkChanged(true, QString(), 0);
    for (int i = 1; i <= 10; ++i)
        shared.exchanged(exchangeOf(REPLY_ACCEPTED, 60), i * SECOND);
    for (int i = 11; i <= 20; ++i)
        shared.exchanged(exchangeOf(REPLY_GIVEN_UP, -1), i * SECOND);
    const LinkFigures figures = shared.figures(20 * SECOND);
    EXPECT_DOUBLE_EQ(0, figures.lately.exchangesPerSecond);
    EXPECT_EQ(-1, figures.lately.replyMedian);
    EXPECT_EQ(10, figures.giveUps);
}

TEST_F(SharedValuesFiguresTest, RatesOfLateGoOnAcrossALostLink)
{
    shared.linkChanged(true, QString(), 0);
    for (int i = 1; i <= 20; ++i)
        shared.exchanged(exchangeOf(REPLY_ACCEPTED, 60), i * SECOND);
    shared.linkChanged(false, QLatin1String("unplugged"), 20 * SECOND);
    shared.linkChanged(true, QString(), 24 * SECOND);
    EXPECT_DOUBLE_EQ(0.5, shared.figures(25 * SECOND).lately.exchangesPerSecond);
}
