#include "sessionBench.h"

#include <gtest/gtest.h>

#include <utility>

// The ends of writes: a job's outcome is the PLC's answer.

namespace {

enum {
    JOB = 1,
    NUMBER = 3010,
    SILENT_STATION = 9,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND,
    ILLEGAL_ADDRESS = 2,
    BUSY = 6,
    WRITE_COIL = 5,
    WRITE_REGISTER = 6
};

} // namespace

class DriverFeederWritesTest : public testing::Test
{
protected:
    SessionBench bench;
};

TEST_F(DriverFeederWritesTest, WriteIsDoneWithItsEcho)
{
    bench.writeWord(JOB, NUMBER, 1234);
    bench.runUntil([this] { return !bench.sent.empty(); });
    EXPECT_EQ(1234, bench.plc.word(1, NUMBER));
    // The request and the echo of 8 bytes each take 4.2 ms; the station takes 2 ms.
    bench.run(6 * MS);
    EXPECT_FALSE(bench.sink.hasEnded(JOB));
    bench.run(MS);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
}

TEST_F(DriverFeederWritesTest, WriteWithoutEchoIsRetried)
{
    bool isLost = false;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming& coming) {
        if (request.at(1) == WRITE_REGISTER && !std::exchange(isLost, true)) coming.bytes.clear();
    };
    bench.writeWord(JOB, NUMBER, 1234);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(2u, bench.sent.size());
}

TEST_F(DriverFeederWritesTest, BitsAreWrittenByTheirOwnNumber)
{
    bench.plc.station(1).holding[3020] = 0x0F0F;
    bench.feeder.addWrite(
        JOB, {bitWriteOf("MX", 3000 + 16 * 20 + 5, true), bitWriteOf("MX", 3000 + 16 * 20, false)});
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(0x0F2E, bench.plc.word(1, 3020));
    EXPECT_EQ(2, bench.sentWith(1, WRITE_COIL));
}

TEST_F(DriverFeederWritesTest, JobEndsWithItsLastElement)
{
    bench.feeder.addWrite(JOB, {wordWriteOf(NUMBER, 1), wordWriteOf(NUMBER + 1, 2)});
    bench.runUntil([this] { return bench.plc.station(1).seen.count(NUMBER + 1) != 0; });
    EXPECT_FALSE(bench.sink.hasEnded(JOB));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
}

TEST_F(DriverFeederWritesTest, RefusedWriteIsNotRetried)
{
    bench.plc.station(1).refusals[NUMBER] = ILLEGAL_ADDRESS;
    bench.writeWord(JOB, NUMBER, 1234);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(1u, bench.sent.size());
    EXPECT_EQ(QLatin1String("MW3010: refused by the PLC: illegal address (exception 2)"),
              bench.sink.ends[JOB].trouble);
}

TEST_F(DriverFeederWritesTest, WriteToABusyPlcIsRetried)
{
    bench.plc.station(1).refusals[NUMBER] = BUSY;
    bench.plc.station(1).refusalsDue[NUMBER] = SessionBench::ATTEMPTS - 1;
    bench.writeWord(JOB, NUMBER, 1234);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(size_t(SessionBench::ATTEMPTS), bench.sent.size());
    EXPECT_EQ(1234, bench.plc.word(1, NUMBER));
}

TEST_F(DriverFeederWritesTest, WriteToAPermanentlyBusyPlcEndsAsRefused)
{
    bench.plc.station(1).refusals[NUMBER] = BUSY;
    bench.writeWord(JOB, NUMBER, 1234);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(size_t(SessionBench::ATTEMPTS), bench.sent.size());
    EXPECT_TRUE(bench.sink.ends[JOB].trouble.contains(QLatin1String("device busy")));
}

TEST_F(DriverFeederWritesTest, WriteAfterARefusedWriteSucceeds)
{
    bench.plc.station(1).refusals[NUMBER] = ILLEGAL_ADDRESS;
    bench.writeWord(JOB, NUMBER, 1);
    bench.writeWord(JOB + 1, NUMBER + 1, 2);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(2, bench.plc.word(1, NUMBER + 1));
}

TEST_F(DriverFeederWritesTest, WrittenValueIsShownAtOnceAndRevertsWhenRefused)
{
    bench.plc.station(1).holding[NUMBER] = 7;
    bench.poll({tagOf("MW", NUMBER)});
    bench.run(SECOND);
    bench.plc.station(1).refusals[NUMBER] = ILLEGAL_ADDRESS;
    bench.writeWord(JOB, NUMBER, 8);
    bench.feeder.advance(bench.now);
    EXPECT_EQ(8, bench.shown(0));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(7, bench.shown(0));
}

TEST_F(DriverFeederWritesTest, WrittenBitRevertsWhenRefused)
{
    const int bit = 3000 + 16 * 20 + 5;
    bench.plc.station(1).refusals[bit] = ILLEGAL_ADDRESS;
    bench.poll({tagOf("MX", bit, Tag::BOOL)});
    bench.run(SECOND);
    bench.feeder.addWrite(JOB, {bitWriteOf("MX", bit, true)});
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(0, bench.shown(0));
}

TEST_F(DriverFeederWritesTest, WriteToASilentStationTimesOutUnsent)
{
    bench.writeWord(JOB, NUMBER, 1, SILENT_STATION);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    EXPECT_EQ(QLatin1String("MW3010: not sent: station 9 is silent"), bench.sink.ends[JOB].trouble);
    // No write was sent, so the station cannot execute one later.
    EXPECT_EQ(size_t(SessionBench::ATTEMPTS), bench.fences.size());
    EXPECT_TRUE(bench.sent.empty());
}

