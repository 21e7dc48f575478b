#include "sessionBench.h"

#include <gtest/gtest.h>

// Polling and reading: what a session shows of a PLC, through the real driver on a virtual clock.
// Address numbers as in the driver's header: MW n / 2 + 3000, QX and IX 8 b + k, MX 8 b + k + 3000.

namespace {

enum { JOB = 1, MS = SessionBench::MS, SECOND = SessionBench::SECOND, FEW_CYCLES = 500 * MS };

} // namespace

class DriverFeederTest : public testing::Test
{
protected:
    SessionBench bench;
};

TEST_F(DriverFeederTest, WithNothingToDoItIsIdleAndSendsNothing)
{
    EXPECT_TRUE(bench.feeder.advance(0).isIdle);
    bench.run(10 * SECOND);
    EXPECT_TRUE(bench.sent.empty());
}

TEST_F(DriverFeederTest, PollingShowsEveryTagsFirstValueAlsoWhenItIsZero)
{
    bench.plc.station(1).holding = {{3010, 7}, {3, 8}};
    bench.plc.station(1).inputs = {{5, 9}};
    bench.poll({tagOf("MW", 3010), tagOf("MW", 3011), tagOf("QW", 3), tagOf("QW", 4),
                tagOf("IW", 5), tagOf("IW", 200), tagOf("MX", 3100, Tag::BOOL)});
    bench.run(FEW_CYCLES);
    const int expected[] = {7, 0, 8, 0, 9, 0, 0};
    for (int tag = 0; tag < 7; ++tag) {
        EXPECT_EQ(expected[tag], bench.shown(tag)) << tag;
        EXPECT_TRUE(bench.sink.tags[tag].good) << tag;
    }
}

TEST_F(DriverFeederTest, TagsAreReadInEveryCycle)
{
    bench.poll({tagOf("MW", 3010), tagOf("IW", 5)});
    bench.run(SECOND);
    // 8 bytes out, 7 back, two silent intervals and 2 ms: under 10 ms.
    EXPECT_GE(bench.sink.tags[0].reads, 50);
    EXPECT_NEAR(bench.sink.tags[0].reads, bench.sink.tags[1].reads, 1);
}

TEST_F(DriverFeederTest, WhatDoesNotChangeIsNotToldAsAChange)
{
    bench.plc.station(1).holding = {{3010, 7}};
    bench.poll({tagOf("MW", 3010), tagOf("MX", 3400, Tag::BOOL)});
    bench.run(FEW_CYCLES);
    const int changes = bench.sink.changes();
    bench.run(10 * SECOND);
    EXPECT_EQ(changes, bench.sink.changes());
}

TEST_F(DriverFeederTest, AChangeIsToldOnceAndOfItsTagOnly)
{
    bench.poll({tagOf("MW", 3010), tagOf("MW", 3011), tagOf("MW", 3010, Tag::INT16)});
    bench.run(FEW_CYCLES);
    for (int tag = 0; tag < 3; ++tag)
        bench.sink.tags[tag].changes = 0;
    bench.plc.station(1).holding[3010] = 500;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(1, bench.sink.tags[0].changes);
    EXPECT_EQ(0, bench.sink.tags[1].changes);
    EXPECT_EQ(1, bench.sink.tags[2].changes);
    EXPECT_EQ(500, bench.shown(0));
    EXPECT_EQ(500, bench.shown(2));
}

TEST_F(DriverFeederTest, AValueThatGoesBackToZeroIsShown)
{
    bench.plc.station(1).holding[3010] = 7;
    bench.poll({tagOf("MW", 3010)});
    bench.run(FEW_CYCLES);
    bench.plc.station(1).holding[3010] = 0;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0, bench.shown(0));
}

TEST_F(DriverFeederTest, UnitsInAGapBetweenTagsAreToldToNobody)
{
    bench.poll({tagOf("MW", 3010), tagOf("MW", 3013)});
    ASSERT_EQ(1u, bench.blocks.size());
    bench.run(FEW_CYCLES);
    const int changes = bench.sink.changes();
    bench.plc.station(1).holding[3011] = 1;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(changes, bench.sink.changes());
}

TEST_F(DriverFeederTest, ATagOfTwoWordsChangesAsOne)
{
    bench.plc.station(1).holding = {{3010, 0x1111}, {3011, 0x2222}};
    bench.poll({tagOf("MW", 3010, Tag::UINT32)});
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0x22221111, bench.shown(0));
    bench.sink.tags[0].changes = 0;
    bench.plc.station(1).holding = {{3010, 0x3333}, {3011, 0x4444}};
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0x44443333, bench.shown(0));
    EXPECT_EQ(1, bench.sink.tags[0].changes);
}

