#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

// Recipes through the real driver. Words lie low byte first in its buffer, bits one byte each.

namespace {

enum { JOB = 1, MS = SessionBench::MS, SECOND = SessionBench::SECOND, WRITE_REGISTERS = 16 };

/// Every third word of MW from 3100 on, so that each is a block of its own.
std::vector<Tag> scattered(int count)
{
    std::vector<Tag> tags;
    for (int i = 0; i < count; ++i)
        tags.push_back(tagOf("MW", 3100 + 3 * i));
    return tags;
}

std::vector<QByteArray> valuesFor(int count)
{
    std::vector<QByteArray> values;
    for (int i = 0; i < count; ++i)
        values.push_back(wordBytes(1000 + i));
    return values;
}

} // namespace

class DriverFeederRecipeTest : public testing::Test
{
protected:
    void expectInPlc(int count)
    {
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(1000 + i, bench.plc.word(1, 3100 + 3 * i)) << i;
    }

    SessionBench bench;
};

TEST_F(DriverFeederRecipeTest, ADownloadEndsWithItsValuesInThePlc)
{
    bench.feeder.addRecipe(download(JOB, scattered(5), valuesFor(5)));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    expectInPlc(5);
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), bench.sink.progress);
}

TEST_F(DriverFeederRecipeTest, ADownloadWritesWordsTogetherAndBitsTooInFewFrames)
{
    std::vector<Tag> tags;
    std::vector<QByteArray> values;
    for (int i = 0; i < 100; ++i) {
        tags.push_back(tagOf("MW", 3100 + i));
        values.push_back(wordBytes(i + 1));
    }
    for (int i = 0; i < 5; ++i) {
        tags.push_back(tagOf("MX", 3000 + 16 * 7 + 3 + i, Tag::BOOL));
        values.push_back(QByteArray(1, i % 2 == 0 ? 1 : 0));
    }
    bench.feeder.addRecipe(download(JOB, tags, values));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(2u, bench.sent.size());
    EXPECT_EQ(100, bench.plc.word(1, 3199));
    // Bits 3, 5 and 7.
    EXPECT_EQ(0xA8, bench.plc.word(1, 3007));
}