TEST_F(DriverFeederWritesTest, WriteToAKnownSilentStationEndsAtOnce)
{
    bench.writeWord(JOB, NUMBER, 1, SILENT_STATION);
    bench.runUntilEnded(JOB);
    const qint64 asked = bench.now;
    bench.writeWord(JOB + 1, NUMBER, 2, SILENT_STATION);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(asked, bench.now);
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(size_t(SessionBench::ATTEMPTS), bench.fences.size());
    EXPECT_TRUE(bench.sent.empty());
}

TEST_F(DriverFeederWritesTest, ThousandWritesToASilentStationEndWithTheFirst)
{
    std::vector<ElementWrite> writes;
    for (int i = 0; i < 1000; ++i)
        writes.push_back(wordWriteOf(3000 + i, 1, SILENT_STATION));
    bench.feeder.addWrite(JOB, writes);
    bench.writeWord(JOB + 1, NUMBER, 77);
    ASSERT_TRUE(bench.runUntil(
        [this] { return bench.sink.hasEnded(JOB) && bench.sink.hasEnded(JOB + 1); }, 2 * SECOND));
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
}

TEST_F(DriverFeederWritesTest, TwoThousandWritesAllReachThePlc)
{
    enum { WRITES = 2000 };
    bench.poll({tagOf("IW", 0)});
    for (int i = 0; i < WRITES; ++i)
        bench.writeWord(JOB + i, 3000 + i, i + 1);
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.ends.size() == WRITES; }));
    for (int i = 0; i < WRITES; ++i) {
        ASSERT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + i)) << i;
        ASSERT_EQ(i + 1, bench.plc.word(1, 3000 + i)) << i;
    }
    EXPECT_EQ(int(WRITES), bench.sentWith(1, WRITE_REGISTER));
    EXPECT_EQ(500, bench.mostOutstanding());
    EXPECT_EQ(0, bench.sink.endedTwice);
}

TEST_F(DriverFeederWritesTest, WritesEndWithoutPolling)
{
    std::vector<ElementWrite> writes;
    for (int i = 0; i < 35; ++i)
        writes.push_back(wordWriteOf(3000 + i, i + 1));
    bench.feeder.addWrite(JOB, writes);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(35, bench.plc.word(1, 3034));
}

TEST_F(DriverFeederWritesTest, TwoWritesOfAnElementReachThePlcInOrder)
{
    std::vector<int> echoed;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming&) {
        if (request.at(1) == WRITE_REGISTER) echoed.push_back(request.at(5));
    };
    bench.writeWord(JOB, NUMBER, 1);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.writeWord(JOB + 1, NUMBER, 2);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ((std::vector<int>{1, 2}), echoed);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(2, bench.plc.word(1, NUMBER));
}

TEST_F(DriverFeederWritesTest, FirstEchoDoesNotConfirmTheSecondWriteOfAnElement)
{
    bench.writeWord(JOB, NUMBER, 1);
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.runUntilEnded(JOB);
    EXPECT_FALSE(bench.sink.hasEnded(JOB + 1));
    bench.plc.station(1).refusals[NUMBER] = ILLEGAL_ADDRESS;
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(1, bench.plc.word(1, NUMBER));
}

TEST_F(DriverFeederWritesTest, NewestOfAHundredWritesOfAnElementStays)
{
    bench.poll({tagOf("MW", NUMBER)});
    bench.run(SECOND);
    for (int i = 0; i < 100; ++i)
        bench.writeWord(JOB + i, NUMBER, 1000 + i);
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.ends.size() == 100; }));
    bench.run(SECOND);
    EXPECT_EQ(1099, bench.plc.word(1, NUMBER));
    EXPECT_EQ(1099, bench.shown(0));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 99));
    for (int i = 1; i < 99; ++i)
        EXPECT_NE(JobEnd::DONE, bench.sink.outcome(JOB + i)) << i;
}

TEST_F(DriverFeederWritesTest, PlcsChangeBeforeTheWriteIsShownThenTheWrittenValue)
{
    bench.poll({tagOf("MW", NUMBER)});
    bench.run(SECOND);
    // The driver polls after ten writes, so a read comes ahead of this write.
    for (int i = 1; i <= 12; ++i)
        bench.writeWord(JOB + i, NUMBER + i, i);
    bench.writeWord(JOB, NUMBER, 8);
    bench.feeder.advance(bench.now);
    bench.plc.station(1).holding[NUMBER] = 7;
    EXPECT_TRUE(bench.runUntil([this] { return bench.shown(0) == 7; }, SECOND));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(8, bench.shown(0));
    bench.run(SECOND);
    EXPECT_EQ(8, bench.plc.word(1, NUMBER));
    EXPECT_EQ(8, bench.shown(0));
}

TEST_F(DriverFeederWritesTest, BroadcastIsDoneAfterItsPause)
{
    bench.writeWord(JOB, NUMBER, 5, 0);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(1u, bench.sent.size());
    EXPECT_TRUE(bench.fences.empty());
    // The silent interval, the 8 bytes and the default pause after a broadcast.
    EXPECT_EQ(1750 + 2084 + 100 * MS, bench.now);
}