TEST_F(DriverFeederTest, AChangeOfEitherWordChangesATagOfTwo)
{
    bench.poll({tagOf("MW", 3010, Tag::FLOAT32)});
    bench.run(FEW_CYCLES);
    bench.plc.station(1).holding[3011] = 0x4291;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0x42910000, bench.shown(0));
    bench.plc.station(1).holding[3010] = 1;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0x42910001, bench.shown(0));
}

TEST_F(DriverFeederTest, EveryBitOfAGroupIsShownByItself)
{
    std::vector<Tag> tags;
    for (int bit = 0; bit < 16; ++bit)
        tags.push_back(tagOf("MX", 3000 + 16 * 5 + bit, Tag::BOOL));
    bench.poll(tags);
    bench.run(FEW_CYCLES);
    for (int on = 0; on < 16; ++on) {
        bench.plc.station(1).holding[3005] = 1 << on;
        bench.run(FEW_CYCLES);
        for (int bit = 0; bit < 16; ++bit)
            ASSERT_EQ(bit == on ? 1 : 0, bench.shown(bit)) << bit << " with bit " << on << " on";
    }
}

TEST_F(DriverFeederTest, BitsInTheMiddleOfAGroupAreShownOfEveryArea)
{
    bench.poll({tagOf("QX", 16 * 2 + 13, Tag::BOOL), tagOf("IX", 16 * 7 + 9, Tag::BOOL),
                tagOf("MX", 3000 + 16 * 11 + 3, Tag::BOOL), tagOf("QX", 16 * 2 + 12, Tag::BOOL)});
    bench.run(FEW_CYCLES);
    bench.plc.station(1).holding[2] = 1 << 13;
    bench.plc.station(1).inputs[7] = 1 << 9;
    bench.plc.station(1).holding[3011] = 1 << 3;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(1, bench.shown(0));
    EXPECT_EQ(1, bench.shown(1));
    EXPECT_EQ(1, bench.shown(2));
    EXPECT_EQ(0, bench.shown(3));
}

TEST_F(DriverFeederTest, TheLastMarkerBitsAreShown)
{
    // 65535 is bit 62535 behind 3000: bit 7 of word 3908 behind 3000.
    bench.poll({tagOf("MX", 65535, Tag::BOOL), tagOf("MX", 65528, Tag::BOOL),
                tagOf("MX", 65527, Tag::BOOL)});
    bench.run(FEW_CYCLES);
    bench.plc.station(1).holding[3000 + 3908] = 1 << 7;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(1, bench.shown(0));
    EXPECT_EQ(0, bench.shown(1));
    EXPECT_EQ(0, bench.shown(2));
    bench.plc.station(1).holding[3000 + 3908] = 1;
    bench.plc.station(1).holding[3000 + 3907] = 1 << 15;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0, bench.shown(0));
    EXPECT_EQ(1, bench.shown(1));
    EXPECT_EQ(1, bench.shown(2));
}

TEST_F(DriverFeederTest, StationsAreShownApart)
{
    bench.plc.station(2);
    bench.poll({tagOf("MW", 3010), tagOf("MW", 3010, Tag::UINT16, 2)});
    bench.run(FEW_CYCLES);
    bench.plc.station(2).holding[3010] = 5;
    bench.run(FEW_CYCLES);
    EXPECT_EQ(0, bench.shown(0));
    EXPECT_EQ(5, bench.shown(1));
}

TEST_F(DriverFeederTest, ABlockThatThePlcRefusesMakesItsTagsBadAndNoOthers)
{
    bench.plc.station(1).refusals[5] = 2;
    bench.poll({tagOf("MW", 3010), tagOf("IW", 5)});
    bench.run(FEW_CYCLES);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_EQ(QLatin1String("refused by the PLC: illegal address (exception 2)"),
              bench.sink.tags[1].trouble);
}

TEST_F(DriverFeederTest, ARefusedBlockIsGoodAgainWhenThePlcReadsIt)
{
    bench.plc.station(1).refusals[5] = 2;
    bench.plc.station(1).inputs[5] = 77;
    bench.poll({tagOf("IW", 5)});
    bench.run(FEW_CYCLES);
    bench.plc.station(1).refusals.clear();
    bench.run(FEW_CYCLES);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_EQ(77, bench.shown(0));
}

