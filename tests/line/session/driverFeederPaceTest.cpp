#include "modbusFrames.h"
#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

#include <map>

// The pace of cycles and the rates of tags, with the real driver on a virtual clock. A read of a
// word takes about 8 ms on the line.

namespace {

// The request goes out up to a silent interval after the begin of its read.
enum { SILENCE = 1750 };

enum { JOB = 1, MS = SessionBench::MS, SECOND = SessionBench::SECOND, MINUTE = 60 * SECOND };

Tag rated(int number, const char* rate, int station = 1)
{
    Tag tag = tagOf("MW", number, Tag::UINT16, station);
    EXPECT_TRUE(takeRate(QLatin1String(rate), tag.rate));
    return tag;
}

} // namespace

class DriverFeederPaceTest : public testing::Test
{
protected:
    DriverFeederPaceTest()
    {
        bench.line.disturb = [this](const QByteArray& request, ModelLine::Coming&) {
            asked[wordOf(request, 2)].push_back(bench.now);
        };
    }

    int reads(int tag)
    {
        return bench.sink.tags[tag].reads;
    }

    SessionBench bench;
    std::map<int, std::vector<qint64>> asked; ///< times of the requests, by first register
};

TEST_F(DriverFeederPaceTest, CyclesBeginAPaceApart)
{
    bench.poll({tagOf("MW", 3500), tagOf("MW", 3700)}, SECOND);
    bench.run(10 * SECOND);
    EXPECT_EQ(10, reads(0));
    EXPECT_EQ(10, reads(1));
    const std::vector<qint64>& times = asked[3500];
    for (size_t i = 1; i < times.size(); ++i)
        EXPECT_GE(times[i] - times[i - 1], SECOND - SILENCE);
}

TEST_F(DriverFeederPaceTest, NoCycleBeginsEarlyDuringEndlessWrites)
{
    bench.poll({tagOf("MW", 3500)}, SECOND);
    int job = JOB;
    bench.runUntil(
        [&] {
            for (; job < int(bench.sink.ends.size()) + 50; ++job)
                bench.writeWord(job, 3000 + job % 100, job % 1000);
            return false;
        },
        10 * SECOND);
    EXPECT_GT(bench.sink.ends.size(), 500u);
    EXPECT_GE(reads(0), 9);
    const std::vector<qint64>& times = asked[3500];
    for (size_t i = 1; i < times.size(); ++i)
        EXPECT_GE(times[i] - times[i - 1], SECOND - SILENCE);
}

TEST_F(DriverFeederPaceTest, WritesAndReadsOnRequestDoNotWaitForThePace)
{
    bench.poll({tagOf("MW", 3500)}, MINUTE);
    bench.run(SECOND);
    const qint64 from = bench.now;
    bench.writeWord(JOB, 3100, 5);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    bench.feeder.addRead(JOB + 1, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_LT(bench.now - from, 100 * MS);
    EXPECT_EQ(2, reads(0)); // of the first cycle, and of the job
}

TEST_F(DriverFeederPaceTest, WrittenTagIsShownBeforeItsNextTurn)
{
    bench.poll({tagOf("MW", 3500)}, MINUTE);
    bench.run(SECOND);
    bench.writeWord(JOB, 3500, 1234);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(1234, bench.shown(0));
    EXPECT_EQ(1, bench.sink.tags[0].changes);
    EXPECT_EQ(1, reads(0));
}

TEST_F(DriverFeederPaceTest, RefusedWriteShowsTheOldValueAgainBeforeTheNextTurn)
{
    bench.plc.station(1).holding[3500] = 7;
    bench.poll({tagOf("MW", 3500)}, MINUTE);
    bench.run(SECOND);
    bench.plc.station(1).refusals[3500] = 3;
    bench.writeWord(JOB, 3500, 1234);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(7, bench.shown(0));
}

TEST_F(DriverFeederPaceTest, ChangeIsShownAtTheTagsNextTurn)
{
    bench.poll({tagOf("MW", 3500), rated(3700, "10s")}, SECOND);
    bench.run(500 * MS);
    bench.plc.station(1).holding = {{3500, 5}, {3700, 6}};
    bench.run(SECOND);
    EXPECT_EQ(5, bench.shown(0));
    EXPECT_EQ(0, bench.shown(1));
    bench.run(10 * SECOND);
    EXPECT_EQ(6, bench.shown(1));
    EXPECT_EQ(1, bench.sink.tags[1].changes);
}

TEST_F(DriverFeederPaceTest, EachTagHasItsRate)
{
    bench.poll({tagOf("MW", 3100), rated(3300, "500ms"), rated(3500, "10s"), rated(3700, "once")});
    bench.run(MINUTE);
    EXPECT_GT(reads(0), 5000);
    EXPECT_EQ(120, reads(1));
    EXPECT_EQ(6, reads(2));
    EXPECT_EQ(1, reads(3));
}

TEST_F(DriverFeederPaceTest, SlowTagInAFastBlockIsReadWithItAndWithoutARequest)
{
    bench.poll({tagOf("MW", 3100), rated(3101, "once"), tagOf("MW", 3102)}, SECOND);
    bench.run(10 * SECOND);
    EXPECT_EQ(10, reads(1));
    EXPECT_EQ(size_t(10), bench.sent.size());
}

TEST_F(DriverFeederPaceTest, OnceIsReadOnEachConnection)
{
    bench.poll({rated(3500, "once"), rated(3700, "10s")});
    bench.run(SECOND);
    EXPECT_EQ(1, reads(0));
    bench.loseLink(QLatin1String("gone"));
    EXPECT_FALSE(bench.sink.tags[0].good);
    bench.run(SECOND);
    bench.plc.station(1).holding[3500] = 9;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_EQ(2, reads(0));
    EXPECT_EQ(2, reads(1));
    EXPECT_EQ(9, bench.shown(0));
}

TEST_F(DriverFeederPaceTest, RefusalIsAnAnswerToOnce)
{
    bench.plc.station(1).refusals[3500] = 2;
    bench.poll({rated(3500, "once")});
    bench.run(MINUTE);
    EXPECT_FALSE(bench.sink.tags[0].good);
    EXPECT_EQ(1u, asked[3500].size());
}

TEST_F(DriverFeederPaceTest, OnceIsReadAgainUntilTheStationAnswers)
{
    const auto note = bench.line.disturb;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming& coming) {
        note(request, coming);
        if (bench.now < 5 * SECOND) coming.bytes.clear();
    };
    bench.poll({rated(3500, "once")});
    bench.run(5 * SECOND);
    EXPECT_EQ(0, reads(0));
    bench.run(30 * SECOND);
    EXPECT_EQ(1, reads(0));
    EXPECT_TRUE(bench.sink.tags[0].good);
}

