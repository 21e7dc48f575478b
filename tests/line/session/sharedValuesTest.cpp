#include "session/sharedValues.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

enum { TAGS = 3, JOB = 5 };

const QByteArray ZERO = QByteArray::fromHex("0000");
const QByteArray SEVEN = QByteArray::fromHex("0700");
const QString SILENT = QLatin1String("station 1 does not answer");

} // namespace

class SharedValuesTest : public testing::Test
{
protected:
    SharedValuesTest() : shared(TAGS, true) {}

    TagState tag(size_t index) const
    {
        return shared.tags()[index];
    }

    SharedValues shared;
};

TEST_F(SharedValuesTest, TagIsNeitherReadNorGoodAtFirst)
{
    ASSERT_EQ(size_t(TAGS), shared.tags().size());
    EXPECT_TRUE(tag(0).bytes.isEmpty());
    EXPECT_EQ(-1, tag(0).readAt);
    EXPECT_FALSE(tag(0).good);
}

TEST_F(SharedValuesTest, FirstValueOfZeroIsNewsButNoChange)
{
    shared.tagShown(1, ZERO, 300);
    const News news = shared.takeNews();
    ASSERT_EQ(1u, news.changes.size());
    EXPECT_EQ(1, news.changes[0].tag);
    EXPECT_EQ(300, news.changes[0].time);
    EXPECT_EQ(ZERO, news.changes[0].state.bytes);
    EXPECT_TRUE(news.changes[0].state.good);
    EXPECT_EQ(0, tag(1).changes);
}

TEST_F(SharedValuesTest, SameValueUpdatesOnlyTheReadTime)
{
    shared.tagShown(1, SEVEN, 300);
    shared.takeNews();
    shared.tagShown(1, SEVEN, 400);
    EXPECT_TRUE(shared.takeNews().changes.empty());
    EXPECT_EQ(400, tag(1).readAt);
}

TEST_F(SharedValuesTest, EachDifferentValueCountsAsOneChange)
{
    shared.tagShown(1, ZERO, 1);
    shared.tagValue(1, SEVEN, 2);
    shared.tagShown(1, SEVEN, 2);
    shared.tagShown(1, ZERO, 3);
    EXPECT_EQ(2, tag(1).changes);
    EXPECT_EQ(3u, shared.takeNews().changes.size());
}

TEST_F(SharedValuesTest, WrittenValueIsShownButDoesNotCountAsRead)
{
    shared.tagValue(0, SEVEN, 100);
    EXPECT_EQ(SEVEN, tag(0).bytes);
    EXPECT_EQ(-1, tag(0).readAt);
    EXPECT_FALSE(tag(0).good);
    EXPECT_EQ(1u, shared.takeNews().changes.size());
}

TEST_F(SharedValuesTest, BadTagKeepsItsValue)
{
    shared.tagShown(0, SEVEN, 100);
    shared.takeNews();
    shared.tagsBad({0}, SILENT, 200);
    EXPECT_EQ(SEVEN, tag(0).bytes);
    EXPECT_EQ(100, tag(0).readAt);
    EXPECT_FALSE(tag(0).good);
    EXPECT_EQ(SILENT, tag(0).trouble);
    EXPECT_EQ(1u, shared.takeNews().changes.size());
}

TEST_F(SharedValuesTest, SameTroubleIsToldOnce)
{
    shared.tagsBad({0, 2}, SILENT, 100);
    EXPECT_EQ(2u, shared.takeNews().changes.size());
    shared.tagsBad({0, 2}, SILENT, 200);
    EXPECT_TRUE(shared.takeNews().changes.empty());
}

TEST_F(SharedValuesTest, NewTroubleIsTold)
{
    shared.tagsBad({0}, SILENT, 100);
    shared.takeNews();
    shared.tagsBad({0}, QLatin1String("link lost"), 200);
    ASSERT_EQ(1u, shared.takeNews().changes.size());
    EXPECT_EQ(QLatin1String("link lost"), tag(0).trouble);
}