TEST_F(DriverFeederTest, AReadOnceEndsWithItsValues)
{
    bench.plc.station(1).holding = {{3010, 7}, {3900, 0x1234}, {3020, 1 << 4}};
    bench.know({tagOf("MW", 3010), tagOf("MW", 3900, Tag::UINT32),
                tagOf("MX", 3000 + 324, Tag::BOOL), tagOf("IW", 0)});
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(7, bench.shown(0));
    EXPECT_EQ(0x1234, bench.shown(1));
    EXPECT_EQ(1, bench.shown(2));
    EXPECT_EQ(0, bench.shown(3));
}

TEST_F(DriverFeederTest, WhatIsOnlyKnownIsNotPolled)
{
    bench.know({tagOf("MW", 3010)});
    bench.feeder.addRead(JOB, bench.blocks);
    bench.run(10 * SECOND);
    EXPECT_EQ(1u, bench.sent.size());
}

TEST_F(DriverFeederTest, AReadOnceTwiceShowsTheNewValue)
{
    bench.know({tagOf("MW", 3010)});
    bench.feeder.addRead(JOB, bench.blocks);
    bench.runUntilEnded(JOB);
    bench.plc.station(1).holding[3010] = 9;
    bench.feeder.addRead(JOB + 1, bench.blocks);
    bench.runUntilEnded(JOB + 1);
    EXPECT_EQ(9, bench.shown(0));
}

TEST_F(DriverFeederTest, ManyReadsInOneJobAllCome)
{
    std::vector<Tag> tags;
    for (int i = 0; i < 600; ++i) {
        tags.push_back(tagOf("MX", 3000 + 16 * i, Tag::BOOL));
        bench.plc.station(1).holding[3000 + i] = i % 2;
    }
    bench.know(tags);
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    for (int i = 0; i < 600; ++i)
        ASSERT_EQ(i % 2, bench.shown(i)) << i;
}

TEST_F(DriverFeederTest, AReadOfBitsAsksForTheWordOfTheirGroupAlone)
{
    bench.know({tagOf("MX", 3000 + 16 * 20 + 5, Tag::BOOL)});
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    // Register 3020 (0x0BCC), one of them.
    EXPECT_EQ(QByteArray::fromHex("01030BCC0001"), bench.sent.back().left(6));
}

TEST_F(DriverFeederTest, ARefusedReadEndsAtOnceAndSaysWhatWasRefused)
{
    bench.plc.station(1).refusals[3010] = 2;
    bench.know({tagOf("MW", 3010)});
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(1u, bench.sent.size());
    EXPECT_TRUE(bench.sink.ends[JOB].trouble.contains(QLatin1String("illegal address")));
    // Number 3010 is the text MW20: 20 / 2 + 3000.
    EXPECT_TRUE(bench.sink.ends[JOB].trouble.contains(QLatin1String("MW20")))
        << bench.sink.ends[JOB].trouble.toStdString();
}

TEST_F(DriverFeederTest, AReadOfASilentStationTimesOut)
{
    bench.know({tagOf("MW", 3010, Tag::UINT16, 9)});
    bench.feeder.addRead(JOB, bench.blocks);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    // Each attempt begins with a fence, and ends with it.
    EXPECT_EQ(size_t(SessionBench::ATTEMPTS), bench.fences.size());
    EXPECT_TRUE(bench.sent.empty());
}

TEST_F(DriverFeederTest, OneFailedReadLeavesTheOthersAlone)
{
    bench.plc.station(1).refusals[3010] = 2;
    bench.know({tagOf("MW", 3010), tagOf("IW", 3)});
    bench.feeder.addRead(JOB, {bench.blocks[1]});
    bench.feeder.addRead(JOB + 1, {bench.blocks[0]});
    bench.feeder.addRead(JOB + 2, {bench.blocks[1]});
    bench.feeder.addRead(JOB + 3, {bench.blocks[0]});
    ASSERT_TRUE(bench.runUntilEnded(JOB + 3));
    int refused = 0;
    for (int job = JOB; job < JOB + 4; ++job)
        refused += bench.sink.outcome(job) == JobEnd::REFUSED ? 1 : 0;
    EXPECT_EQ(2, refused);
    EXPECT_NE(bench.sink.outcome(JOB), bench.sink.outcome(JOB + 1));
    EXPECT_EQ(bench.sink.outcome(JOB), bench.sink.outcome(JOB + 2));
}