// A station that was away may have been replaced. Its tags were shown as bad meanwhile.
TEST_F(DriverFeederPaceTest, StationThatComesBackIsReadAtOnceWithItsOnceTags)
{
    bench.plc.station(2);
    bench.poll(
        {rated(3500, "1s"), rated(3500, "once", 2), rated(3700, "1s", 2), rated(3900, "5m", 2)});
    bench.run(10 * SECOND);
    EXPECT_EQ(1, reads(3));
    bench.plc.station(2).silent = true;
    bench.run(20 * SECOND);
    for (const int tag : {1, 2, 3})
        EXPECT_FALSE(bench.sink.tags[tag].good) << tag;
    bench.plc.station(2).silent = false;
    ASSERT_TRUE(bench.runUntil([&] { return bench.sink.tags[2].good; }, MINUTE));
    bench.run(SECOND);
    for (const int tag : {1, 3}) {
        EXPECT_TRUE(bench.sink.tags[tag].good) << tag;
        EXPECT_EQ(2, reads(tag)) << tag;
    }
}

TEST_F(DriverFeederPaceTest, LongPaceDoesNotDelayAStationThatAnswersLater)
{
    bench.plc.station(2).silent = true;
    bench.poll({tagOf("MW", 3500), tagOf("MW", 3500, Tag::UINT16, 2)}, 5 * MINUTE);
    bench.run(SECOND);
    bench.plc.station(2).silent = false;
    EXPECT_TRUE(bench.runUntil([&] { return bench.sink.tags[1].good; }, MINUTE));
}

TEST_F(DriverFeederPaceTest, RecipeValuesAreShownBeforeTheNextTurn)
{
    bench.poll({tagOf("MW", 3500, Tag::UINT32), rated(3502, "5m")}, 5 * MINUTE);
    bench.run(SECOND);
    // The second word of the first tag, and the second tag.
    bench.feeder.addRecipe(
        download(JOB, {tagOf("MW", 3501), tagOf("MW", 3502)}, {wordBytes(5), wordBytes(6)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    bench.run(SECOND);
    EXPECT_EQ(5 * 65536, bench.shown(0));
    EXPECT_EQ(6, bench.shown(1));
    EXPECT_EQ(2, reads(0)); // both words are read, although one was written
    EXPECT_EQ(2, reads(1));
}

// The first word belongs to a fast tag, too. The slow tag must not combine its new first word with
// its old second word.
TEST_F(DriverFeederPaceTest, TagOfTwoWordsIsNotShownHalfRead)
{
    Tag slow = rated(3500, "1s");
    slow.type = Tag::UINT32;
    int torn = 0;
    bench.sink.onValue = [&](int tag, const QByteArray& bytes) {
        if (tag == 1 && bytes.left(2) != bytes.mid(2)) ++torn;
    };
    bench.poll({rated(3500, "fast"), slow});
    ASSERT_EQ(2u, bench.blocks.size());
    for (int i = 1; i <= 300; ++i) {
        bench.plc.station(1).holding[3500] = bench.plc.station(1).holding[3501] = i;
        bench.run(37 * MS);
    }
    EXPECT_EQ(0, torn);
    EXPECT_GT(bench.shown(0), 295);
    EXPECT_GT(bench.shown(1), 250 * 65537);
    EXPECT_EQ(12, reads(1));
}
