#include "sessionBench.h"

#include <gtest/gtest.h>

#include <random>

// Lost links and noisy lines. A time-out is 100 ms unless a test says otherwise.

namespace {

enum { JOB = 1, NUMBER = 3010, MS = SessionBench::MS, SECOND = SessionBench::SECOND };

const QString LOST = QLatin1String("link lost: unplugged");

} // namespace

class DriverFeederFaultsTest : public testing::Test
{
protected:
    SessionBench bench;
};

TEST_F(DriverFeederFaultsTest, ALostLinkMakesAllTagsBadWithItsTrouble)
{
    bench.pollTwoStations(NUMBER);
    bench.loseLink(LOST);
    for (const int tag : {0, 1}) {
        EXPECT_FALSE(bench.sink.tags[tag].good);
        EXPECT_EQ(LOST, bench.sink.tags[tag].trouble);
    }
}

TEST_F(DriverFeederFaultsTest, WhenTheLinkIsBackTheTagsAreGoodAndNew)
{
    bench.pollTwoStations(NUMBER);
    bench.loseLink(LOST);
    bench.run(30 * SECOND);
    bench.plc.station(1).holding[NUMBER] = 5;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_TRUE(bench.sink.tags[1].good);
    EXPECT_EQ(5, bench.shown(0));
}

TEST_F(DriverFeederFaultsTest, JobsThatComeWhileTheLinkIsLostAreDoneWhenItIsBack)
{
    bench.pollTwoStations(NUMBER);
    bench.loseLink(LOST);
    bench.writeWord(JOB, 3500, 1);
    bench.feeder.addRead(JOB + 1, bench.blocks);
    bench.run(30 * SECOND);
    EXPECT_FALSE(bench.sink.hasEnded(JOB));
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(1, bench.plc.word(1, 3500));
}

TEST_F(DriverFeederFaultsTest, ALossInTheMiddleOfAWriteLosesNone)
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

TEST_F(DriverFeederFaultsTest, AThousandLossesAreAllRecoveredFrom)
{
    bench.pollTwoStations(NUMBER);
    std::mt19937 random(3);
    for (int i = 0; i < 1000; ++i) {
        bench.run(qint64(random() % 20000u));
        bench.loseLink(LOST);
        bench.run(qint64(random() % 20000u));
        bench.bringLinkBack();
    }
    bench.plc.station(2).holding[NUMBER] = 12;
    // The attempts of the last links are still reckoned with for a while.
    EXPECT_TRUE(bench.runUntil([this] { return bench.sink.tags[0].good && bench.shown(1) == 12; },
                               2 * SECOND));
}

TEST_F(DriverFeederFaultsTest, ARefusalIsASignOfLife)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).refusals[NUMBER] = 2;
    bench.run(10 * SECOND);
    bench.sink.tags[0].reads = 0;
    bench.plc.station(2).refusals.clear();
    bench.run(100 * MS);
    EXPECT_TRUE(bench.sink.tags[1].good);
}

TEST_F(DriverFeederFaultsTest, OneBurstOfNoiseMakesNoStationSilent)
{
    bench.pollTwoStations(NUMBER);
    int noisy = SessionBench::ATTEMPTS;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming& coming) {
        if (request.at(0) == 2 && noisy-- > 0) coming.bytes[2] = '\x55';
    };
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[1].good);
    EXPECT_LE(noisy, 0);
    bench.sink.tags[1].reads = 0;
    bench.run(SECOND);
    EXPECT_GE(bench.sink.tags[1].reads, 40);
}
