#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

// Writes that wait for a station which has fallen silent. A time-out is 100 ms, a hold 2 s.

namespace {

enum {
    JOB = 1,
    NUMBER = 3010,
    SECOND = SessionBench::SECOND,
    MS = SessionBench::MS,
    HOLD = 2 * SECOND,
    WRITE_REGISTER = 6
};

} // namespace

class HeldWritesTest : public testing::Test
{
protected:
    HeldWritesTest() : bench(SessionBench::ANSWER, LineTiming(LineSettings()), HOLD)
    {
        bench.plc.station(2);
        bench.line.disturb = [this](const QByteArray& request, ModelLine::Coming&) {
            if (request.at(1) == WRITE_REGISTER) executed.push_back(request.at(5));
        };
    }

    /// Writes 1, 2, 3... to words of the silent station, and waits until the first was given up.
    void fallSilent(int writes)
    {
        bench.plc.station(1).silent = true;
        for (int i = 0; i < writes; ++i)
            bench.writeWord(JOB + i, NUMBER + i, i + 1);
        ASSERT_TRUE(bench.runUntilEnded(JOB));
        silentSince = bench.now;
    }

    void expectUnsent(int job)
    {
        ASSERT_TRUE(bench.sink.hasEnded(job)) << job;
        EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(job));
        EXPECT_EQ(JobEnd::NOT_SENT, bench.sink.ends[job].execution);
        EXPECT_EQ(QLatin1String("not sent: station 1 is silent"), bench.sink.ends[job].reason);
    }

    SessionBench bench;
    std::vector<int> executed; ///< the values that the PLC got, in their order
    qint64 silentSince = 0;
};

TEST_F(HeldWritesTest, WritesBehindAGiveUpAreSentInOrderWhenTheStationReturns)
{
    enum { WRITES = 20 };
    fallSilent(WRITES);
    bench.run(SECOND);
    EXPECT_EQ(1u, bench.sink.ends.size());
    bench.plc.station(1).silent = false;
    ASSERT_TRUE(bench.runUntilEnded(JOB + WRITES - 1));
    EXPECT_LT(bench.now, silentSince + HOLD);
    expectUnsent(JOB);
    std::vector<int> others;
    for (int i = 1; i < WRITES; ++i) {
        EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + i)) << i;
        others.push_back(i + 1);
    }
    EXPECT_EQ(others, executed);
}

TEST_F(HeldWritesTest, HeldWritesEndUnsentWhenTheHoldIsOver)
{
    fallSilent(3);
    bench.run(HOLD - MS);
    EXPECT_EQ(1u, bench.sink.ends.size());
    bench.run(2 * MS);
    for (int i = 0; i < 3; ++i)
        expectUnsent(JOB + i);
    EXPECT_TRUE(bench.sent.empty());
}

TEST_F(HeldWritesTest, LateWriteWaitsForTheRestOfTheHold)
{
    fallSilent(1);
    bench.run(HOLD / 2);
    bench.writeWord(JOB + 1, NUMBER, 7);
    bench.run(HOLD / 2 - MS);
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.run(2 * MS);
    expectUnsent(JOB + 1);
    // The hold is over: the next write fails at once, behind the probe under way.
    const qint64 asked = bench.now;
    bench.writeWord(JOB + 2, NUMBER, 8);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_LT(bench.now, asked + 2 * SessionBench::ANSWER);
    expectUnsent(JOB + 2);
}

TEST_F(HeldWritesTest, NextSilenceHasAHoldOfItsOwn)
{
    fallSilent(2);
    bench.plc.station(1).silent = false;
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    bench.run(HOLD);
    bench.sink.ends.clear();
    fallSilent(2);
    bench.run(HOLD - MS);
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.plc.station(1).silent = false;
    bench.run(2 * MS);
    expectUnsent(JOB + 1);
}

TEST_F(HeldWritesTest, WritesToOtherStationsDoNotWait)
{
    fallSilent(3);
    bench.writeWord(JOB + 3, NUMBER, 7, 2);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 3));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 3));
    EXPECT_LT(bench.now - silentSince, 2 * SessionBench::ANSWER);
}

TEST_F(HeldWritesTest, NewerValueReplacesAHeldWrite)
{
    fallSilent(2);
    bench.writeWord(JOB + 2, NUMBER + 1, 9);
    ASSERT_TRUE(bench.sink.hasEnded(JOB + 1) || bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::LOST, bench.sink.outcome(JOB + 1));
    bench.plc.station(1).silent = false;
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 2));
    EXPECT_EQ(std::vector<int>{9}, executed);
}

