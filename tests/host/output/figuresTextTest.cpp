#include "output/figuresText.h"

#include <gtest/gtest.h>

namespace {

LinkFigures busyLink()
{
    LinkFigures figures;
    figures.wholeRun.exchangesPerSecond = 47.34;
    figures.exchanges = 1234;
    figures.retries = 1;
    figures.giveUps = 2;
    figures.refusals = 3;
    figures.fences = 5;
    figures.losses = 4;
    figures.wholeRun.replyMedian = 1230;
    figures.wholeRun.reply99 = 3390;
    figures.wholeRun.wireShare = 0.634;
    figures.connected = true;
    return figures;
}

bool shows(const LinkFigures& figures, const char* text)
{
    return figuresText(figures).contains(QLatin1String(text));
}

QJsonValue jsonOf(const LinkFigures& figures, const char* key)
{
    return figuresJson(figures).value(QLatin1String(key));
}

} // namespace

TEST(FiguresText, ShowsAllFiguresInOneLine)
{
    EXPECT_EQ("47.3 exchanges/s  retries 1  give-ups 2  refused 3  fences 5  reply p50 1.2 ms  "
              "p99 3.4 ms  wire 63 %  losses 4",
              figuresText(busyLink()).toStdString());
}

TEST(FiguresText, LiveTextHasRecentRatesAndTotals)
{
    LinkFigures figures = busyLink();
    figures.lately.exchangesPerSecond = 12.04;
    figures.lately.replyMedian = 2100;
    figures.lately.reply99 = 7700;
    figures.lately.wireShare = 0.221;
    EXPECT_EQ("12.0 exchanges/s  retries 1  give-ups 2  refused 3  fences 5  reply p50 2.1 ms  "
              "p99 7.7 ms  wire 22 %  losses 4",
              liveFiguresText(figures).toStdString());
}

TEST(FiguresText, LostLinkComesFirst)
{
    LinkFigures figures = busyLink();
    figures.connected = false;
    EXPECT_EQ("link lost  47.3 exchanges/s", figuresText(figures).left(27).toStdString());
}

TEST(FiguresText, ReplyTimesHaveAFittingUnit)
{
    const struct
    {
        qint64 time;
        const char* text;
    } rows[] = {{87, "p50 0.09 ms  "},
                {640, "p50 0.64 ms  "},
                {1000, "p50 1.0 ms  "},
                {512000, "p50 512.0 ms  "},
                {1520000, "p50 1.5 s  "}};
    for (const auto& row : rows) {
        LinkFigures figures = busyLink();
        figures.wholeRun.replyMedian = row.time;
        EXPECT_TRUE(shows(figures, row.text)) << figuresText(figures).toStdString();
    }
}

TEST(FiguresText, NoReplyTimeWithoutAReply)
{
    EXPECT_TRUE(shows(LinkFigures(), "reply p50 -  p99 -  "));
}

TEST(FiguresText, ReplyTimeOfZeroIsShown)
{
    LinkFigures figures = busyLink();
    figures.wholeRun.replyMedian = 0;
    EXPECT_TRUE(shows(figures, "p50 0.00 ms  "));
}

TEST(FiguresText, NetworkHasNoWireShare)
{
    LinkFigures figures = busyLink();
    figures.wholeRun.wireShare = -1;
    EXPECT_FALSE(shows(figures, "wire")) << figuresText(figures).toStdString();
    EXPECT_TRUE(jsonOf(figures, "wireShare").isNull());
}

TEST(FiguresJson, HasEachFigureUnderItsName)
{
    const LinkFigures figures = busyLink();
    EXPECT_EQ(QJsonValue(true), jsonOf(figures, "connected"));
    EXPECT_EQ(QJsonValue(47.34), jsonOf(figures, "exchangesPerSecond"));
    EXPECT_EQ(QJsonValue(1234), jsonOf(figures, "exchanges"));
    EXPECT_EQ(QJsonValue(1), jsonOf(figures, "retries"));
    EXPECT_EQ(QJsonValue(2), jsonOf(figures, "giveUps"));
    EXPECT_EQ(QJsonValue(3), jsonOf(figures, "refusals"));
    EXPECT_EQ(QJsonValue(5), jsonOf(figures, "fences"));
    EXPECT_EQ(QJsonValue(4), jsonOf(figures, "losses"));
    EXPECT_EQ(QJsonValue(1230), jsonOf(figures, "replyMedianUs"));
    EXPECT_EQ(QJsonValue(3390), jsonOf(figures, "reply99Us"));
    EXPECT_EQ(QJsonValue(0.634), jsonOf(figures, "wireShare"));
}

TEST(FiguresJson, HasTheRatesOfTheWholeRun)
{
    LinkFigures figures = busyLink();
    figures.lately.exchangesPerSecond = 12;
    figures.lately.wireShare = 0.5;
    EXPECT_EQ(QJsonValue(47.34), jsonOf(figures, "exchangesPerSecond"));
    EXPECT_EQ(QJsonValue(0.634), jsonOf(figures, "wireShare"));
}

TEST(FiguresJson, ReplyTimesAreNullWithoutAReply)
{
    EXPECT_TRUE(jsonOf(LinkFigures(), "replyMedianUs").isNull());
    EXPECT_TRUE(jsonOf(LinkFigures(), "reply99Us").isNull());
}