TEST_F(SharedValuesTest, RecoveredTagIsNewsEvenWithTheSameValue)
{
    shared.tagShown(0, SEVEN, 100);
    shared.tagsBad({0}, SILENT, 200);
    shared.takeNews();
    shared.tagShown(0, SEVEN, 300);
    const News news = shared.takeNews();
    ASSERT_EQ(1u, news.changes.size());
    EXPECT_TRUE(news.changes[0].state.good);
    EXPECT_TRUE(news.changes[0].state.trouble.isEmpty());
    EXPECT_EQ(0, tag(0).changes);
}

TEST_F(SharedValuesTest, NewsAreTakenOnce)
{
    shared.tagShown(0, SEVEN, 1);
    shared.linkChanged(true, QString(), 2);
    shared.jobEnded(JobEnd());
    shared.frame(FrameRecord::SENT, SEVEN, 3);
    shared.echoFound();
    shared.takeNews();
    const News news = shared.takeNews();
    EXPECT_TRUE(news.changes.empty());
    EXPECT_TRUE(news.linkEvents.empty());
    EXPECT_TRUE(news.jobEnds.empty());
    EXPECT_TRUE(news.frames.empty());
    EXPECT_FALSE(news.isEchoFound);
}

TEST_F(SharedValuesTest, FoundEchoIsNews)
{
    EXPECT_FALSE(shared.takeNews().isEchoFound);
    shared.echoFound();
    shared.waitForNews(60000);
    EXPECT_TRUE(shared.takeNews().isEchoFound);
}

TEST_F(SharedValuesTest, JobEndIsPassedOnUnchanged)
{
    JobEnd end;
    end.job = JOB;
    end.outcome = JobEnd::REFUSED;
    end.trouble = QLatin1String("refused");
    end.values = SEVEN;
    shared.jobEnded(end);
    const News news = shared.takeNews();
    ASSERT_EQ(1u, news.jobEnds.size());
    EXPECT_EQ(int(JOB), news.jobEnds[0].job);
    EXPECT_EQ(JobEnd::REFUSED, news.jobEnds[0].outcome);
    EXPECT_EQ(end.trouble, news.jobEnds[0].trouble);
    EXPECT_EQ(SEVEN, news.jobEnds[0].values);
}

TEST_F(SharedValuesTest, RecipeProgressStaysInTheNews)
{
    shared.recipeProgress(JOB, 4);
    EXPECT_EQ(4, shared.takeNews().recipeBlocksDone);
    EXPECT_EQ(4, shared.takeNews().recipeBlocksDone);
}

TEST_F(SharedValuesTest, RecipeProgressIsResetAfterItsEndIsTaken)
{
    JobEnd end;
    end.job = JOB;
    shared.recipeProgress(JOB, 4);
    shared.jobEnded(end);
    EXPECT_EQ(4, shared.takeNews().recipeBlocksDone);
    EXPECT_EQ(0, shared.takeNews().recipeBlocksDone);
}

TEST_F(SharedValuesTest, EndOfAnotherJobKeepsRecipeProgress)
{
    JobEnd end;
    end.job = JOB + 1;
    shared.recipeProgress(JOB, 4);
    shared.jobEnded(end);
    shared.takeNews();
    EXPECT_EQ(4, shared.takeNews().recipeBlocksDone);
}

TEST_F(SharedValuesTest, ExcessChangesAreDroppedAndCounted)
{
    for (int i = 0; i < SharedValues::MOST_CHANGES + 3; ++i)
        shared.tagShown(0, i % 2 == 0 ? ZERO : SEVEN, i);
    const News news = shared.takeNews();
    EXPECT_EQ(100000u, news.changes.size());
    EXPECT_EQ(3, news.changesMissed);
}

TEST_F(SharedValuesTest, DroppedChangeUpdatesTheTag)
{
    for (int i = 0; i < SharedValues::MOST_CHANGES; ++i)
        shared.tagShown(0, i % 2 == 0 ? ZERO : SEVEN, i);
    shared.tagShown(0, QByteArray::fromHex("0800"), 1);
    EXPECT_EQ(QByteArray::fromHex("0800"), tag(0).bytes);
    EXPECT_EQ(100000, tag(0).changes);
}

