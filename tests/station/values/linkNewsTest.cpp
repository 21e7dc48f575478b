#include "valuesFixture.h"

// What listeners, events and monitoring learn of a link.

TEST_F(LinkValuesTest, ListenersAreToldChangesOfValueQualityAndTroubleOnly)
{
    read(FAST, 1);
    ASSERT_EQ(1u, listener.notes.size());
    EXPECT_EQ(GOOD, listener.notes[0].second.quality);
    read(FAST, 1);
    EXPECT_EQ(1u, listener.notes.size());
    clock.passMs(2001);
    read(FAST, 1); // it was stale
    EXPECT_EQ(2u, listener.notes.size());
    values.tagsBad({FAST}, QLatin1String("refused"), linkNow());
    values.tagsBad({FAST}, QLatin1String("refused"), linkNow());
    ASSERT_EQ(3u, listener.notes.size());
    EXPECT_EQ(BAD, listener.notes[2].second.quality);
    EXPECT_EQ(bytesOf(1), listener.notes[2].second.bytes);
}

TEST_F(LinkValuesTest, VersionGrowsWithWhatListenersAreTold)
{
    const quint64 before = values.version();
    read(FAST, 1);
    EXPECT_EQ(before + 1, values.version());
    read(FAST, 1);
    EXPECT_EQ(before + 1, values.version());
    values.linkChanged(false, QLatin1String("unplugged"), linkNow());
    EXPECT_LT(before + 1, values.version());
}

TEST_F(LinkValuesTest, NextStaleIsTheEndOfTheFirstGoodValue)
{
    EXPECT_FALSE(values.nextStale());
    read(ONCE, 1);
    EXPECT_FALSE(values.nextStale());
    read(SLOW, 1);
    EXPECT_EQ(clock.steady() + 30000 * MS, *values.nextStale());
    read(FAST, 1);
    EXPECT_EQ(clock.steady() + 2000 * MS, *values.nextStale());
    clock.passMs(2001);
    EXPECT_EQ(clock.steady() + 27999 * MS, *values.nextStale());
}

TEST_F(LinkValuesTest, EachChangeOfTheLinkIsAnEvent)
{
    clock.passMs(1000);
    values.linkChanged(false, QLatin1String("tcp:x, port 502: \"gone\""), linkNow());
    clock.passMs(1000);
    values.linkChanged(true, QString(), linkNow());
    const std::vector<StationEvent> all = events.since(0);
    ASSERT_EQ(3u, all.size());
    EXPECT_EQ(StationEvent::LINK, all[1].kind);
    EXPECT_EQ(wallAtStart + 1000, all[1].time);
    EXPECT_EQ("{\"link\":\"plc\",\"state\":\"lost\",\"since\":1700000001000,"
              "\"trouble\":\"tcp:x, port 502: \\\"gone\\\"\"}",
              all[1].document.toStdString());
    EXPECT_EQ("{\"link\":\"plc\",\"state\":\"up\",\"since\":1700000002000,\"trouble\":null}",
              all[2].document.toStdString());
}

TEST_F(LinkValuesTest, LinkOpensAtFirst)
{
    const LinkValues fresh(QLatin1String("new"), threeTags(), clock);
    EXPECT_EQ(LINK_OPENING, fresh.state().standing);
    EXPECT_EQ(LINK_UP, values.state().standing);
}

//  time        0     1 s                2 s          3 s
//  link        up    station 1 answers  lost         up
//  station 1   silent  answers          silent       silent until it answers
TEST_F(LinkValuesTest, StationsAreSilentUntilTheyAnswerOnThisConnection)
{
    ASSERT_EQ(2u, values.state().stations.size());
    EXPECT_FALSE(values.state().stations[0].answers);
    clock.passMs(1000);
    values.stationChanged(1, true, QString(), linkNow());
    EXPECT_TRUE(values.state().stations[0].answers);
    EXPECT_EQ(wallAtStart + 1000, values.state().stations[0].since);
    EXPECT_FALSE(values.state().stations[1].answers);
    EXPECT_EQ(2, values.state().stations[1].station);
    clock.passMs(1000);
    values.linkChanged(false, QLatin1String("unplugged"), linkNow());
    EXPECT_FALSE(values.state().stations[0].answers);
    EXPECT_EQ(wallAtStart + 2000, values.state().stations[0].since);
    EXPECT_EQ(wallAtStart, values.state().stations[1].since);
    values.linkChanged(true, QString(), linkNow());
    EXPECT_FALSE(values.state().stations[0].answers);
}

TEST_F(LinkValuesTest, ASilentStationSaysWhy)
{
    const auto why = [this](size_t station) {
        return values.state().stations[station].trouble.toStdString();
    };
    EXPECT_EQ("it has not answered yet", why(0));
    values.stationChanged(1, true, QString(), linkNow());
    EXPECT_EQ("", why(0));
    EXPECT_EQ("it has not answered yet", why(1));
    values.stationChanged(2, false, QLatin1String("no answer from station 2"), linkNow());
    EXPECT_EQ("no answer from station 2", why(1));
    values.linkChanged(false, QLatin1String("unplugged"), linkNow());
    EXPECT_EQ("link lost: unplugged", why(0));
    EXPECT_EQ("link lost: unplugged", why(1));
    values.linkChanged(true, QString(), linkNow());
    EXPECT_EQ("it has not answered yet", why(0));
}

TEST_F(LinkValuesTest, FiguresCountExchangesAndReplyTimes)
{
    FINISHED_EXCHANGE done;
    done.result = REPLY_ACCEPTED;
    done.end = END_ANSWERED;
    FINISHED_EXCHANGE again = done;
    again.result = REPLY_RETRY;
    for (const qint64 replyTime : {900, 1000, 1001, 4000, 6000000}) {
        done.replyTime = replyTime;
        clock.passMs(10);
        values.exchanged(done, linkNow());
        values.exchanged(again, linkNow());
    }
    const LinkState state = values.state();
    EXPECT_EQ(5, state.figures.exchanges);
    EXPECT_EQ(5, state.figures.retries);
    EXPECT_EQ(5u, state.replies.count);
    EXPECT_EQ(6006901, state.replies.sum);
    EXPECT_EQ(2u, state.replies.within[0]); // 1 ms
    EXPECT_EQ(3u, state.replies.within[1]); // 2 ms
    EXPECT_EQ(4u, state.replies.within[2]); // 5 ms
    EXPECT_EQ(4u, state.replies.within.back());
    EXPECT_NEAR(100, state.figures.lately.exchangesPerSecond, 1);
    EXPECT_EQ(1, state.figures.connected ? 1 : 0);
}

TEST_F(LinkValuesTest, FramesAreKeptWithTheirTimeOfDay)
{
    values.frame(FrameRecord::SENT, QByteArray("request"), linkNow());
    clock.passMs(20);
    values.frame(FrameRecord::NO_ANSWER, QByteArray(), linkNow());
    values.frame(FrameRecord::RECEIVED, QByteArray("answer"), linkNow());
    const std::vector<LoggedFrame> frames = values.frames().since(0);
    ASSERT_EQ(2u, frames.size());
    EXPECT_EQ(quint64(wallAtStart), frames[0].time);
    EXPECT_EQ(QByteArray("answer"), frames[1].bytes);
    EXPECT_EQ(quint64(wallAtStart) + 20, frames[1].time);
    EXPECT_EQ(1u, values.frames().since(1).size());
}
