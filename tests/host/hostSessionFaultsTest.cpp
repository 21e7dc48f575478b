#include "sessionBench.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <random>

// Lost links, silent stations and noisy lines. A time-out is 100 ms unless a test says otherwise.

namespace {

enum {
    JOB = 1,
    NUMBER = 3010,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND,
    LONGEST_PAUSE = 120, ///< in time-outs, between two probes of a silent station
    READ_HOLDING = 3
};

const QString LOST = QLatin1String("link lost: unplugged");

} // namespace

class HostSessionFaultsTest : public testing::Test
{
protected:
    void pollTwoStations()
    {
        bench.plc.station(2);
        bench.poll({tagOf("MW", NUMBER), tagOf("MW", NUMBER, Tag::UINT16, 2)});
        bench.run(SECOND);
    }

    SessionBench bench;
};

TEST_F(HostSessionFaultsTest, ALostLinkMakesAllTagsBadWithItsTrouble)
{
    pollTwoStations();
    bench.loseLink(LOST);
    for (const int tag : {0, 1}) {
        EXPECT_FALSE(bench.sink.tags[tag].good);
        EXPECT_EQ(LOST, bench.sink.tags[tag].trouble);
    }
}

TEST_F(HostSessionFaultsTest, WhenTheLinkIsBackTheTagsAreGoodAndNew)
{
    pollTwoStations();
    bench.loseLink(LOST);
    bench.run(30 * SECOND);
    bench.plc.station(1).holding[NUMBER] = 5;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_TRUE(bench.sink.tags[1].good);
    EXPECT_EQ(5, bench.shown(0));
}

TEST_F(HostSessionFaultsTest, JobsThatComeWhileTheLinkIsLostAreDoneWhenItIsBack)
{
    pollTwoStations();
    bench.loseLink(LOST);
    bench.writeWord(JOB, 3500, 1);
    bench.session.readOnce(JOB + 1, bench.blocks);
    bench.run(30 * SECOND);
    EXPECT_FALSE(bench.sink.hasEnded(JOB));
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(1, bench.plc.word(1, 3500));
}

TEST_F(HostSessionFaultsTest, ALossInTheMiddleOfAWriteLosesNone)
{
    bench.poll({tagOf("IW", 0)});
    for (int i = 0; i < 50; ++i)
        bench.writeWord(JOB + i, 3500 + i, i + 1);
    for (size_t requests = 1; requests < 60; requests += 2) {
        bench.runUntil([&] { return bench.sent.size() >= requests; });
        bench.loseLink(LOST);
        bench.run(100 * MS);
        bench.bringLinkBack();
    }
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.ends.size() == 50; }));
    for (int i = 0; i < 50; ++i) {
        EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + i)) << i;
        EXPECT_EQ(i + 1, bench.plc.word(1, 3500 + i));
    }
}

TEST_F(HostSessionFaultsTest, AThousandLossesAreAllRecoveredFrom)
{
    pollTwoStations();
    std::mt19937 random(3);
    for (int i = 0; i < 1000; ++i) {
        bench.run(qint64(random() % 20000u));
        bench.loseLink(LOST);
        bench.run(qint64(random() % 20000u));
        bench.bringLinkBack();
    }
    bench.plc.station(2).holding[NUMBER] = 12;
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_EQ(12, bench.shown(1));
}

TEST_F(HostSessionFaultsTest, ASilentStationsTagsAreBadAndTheOthersGood)
{
    pollTwoStations();
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_EQ(QLatin1String("station 2 does not answer"), bench.sink.tags[1].trouble);
}

TEST_F(HostSessionFaultsTest, ASilentStationIsAskedAfterGrowingPauses)
{
    pollTwoStations();
    bench.plc.station(2).silent = true;
    std::vector<qint64> asked;
    bench.disturb = [&](const QByteArray& request, SessionBench::Coming&) {
        if (request.at(0) == 2) asked.push_back(bench.now);
    };
    bench.run(60 * SECOND);
    // Three attempts, then pauses of 4, 20, 40, 80, 120 time-outs, each from the end of the last.
    ASSERT_GE(asked.size(), 9u);
    const int pauses[] = {4, 20, 40, 80, 120, 120};
    for (size_t i = 0; i < 6; ++i) {
        const double pause = double(asked[3 + i] - asked[2 + i]) / SessionBench::ANSWER - 1;
        EXPECT_NEAR(pauses[i], pause, 0.3) << i;
    }
}