TEST_F(DriverFeederRecipeTest, ValuesOfTwoStationsAtNumbersThatGoOnReachTheirOwnStation)
{
    bench.plc.station(2);
    const std::vector<Tag> tags = {tagOf("MW", 3100, Tag::UINT16, 1),
                                   tagOf("MW", 3101, Tag::UINT16, 2)};
    bench.feeder.addRecipe(download(JOB, tags, {wordBytes(11), wordBytes(22)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(11, bench.plc.word(1, 3100));
    EXPECT_EQ(0, bench.plc.word(1, 3101));
    EXPECT_EQ(22, bench.plc.word(2, 3101));

    // An upload that asked the wrong station would show the first one's word.
    bench.plc.station(1).holding[3101] = 99;
    bench.feeder.addRecipe(upload(JOB + 1, tags));
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
    EXPECT_EQ(wordBytes(22), plan.value(1, bench.sink.ends[JOB + 1].values));
}

TEST_F(DriverFeederRecipeTest, AnUploadEndsWithThePlcsValues)
{
    const std::vector<Tag> tags = scattered(5);
    for (int i = 0; i < 5; ++i)
        bench.plc.station(1).holding[3100 + 3 * i] = 0x0100 * i + 7;
    bench.feeder.addRecipe(upload(JOB, tags));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    const RecipePlan plan(tags, StartedDriver::LINK_NUMBER);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(wordBytes(0x0100 * i + 7), plan.value(size_t(i), bench.sink.ends[JOB].values));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), bench.sink.progress);
}

TEST_F(DriverFeederRecipeTest, WhatWasDownloadedComesBackInAnUpload)
{
    const std::vector<Tag> tags = scattered(20);
    bench.feeder.addRecipe(download(JOB, tags, valuesFor(20)));
    bench.feeder.addRecipe(upload(JOB + 1, tags));
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(download(JOB, tags, valuesFor(20)).values, bench.sink.ends[JOB + 1].values);
}

TEST_F(DriverFeederRecipeTest, ARefusedBlockIsNamedAndEndsTheTransfer)
{
    // Number 3106 is the text MW212.
    bench.plc.station(1).refusals[3106] = 2;
    bench.feeder.addRecipe(download(JOB, scattered(5), valuesFor(5)));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(
        QLatin1String("MW212 of station 1: refused by the PLC: illegal address (exception 2)"),
        bench.sink.ends[JOB].trouble);
    EXPECT_EQ((std::vector<int>{1, 2}), bench.sink.progress);
    EXPECT_EQ(3u, bench.sent.size());
}

TEST_F(DriverFeederRecipeTest, ABlockOfASilentStationTimesOutAndIsNamed)
{
    bench.feeder.addRecipe(upload(JOB, {tagOf("MW", 3100, Tag::UINT32, 9)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    EXPECT_EQ(QLatin1String("MW200 to MW202 of station 9: station 9 does not answer"),
              bench.sink.ends[JOB].trouble);
}

TEST_F(DriverFeederRecipeTest, ARecipeBehindOneThatFailedStartsAtItsFirstBlock)
{
    bench.plc.station(1).refusals[3106] = 2;
    bench.feeder.addRecipe(download(JOB, scattered(5), valuesFor(5)));
    bench.runUntilEnded(JOB);
    bench.plc.station(1).refusals.clear();
    bench.sink.progress.clear();
    bench.feeder.addRecipe(download(JOB + 1, scattered(5), valuesFor(5)));
    ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), bench.sink.progress);
    expectInPlc(5);
}

TEST_F(DriverFeederRecipeTest, ARecipeOfAnotherLinkEndsAtOnce)
{
    RecipeJob recipe = download(JOB, scattered(1), valuesFor(1));
    recipe.records[0].linkNo = StartedDriver::LINK_NUMBER + 1;
    bench.feeder.addRecipe(recipe);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::LOST, bench.sink.outcome(JOB));
    EXPECT_TRUE(bench.sent.empty());
}

TEST_F(DriverFeederRecipeTest, ARecipeEndsWhileWritesWaitAndAllOfThemEndToo)
{
    bench.poll({tagOf("IW", 0), tagOf("MX", 3000, Tag::BOOL)});
    bench.run(SECOND);
    for (int i = 0; i < 700; ++i)
        bench.writeWord(100 + i, 4000 + i, i + 1);
    bench.feeder.addRecipe(download(JOB, scattered(30), valuesFor(30)));
    bench.feeder.addRead(JOB + 1, bench.blocks);
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.ends.size() == 702; }));
    for (const auto& [job, end] : bench.sink.ends)
        ASSERT_EQ(JobEnd::DONE, end.outcome) << job;
    expectInPlc(30);
    for (int i = 0; i < 700; ++i)
        ASSERT_EQ(i + 1, bench.plc.word(1, 4000 + i));
}

TEST_F(DriverFeederRecipeTest, PollingGoesOnBehindARecipe)
{
    bench.poll({tagOf("IW", 0)});
    bench.run(SECOND);
    bench.feeder.addRecipe(download(JOB, scattered(30), valuesFor(30)));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    bench.plc.station(1).inputs[0] = 4;
    bench.run(SECOND);
    EXPECT_EQ(4, bench.shown(0));
    EXPECT_TRUE(bench.sink.tags[0].good);
}

TEST_F(DriverFeederRecipeTest, ARecipeThatComesInTheMiddleOfARequestWaitsForItsEnd)
{
    bench.plc.station(1).inputs[0] = 4;
    bench.poll({tagOf("IW", 0)});
    bench.runUntil([this] { return !bench.sent.empty(); });
    bench.feeder.addRecipe(download(JOB, scattered(2), valuesFor(2)));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(4, bench.shown(0));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ((std::vector<int>{1, 2}), bench.sink.progress);
}

TEST_F(DriverFeederRecipeTest, ALostLinkInTheMiddleOnlyDelaysARecipe)
{
    bench.feeder.addRecipe(download(JOB, scattered(10), valuesFor(10)));
    for (size_t requests = 1; requests <= 10; ++requests) {
        bench.runUntil([&] { return bench.sent.size() >= 2 * requests - 1; });
        bench.loseLink(QLatin1String("link lost"));
        bench.run(SECOND);
        bench.bringLinkBack();
    }
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(20u, bench.sent.size());
    expectInPlc(10);
}

TEST_F(DriverFeederRecipeTest, ARecipeGoesOnWhenTheFirstReplyToEachBlockIsLost)
{
    std::set<QByteArray> lost;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming& coming) {
        const bool isWrite = request.at(1) == WRITE_REGISTERS;
        if (isWrite && lost.insert(request).second) coming.bytes.clear();
    };
    bench.feeder.addRecipe(download(JOB, scattered(5), valuesFor(5)));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 4, 5}), bench.sink.progress);
    expectInPlc(5);
}
