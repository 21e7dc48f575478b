#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

// What is polled and written by recipes at the same time: it is shown soon, and whole.

namespace {

enum {
    JOB = 1,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND,
    READ_HOLDING_CODE = 3,
    WRITE_REGISTERS_CODE = 16
};

int wordAt(const QByteArray& bytes, int at)
{
    return static_cast<unsigned char>(bytes.at(at)) * 256 +
           static_cast<unsigned char>(bytes.at(at + 1));
}

bool holds(const QByteArray& request, int number)
{
    const int first = wordAt(request, 2);
    return number >= first && number < first + wordAt(request, 4);
}

/// Sixty words far apart, so that a cycle takes half a second.
std::vector<Tag> longCycle()
{
    std::vector<Tag> tags;
    for (int i = 0; i < 60; ++i)
        tags.push_back(tagOf("MW", 3000 + 50 * i));
    return tags;
}

} // namespace

class DriverFeederShownWritesTest : public testing::Test
{
protected:
    /// Runs until the tag shows the value.
    /// @return requests sent meanwhile
    int requestsUntilShown(int tag, qint64 value)
    {
        const size_t before = bench.sent.size();
        EXPECT_TRUE(bench.runUntil([&] { return bench.shown(tag) == value; }, SECOND));
        return int(bench.sent.size() - before);
    }

    SessionBench bench;
};

TEST_F(DriverFeederShownWritesTest, WhatARecipeWroteIsReadNextThoughItsBlockIsNotDue)
{
    const std::vector<Tag> tags = longCycle();
    bench.poll(tags);
    bench.run(2 * SECOND);
    for (const int tag : {5, 30, 59}) {
        bench.feeder.addRecipe(download(JOB + tag, {tags[size_t(tag)]}, {wordBytes(7 + tag)}));
        ASSERT_TRUE(bench.runUntilEnded(JOB + tag));
        EXPECT_NE(7 + tag, bench.shown(tag)) << tag;
        EXPECT_EQ(1, requestsUntilShown(tag, 7 + tag)) << tag;
    }
}

TEST_F(DriverFeederShownWritesTest, WhatARecipeWroteInTheMiddleOfABlockIsReadNextToo)
{
    std::vector<Tag> tags = longCycle();
    tags.push_back(tagOf("MW", 3501));
    tags.push_back(tagOf("MW", 3502));
    bench.poll(tags);
    bench.run(2 * SECOND);
    bench.feeder.addRecipe(
        download(JOB, {tagOf("MW", 3501), tagOf("MW", 3502)}, {wordBytes(77), wordBytes(78)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(1, requestsUntilShown(60, 77));
    EXPECT_EQ(78, bench.shown(61));
}

TEST_F(DriverFeederShownWritesTest, EveryRecordOfARecipeIsRead)
{
    const std::vector<Tag> tags = longCycle();
    bench.poll(tags);
    bench.run(2 * SECOND);
    std::vector<QByteArray> values;
    for (int i = 0; i < int(tags.size()); ++i)
        values.push_back(wordBytes(100 + i));
    bench.feeder.addRecipe(download(JOB, tags, values));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    // Polling has its turns in between.
    EXPECT_LE(requestsUntilShown(59, 159), 2 * 60);
    for (int i = 0; i < int(tags.size()); ++i)
        EXPECT_EQ(100 + i, bench.shown(i));
    EXPECT_EQ(1u, bench.sink.ends.size()); // the reads are nobody's job
}

TEST_F(DriverFeederShownWritesTest, WithNothingPolledARecipeIsWrittenAndNotRead)
{
    bench.feeder.addRecipe(download(JOB, {tagOf("MW", 3100)}, {wordBytes(7)}));
    bench.run(SECOND);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(1u, bench.sent.size());
}

TEST_F(DriverFeederShownWritesTest, ARefusedRecipeIsNotRead)
{
    bench.plc.station(1).refusals[3100] = 2;
    bench.poll({tagOf("IW", 0)});
    bench.run(SECOND);
    bench.feeder.addRecipe(download(JOB, {tagOf("MW", 3100)}, {wordBytes(7)}));
    bench.run(SECOND);
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
    EXPECT_EQ(0, bench.sentWith(1, READ_HOLDING_CODE));
}

TEST_F(DriverFeederShownWritesTest, AValueOfTwoWordsIsWrittenAndReadWholeWhereverItLies)
{
    enum { FIRST = 3000, LAST_PLACE = 130 };
    for (int place = 110; place < LAST_PLACE; ++place) {
        std::vector<Tag> tags;
        std::vector<QByteArray> values;
        for (int i = 0; i < place; ++i) {
            tags.push_back(tagOf("MW", FIRST + i));
            values.push_back(wordBytes(i));
        }
        tags.push_back(tagOf("MW", FIRST + place, Tag::UINT32));
        values.push_back(wordBytes(1) + wordBytes(2));
        bench.sent.clear();
        bench.feeder.addRecipe(download(JOB + 2 * place, tags, values));
        bench.feeder.addRecipe(upload(JOB + 2 * place + 1, tags));
        ASSERT_TRUE(bench.runUntilEnded(JOB + 2 * place + 1));
        std::map<int, int> whole;
        for (const QByteArray& request : bench.sent) {
            const bool first = holds(request, FIRST + place);
            ASSERT_EQ(first, holds(request, FIRST + place + 1)) << "cut at place " << place;
            whole[request.at(1)] += first ? 1 : 0;
        }
        EXPECT_EQ(1, whole[WRITE_REGISTERS_CODE]) << place;
        EXPECT_EQ(1, whole[READ_HOLDING_CODE]) << place;
    }
}

TEST_F(DriverFeederShownWritesTest, AValueOfTwoWordsIsNeverShownTornWhileItIsWrittenAndPolled)
{
    enum { WRITES = 1000, NUMBER = 3500, TAG = 30 };
    std::mt19937 random(9);
    std::vector<Tag> tags;
    for (int i = 0; i < 60; ++i)
        tags.push_back(tagOf("MW", 3200 + 10 * i, Tag::UINT32));
    int torn = 0;
    int told = 0;
    bench.sink.onValue = [&](int tag, const QByteArray& bytes) {
        if (tag != TAG) return;
        ++told;
        if (wordAt(bytes, 0) != wordAt(bytes, 2)) ++torn;
    };
    bench.line.losesRequest = [&] { return random() % 50 == 0; };
    bench.line.comesAgain = [&] {
        return random() % 10 == 0 ? qint64(random() % (30u * MS)) : qint64(ModelLine::ONCE);
    };
    bench.poll(tags);
    for (int i = 1; i <= WRITES; ++i) {
        bench.feeder.addRecipe(download(i, {tags[TAG]}, {wordBytes(i) + wordBytes(i)}));
        bench.run(qint64(random() % (300u * MS)));
    }
    ASSERT_TRUE(bench.runUntil([&] { return bench.sink.ends.size() == WRITES; }));
    EXPECT_EQ(0, torn);
    EXPECT_GT(told, WRITES / 2);
    EXPECT_EQ(int(WRITES), bench.plc.word(1, NUMBER));
    EXPECT_EQ(int(WRITES), bench.plc.word(1, NUMBER + 1));
}