// With 1000 writes the driver has 500 of them when the station falls silent.
TEST_F(HeldWritesTest, ThousandHeldWritesAllReachThePlc)
{
    enum { WRITES = 1000 };
    fallSilent(WRITES);
    bench.run(SECOND);
    bench.plc.station(1).silent = false;
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.ends.size() == WRITES; }));
    for (int i = 1; i < WRITES; ++i)
        ASSERT_EQ(i + 1, bench.plc.word(1, NUMBER + i)) << i;
    EXPECT_EQ(0, bench.sink.endedTwice);
}

TEST_F(HeldWritesTest, HeldWriteIsProbedForSeveralTimesInAHold)
{
    fallSilent(2);
    const size_t before = bench.fences.size();
    bench.run(HOLD);
    // A probe takes a time-out of 100 ms, and the pause behind it is as long.
    EXPECT_GE(bench.fences.size(), before + 8);
    EXPECT_LE(bench.fences.size(), before + 11);
}

// Without held writes a silent station is probed after 4 and 20 time-outs.
TEST_F(HeldWritesTest, HoldWithoutWritesCausesNoProbes)
{
    fallSilent(1);
    const size_t before = bench.fences.size();
    bench.run(HOLD);
    EXPECT_EQ(before + 1, bench.fences.size());
}

TEST_F(HeldWritesTest, LongTimeOutLeavesTimeForAProbe)
{
    SessionBench slow(5 * SECOND, LineTiming(LineSettings()), HOLD);
    slow.plc.station(1).silent = true;
    slow.writeWord(JOB, NUMBER, 1);
    slow.writeWord(JOB + 1, NUMBER + 1, 2);
    ASSERT_TRUE(slow.runUntilEnded(JOB));
    slow.plc.station(1).silent = false;
    ASSERT_TRUE(slow.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::DONE, slow.sink.outcome(JOB + 1));
}

TEST_F(HeldWritesTest, HeldWritesAreSentOnANewLink)
{
    fallSilent(3);
    bench.loseLink(QLatin1String("link lost: unplugged"));
    bench.run(3 * HOLD);
    EXPECT_EQ(1u, bench.sink.ends.size());
    bench.plc.station(1).silent = false;
    bench.bringLinkBack();
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_EQ((std::vector<int>{2, 3}), executed);
}

TEST_F(HeldWritesTest, DownloadBehindAGiveUpWaitsAndIsWritten)
{
    bench.plc.station(1).silent = true;
    bench.feeder.addRecipe(download(JOB, {tagOf("MW", 3100)}, {wordBytes(1)}));
    bench.feeder.addRecipe(download(JOB + 1, {tagOf("MW", 3200)}, {wordBytes(2)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    expectUnsent(JOB);
    bench.run(SECOND);
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.plc.station(1).silent = false;
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(2, bench.plc.word(1, 3200));
}

TEST_F(HeldWritesTest, DownloadBehindAGiveUpEndsUnsentWhenTheHoldIsOver)
{
    bench.plc.station(1).silent = true;
    bench.feeder.addRecipe(download(JOB, {tagOf("MW", 3100)}, {wordBytes(1)}));
    bench.feeder.addRecipe(download(JOB + 1, {tagOf("MW", 3200)}, {wordBytes(2)}));
    bench.feeder.addRecipe(download(JOB + 2, {tagOf("MW", 3200, Tag::UINT16, 2)}, {wordBytes(3)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    const qint64 silent = bench.now;
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 2));
    EXPECT_LT(bench.now - silent, HOLD / 2);
    bench.run(silent + HOLD - MS - bench.now);
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.run(2 * MS);
    expectUnsent(JOB + 1);
}

TEST_F(HeldWritesTest, WithoutAHoldTheWritesFailAtOnce)
{
    SessionBench none;
    none.plc.station(1).silent = true;
    none.writeWord(JOB, NUMBER, 1);
    none.writeWord(JOB + 1, NUMBER + 1, 2);
    ASSERT_TRUE(none.runUntilEnded(JOB));
    const qint64 silent = none.now;
    ASSERT_TRUE(none.runUntilEnded(JOB + 1));
    EXPECT_EQ(silent, none.now);
    EXPECT_EQ(JobEnd::NOT_SENT, none.sink.ends[JOB + 1].execution);
}
