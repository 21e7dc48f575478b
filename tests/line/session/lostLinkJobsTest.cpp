#include "recipeJobs.h"
#include "scriptedLink.h"
#include "session/linkThread.h"
#include "session/sharedValues.h"
#include "sessionBench.h"

#include "builtDriver.h"

#include <gtest/gtest.h>

// Jobs that end with their link. Nothing of them may go out on the next link.

namespace {

enum { JOB = 1, NUMBER = 3010, SECOND = SessionBench::SECOND, WAIT_MS = 100, MOST_WAITS = 200 };

const QString LOST = QLatin1String("link lost: unplugged");

} // namespace

class LostLinkJobsTest : public testing::Test
{
protected:
    LostLinkJobsTest()
    {
        bench.writeWord(JOB, NUMBER, 1); // brings the station into step
        bench.runUntilEnded(JOB);
        bench.sent.clear();
    }

    void loseLinkAndJobs()
    {
        bench.loseLink(LOST);
        bench.feeder.endJobs(LOST, bench.now);
    }

    SessionBench bench;
};

TEST_F(LostLinkJobsTest, WritesEndAndAreNotSentOnTheNextLink)
{
    for (int i = 1; i <= 3; ++i)
        bench.writeWord(JOB + i, NUMBER + i, i);
    bench.line.disturb = [](const QByteArray&, ModelLine::Coming& coming) { coming.bytes.clear(); };
    bench.runUntil([this] { return !bench.sent.empty(); });
    loseLinkAndJobs();
    EXPECT_EQ("link lost: unplugged; the PLC may have executed it",
              bench.sink.ends[JOB + 1].reason.toStdString());
    EXPECT_EQ(JobEnd::MAYBE_EXECUTED, bench.sink.ends[JOB + 1].execution);
    for (int job = JOB + 2; job <= JOB + 3; ++job) {
        EXPECT_EQ("not sent: link lost: unplugged", bench.sink.ends[job].reason.toStdString());
        EXPECT_EQ(JobEnd::NOT_SENT, bench.sink.ends[job].execution);
    }
    bench.sent.clear();
    bench.line.disturb = nullptr;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_TRUE(bench.sent.empty());
    EXPECT_EQ(0, bench.sink.endedTwice);
}

TEST_F(LostLinkJobsTest, WriteOnTheNextLinkIsConfirmed)
{
    bench.writeWord(JOB + 1, NUMBER, 2);
    loseLinkAndJobs();
    bench.bringLinkBack();
    bench.writeWord(JOB + 2, NUMBER, 3);
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 2));
    EXPECT_EQ(3, bench.plc.word(1, NUMBER));
    EXPECT_EQ(1u, bench.sent.size());
}

// The driver keeps its place in a recipe. A recipe that began there would be confirmed without its
// first blocks.
TEST_F(LostLinkJobsTest, RecipeBehindAnEndedRecipeBeginsWithItsFirstBlock)
{
    const std::vector<Tag> tags = {tagOf("MW", 3100), tagOf("MW", 3110)};
    bench.feeder.addRecipe(download(JOB + 1, tags, {wordBytes(1), wordBytes(2)}));
    bench.runUntil([this] { return bench.sent.size() == 2; });
    loseLinkAndJobs();
    EXPECT_EQ(JobEnd::LOST, bench.sink.outcome(JOB + 1));
    EXPECT_EQ("MW220 of station 1", bench.sink.ends[JOB + 1].block.toStdString());
    bench.bringLinkBack();
    bench.feeder.addRecipe(download(JOB + 2, tags, {wordBytes(3), wordBytes(4)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB + 2));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 2));
    EXPECT_EQ(3, bench.plc.word(1, 3100));
    EXPECT_EQ(4, bench.plc.word(1, 3110));
}

TEST(LostLinkPolling, GoesOnOnTheNextLink)
{
    SessionBench bench;
    bench.poll({tagOf("MW", NUMBER)});
    bench.run(SECOND);
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.loseLink(LOST);
    bench.feeder.endJobs(LOST, bench.now);
    bench.plc.station(1).holding[NUMBER] = 77;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_EQ(wordBytes(77), bench.sink.tags[0].bytes);
}

TEST(LostLinkPolling, DoesNotShowAValueThatWasNotWritten)
{
    SessionBench bench;
    bench.plc.station(1).holding[NUMBER] = 1;
    bench.poll({tagOf("MW", NUMBER)});
    bench.run(SECOND);
    bench.writeWord(JOB + 1, NUMBER, 2);
    bench.feeder.advance(bench.now);
    ASSERT_EQ(wordBytes(2), bench.sink.tags[0].bytes);
    bench.loseLink(LOST);
    bench.feeder.endJobs(LOST, bench.now);
    EXPECT_EQ(wordBytes(1), bench.sink.tags[0].bytes);
}

TEST(LostLinkThread, EndsAJobThatComesWhileTheLinkIsLost)
{
    SharedValues shared(0, false);
    LinkThread::Settings settings;
    settings.firstPauseMs = 1;
    settings.jobsAtLoss = LinkThread::JOBS_END;
    settings.openLink = []() -> std::unique_ptr<Link> { throw LinkError("no such port"); };
    LinkThread thread(driver(), settings, shared);
    thread.start();
    ElementWrite write;
    write.area = QLatin1String("MW");
    write.number = NUMBER;
    write.station = 1;
    write.bytes = wordBytes(1);
    thread.write(JOB, {write});
    std::vector<JobEnd> ends;
    for (int waits = 0; ends.empty() && waits < MOST_WAITS; ++waits) {
        shared.waitForNews(WAIT_MS);
        ends = shared.takeNews().jobEnds;
    }
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ("not sent: link lost: no such port", ends[0].reason.toStdString());
}
