#include "sessionBench.h"

#include <gtest/gtest.h>

// Writes, one-shot reads and polling share the line: none of them keeps another waiting for ever.

namespace {

enum { JOB = 1, NUMBER = 3010, SECOND = SessionBench::SECOND };

} // namespace

class DriverFeederTurnsTest : public testing::Test
{
protected:
    SessionBench bench;
};

TEST_F(DriverFeederTurnsTest, PollingGoesOnWhileWritesWait)
{
    bench.poll({tagOf("IW", 0)});
    bench.run(SECOND);
    std::vector<ElementWrite> writes;
    for (int i = 0; i < 400; ++i)
        writes.push_back(wordWriteOf(3000 + i, i + 1));
    bench.sink.tags[0].reads = 0;
    bench.feeder.addWrite(JOB, writes);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    // After ten writes in a row the driver polls.
    EXPECT_GE(bench.sink.tags[0].reads, 39);
}

TEST_F(DriverFeederTurnsTest, AReadJobEndsWhileSixHundredWritesWait)
{
    bench.plc.station(1).inputs[3] = 55;
    bench.know({tagOf("IW", 3)});
    std::vector<ElementWrite> writes;
    for (int i = 0; i < 600; ++i)
        writes.push_back(wordWriteOf(3000 + i, i + 1));
    bench.feeder.addWrite(JOB, writes);
    bench.feeder.addRead(JOB + 1, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(55, bench.shown(0));
    EXPECT_FALSE(bench.sink.hasEnded(JOB));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(600, bench.plc.word(1, 3599));
}

TEST_F(DriverFeederTurnsTest, AReadJobEndsWhileWritesNeverEnd)
{
    enum { WAITING = 600, FIRST_WRITE = 1000 };
    bench.poll({tagOf("IW", 3)});
    bench.feeder.addRead(JOB, bench.blocks);
    int job = FIRST_WRITE;
    const auto hasEnded = [&] {
        for (; job - FIRST_WRITE < int(bench.sink.ends.size()) + WAITING; ++job)
            bench.writeWord(job, 3000 + job % (2 * WAITING), 1);
        return bench.sink.hasEnded(JOB);
    };
    EXPECT_TRUE(bench.runUntil(hasEnded, 30 * SECOND));
}

TEST_F(DriverFeederTurnsTest, AWriteEndsWhileTwoReadJobsNeverEnd)
{
    enum { FIRST_READ = 1000, LENGTH = 20 };
    std::vector<Tag> tags;
    for (int i = 0; i < LENGTH; ++i)
        tags.push_back(tagOf("IW", i * 100)); // too far apart for a block
    bench.know(tags);
    ASSERT_EQ(size_t(LENGTH), bench.blocks.size());
    int reads = 0;
    const auto readsWait = [&] {
        while (reads < int(bench.sink.ends.size()) + 2)
            bench.feeder.addRead(FIRST_READ + reads++, bench.blocks);
    };
    readsWait();
    bench.run(SECOND);
    const size_t readsBefore = bench.sent.size();
    bench.writeWord(JOB, NUMBER, 1234);
    EXPECT_TRUE(bench.runUntil(
        [&] {
            readsWait();
            return bench.sink.hasEnded(JOB);
        },
        30 * SECOND));
    EXPECT_EQ(1234, bench.plc.word(1, NUMBER));
    // The read under way ends, then it is the write's turn.
    EXPECT_LE(bench.sent.size(), readsBefore + 2);
    EXPECT_GT(reads, 2);
}