TEST_F(HostSessionFaultsTest, ASilentStationComesBackByItselfWithinTheLongestPause)
{
    pollTwoStations();
    bench.plc.station(2).silent = true;
    bench.run(300 * SECOND);
    EXPECT_FALSE(bench.sink.tags[1].good);
    bench.plc.station(2).silent = false;
    const auto isBack = [this] { return bench.sink.tags[1].good; };
    EXPECT_TRUE(bench.runUntil(isBack, (LONGEST_PAUSE + 2) * qint64(SessionBench::ANSWER)));
    bench.sink.tags[1].reads = 0;
    bench.run(SECOND);
    EXPECT_GE(bench.sink.tags[1].reads, 40);
}

TEST_F(HostSessionFaultsTest, AValueThatChangedWhileItsStationWasSilentIsShownWithTheFirstAnswer)
{
    pollTwoStations();
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    bench.plc.station(2).holding[NUMBER] = 99;
    bench.plc.station(2).silent = false;
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.tags[1].good; }));
    EXPECT_EQ(99, bench.shown(1));
    bench.run(SECOND);
    EXPECT_EQ(99, bench.shown(1));
}

TEST_F(HostSessionFaultsTest, ASilentStationIsAskedAtOnceWhenTheLinkIsBack)
{
    pollTwoStations();
    bench.plc.station(2).silent = true;
    bench.run(300 * SECOND);
    bench.loseLink(LOST);
    bench.plc.station(2).silent = false;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[1].good);
}

TEST_F(HostSessionFaultsTest, AStationThatIsStillSilentAfterALossSaysSo)
{
    pollTwoStations();
    bench.plc.station(2).silent = true;
    bench.run(10 * SECOND);
    bench.loseLink(LOST);
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_EQ(QLatin1String("station 2 does not answer"), bench.sink.tags[1].trouble);
}

TEST_F(HostSessionFaultsTest, AllStationsSilentLeaveTheLineQuietAndComeBack)
{
    pollTwoStations();
    bench.plc.station(1).silent = true;
    bench.plc.station(2).silent = true;
    bench.run(300 * SECOND);
    const size_t sent = bench.sent.size();
    bench.run(60 * SECOND);
    // Each is asked every 12 s.
    EXPECT_LE(bench.sent.size(), sent + 12);
    EXPECT_GE(bench.sent.size(), sent + 8);
    bench.plc.station(1).silent = false;
    bench.plc.station(2).silent = false;
    bench.run(15 * SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_TRUE(bench.sink.tags[1].good);
}

TEST_F(HostSessionFaultsTest, ARefusalIsASignOfLife)
{
    pollTwoStations();
    bench.plc.station(2).refusals[NUMBER] = 2;
    bench.run(10 * SECOND);
    bench.sink.tags[0].reads = 0;
    bench.plc.station(2).refusals.clear();
    bench.run(100 * MS);
    EXPECT_TRUE(bench.sink.tags[1].good);
}

TEST_F(HostSessionFaultsTest, OneBurstOfNoiseMakesNoStationSilent)
{
    pollTwoStations();
    int noisy = SessionBench::ATTEMPTS;
    bench.disturb = [&](const QByteArray& request, SessionBench::Coming& coming) {
        if (request.at(0) == 2 && noisy-- > 0) coming.bytes[2] = '\x55';
    };
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[1].good);
    EXPECT_LE(noisy, 0);
    bench.sink.tags[1].reads = 0;
    bench.run(SECOND);
    EXPECT_GE(bench.sink.tags[1].reads, 40);
}

namespace {

/// Good exchanges of the stations other than the silent one in ten virtual minutes.
int exchangesOfOthers(bool oneIsSilent)
{
    enum { STATIONS = 8, SILENT = 5, MINUTES = 10, DEFAULT_ANSWER = 500000 };
    SessionBench bench(DEFAULT_ANSWER);
    std::vector<Tag> tags;
    for (int station = 1; station <= STATIONS; ++station) {
        bench.plc.station(station);
        tags.push_back(tagOf("MW", NUMBER, Tag::UINT16, station));
    }
    // For comparison the station is not there at all.
    if (!oneIsSilent) tags.erase(tags.begin() + SILENT - 1);
    bench.plc.station(SILENT).silent = oneIsSilent;
    bench.poll(tags);
    bench.run(MINUTES * 60LL * SECOND);
    int good = 0;
    for (const RecordingSink::ExchangeNote& exchange : bench.sink.exchanges)
        good += exchange.result == REPLY_ACCEPTED ? 1 : 0;
    return good;
}

} // namespace

TEST(HostSessionSilentStation, LeavesTheSevenOthersNinetyFivePercentOfTheirRate)
{
    const int alone = exchangesOfOthers(false);
    const int besides = exchangesOfOthers(true);
    const double share = double(besides) / double(alone);
    std::printf("one silent station of eight: the others keep %.1f %% of their exchanges\n",
                100 * share);
    EXPECT_GT(alone, 50000);
    EXPECT_GE(share, 0.95);
}