TEST_F(SharedValuesTest, MissedChangesCountFromTheStart)
{
    for (int i = 0; i < SharedValues::MOST_CHANGES + 3; ++i)
        shared.tagShown(0, i % 2 == 0 ? ZERO : SEVEN, i);
    shared.takeNews();
    shared.tagShown(1, SEVEN, 1);
    const News news = shared.takeNews();
    EXPECT_EQ(1u, news.changes.size());
    EXPECT_EQ(3, news.changesMissed);
}

TEST_F(SharedValuesTest, ExcessFramesAreDroppedAndCounted)
{
    for (int i = 0; i < SharedValues::MOST_FRAMES + 2; ++i)
        shared.frame(FrameRecord::SENT, SEVEN, i);
    const News news = shared.takeNews();
    EXPECT_EQ(20000u, news.frames.size());
    EXPECT_EQ(2, news.framesMissed);
}

TEST_F(SharedValuesTest, EndsOfJobsAreNeverDropped)
{
    const int jobs = 2 * SharedValues::MOST_CHANGES;
    for (int i = 0; i < jobs; ++i)
        shared.jobEnded(JobEnd());
    EXPECT_EQ(size_t(jobs), shared.takeNews().jobEnds.size());
}

TEST_F(SharedValuesTest, FrameKeepsItsTimeAndDirection)
{
    shared.frame(FrameRecord::RECEIVED, SEVEN, 77);
    const News news = shared.takeNews();
    ASSERT_EQ(1u, news.frames.size());
    EXPECT_EQ(77, news.frames[0].time);
    EXPECT_EQ(FrameRecord::RECEIVED, news.frames[0].direction);
    EXPECT_EQ(SEVEN, news.frames[0].bytes);
}

TEST(SharedValuesWithoutFrames, KeepsNone)
{
    SharedValues shared(0, false);
    shared.frame(FrameRecord::SENT, SEVEN, 1);
    EXPECT_TRUE(shared.takeNews().frames.empty());
}

TEST_F(SharedValuesTest, WaitEndsAtOnceWithNews)
{
    shared.tagShown(0, SEVEN, 1);
    shared.waitForNews(60000);
    EXPECT_EQ(1u, shared.takeNews().changes.size());
}

TEST_F(SharedValuesTest, WaitWithoutNewsEndsAfterItsTime)
{
    shared.waitForNews(0);
    EXPECT_TRUE(shared.takeNews().changes.empty());
}

TEST_F(SharedValuesTest, ReadingThreadIsWokenAndMissesNoNews)
{
    const int values = 20000;
    std::vector<News::Change> seen;
    int jobEnds = 0;
    std::thread reader([&] {
        while (jobEnds == 0) {
            shared.waitForNews(60000);
            const News news = shared.takeNews();
            seen.insert(seen.end(), news.changes.begin(), news.changes.end());
            jobEnds += int(news.jobEnds.size());
            shared.figures(1);
            shared.tags();
        }
    });
    for (int i = 1; i <= values; ++i)
        shared.tagShown(i % TAGS, QByteArray::number(i), i);
    shared.jobEnded(JobEnd());
    reader.join();
    ASSERT_EQ(size_t(values), seen.size());
    for (int i = 1; i <= values; ++i) {
        ASSERT_EQ(i, seen[size_t(i - 1)].time);
        ASSERT_EQ(QByteArray::number(i), seen[size_t(i - 1)].state.bytes);
    }
}

/// The sink is told an end of a wait without bytes only; any other end has bytes that are kept.
TEST_F(SharedValuesTest, WaitThatEndsWithoutAnAnswerIsAmongTheFrames)
{
    FINISHED_EXCHANGE finished;
    EndedExchange fence = {};
    finished.result = REPLY_RETRY;
    for (const ExchangeEnd end : {END_SILENT, END_UNUSABLE, END_BROADCAST, END_ANSWERED}) {
        finished.end = fence.end = end;
        shared.exchanged(finished, 500 + end);
        shared.fenced(fence, 700 + end);
    }
    const std::vector<FrameRecord> frames = shared.takeNews().frames;
    ASSERT_EQ(2u, frames.size());
    for (const FrameRecord& frame : frames)
        EXPECT_EQ(FrameRecord::NO_ANSWER, frame.direction);
    EXPECT_EQ(500 + END_SILENT, frames[0].time);
    EXPECT_EQ(700 + END_SILENT, frames[1].time);
}
