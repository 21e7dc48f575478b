#include "session/hostBoard.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

enum { TAGS = 3, JOB = 5 };

const QByteArray ZERO = QByteArray::fromHex("0000");
const QByteArray SEVEN = QByteArray::fromHex("0700");
const QString SILENT = QLatin1String("station 1 does not answer");

} // namespace

class HostBoardTest : public testing::Test
{
protected:
    HostBoardTest() : board(TAGS, true) {}

    TagState tag(size_t index) const
    {
        return board.tags()[index];
    }

    HostBoard board;
};

TEST_F(HostBoardTest, ATagIsNeitherReadNorGoodAtFirst)
{
    ASSERT_EQ(size_t(TAGS), board.tags().size());
    EXPECT_TRUE(tag(0).bytes.isEmpty());
    EXPECT_EQ(-1, tag(0).readAt);
    EXPECT_FALSE(tag(0).good);
}

TEST_F(HostBoardTest, AFirstValueOfZeroIsNewsThoughNoChange)
{
    board.tagRead(1, ZERO, 300);
    const News news = board.takeNews();
    ASSERT_EQ(1u, news.changes.size());
    EXPECT_EQ(1, news.changes[0].tag);
    EXPECT_EQ(300, news.changes[0].time);
    EXPECT_EQ(ZERO, news.changes[0].state.bytes);
    EXPECT_TRUE(news.changes[0].state.good);
    EXPECT_EQ(0, tag(1).changes);
}

TEST_F(HostBoardTest, TheSameValueReadAgainIsNoNewsButFresh)
{
    board.tagRead(1, SEVEN, 300);
    board.takeNews();
    board.tagRead(1, SEVEN, 400);
    EXPECT_TRUE(board.takeNews().changes.empty());
    EXPECT_EQ(400, tag(1).readAt);
}

TEST_F(HostBoardTest, EveryOtherValueCountsAsOneChange)
{
    board.tagRead(1, ZERO, 1);
    board.tagValue(1, SEVEN, 2);
    board.tagRead(1, SEVEN, 2);
    board.tagRead(1, ZERO, 3);
    EXPECT_EQ(2, tag(1).changes);
    EXPECT_EQ(3u, board.takeNews().changes.size());
}

TEST_F(HostBoardTest, AValueThatTheHostWroteIsShownButNotRead)
{
    board.tagValue(0, SEVEN, 100);
    EXPECT_EQ(SEVEN, tag(0).bytes);
    EXPECT_EQ(-1, tag(0).readAt);
    EXPECT_FALSE(tag(0).good);
    EXPECT_EQ(1u, board.takeNews().changes.size());
}

TEST_F(HostBoardTest, ABadTagKeepsItsValueAndTellsItsTrouble)
{
    board.tagRead(0, SEVEN, 100);
    board.takeNews();
    board.tagsBad({0}, SILENT, 200);
    EXPECT_EQ(SEVEN, tag(0).bytes);
    EXPECT_EQ(100, tag(0).readAt);
    EXPECT_FALSE(tag(0).good);
    EXPECT_EQ(SILENT, tag(0).trouble);
    EXPECT_EQ(1u, board.takeNews().changes.size());
}

TEST_F(HostBoardTest, TheSameTroubleIsToldOnce)
{
    board.tagsBad({0, 2}, SILENT, 100);
    EXPECT_EQ(2u, board.takeNews().changes.size());
    board.tagsBad({0, 2}, SILENT, 200);
    EXPECT_TRUE(board.takeNews().changes.empty());
}

TEST_F(HostBoardTest, AnotherTroubleIsTold)
{
    board.tagsBad({0}, SILENT, 100);
    board.takeNews();
    board.tagsBad({0}, QLatin1String("link lost"), 200);
    ASSERT_EQ(1u, board.takeNews().changes.size());
    EXPECT_EQ(QLatin1String("link lost"), tag(0).trouble);
}

TEST_F(HostBoardTest, ATagThatIsGoodAgainIsNewsThoughItsValueIsTheSame)
{
    board.tagRead(0, SEVEN, 100);
    board.tagsBad({0}, SILENT, 200);
    board.takeNews();
    board.tagRead(0, SEVEN, 300);
    const News news = board.takeNews();
    ASSERT_EQ(1u, news.changes.size());
    EXPECT_TRUE(news.changes[0].state.good);
    EXPECT_TRUE(news.changes[0].state.trouble.isEmpty());
    EXPECT_EQ(0, tag(0).changes);
}

TEST_F(HostBoardTest, NewsAreTakenOnce)
{
    board.tagRead(0, SEVEN, 1);
    board.linkChanged(true, QString(), 2);
    board.jobEnded(JobEnd());
    board.frame(FrameRecord::SENT, SEVEN, 3);
    board.echoFound();
    board.takeNews();
    const News news = board.takeNews();
    EXPECT_TRUE(news.changes.empty());
    EXPECT_TRUE(news.linkEvents.empty());
    EXPECT_TRUE(news.jobEnds.empty());
    EXPECT_TRUE(news.frames.empty());
    EXPECT_FALSE(news.isEchoFound);
}

TEST_F(HostBoardTest, AnEchoThatWasFoundIsNews)
{
    EXPECT_FALSE(board.takeNews().isEchoFound);
    board.echoFound();
    board.waitForNews(60000);
    EXPECT_TRUE(board.takeNews().isEchoFound);
}

TEST_F(HostBoardTest, AJobsEndIsPassedOnAsItWas)
{
    JobEnd end;
    end.job = JOB;
    end.outcome = JobEnd::REFUSED;
    end.trouble = QLatin1String("refused");
    end.values = SEVEN;
    board.jobEnded(end);
    const News news = board.takeNews();
    ASSERT_EQ(1u, news.jobEnds.size());
    EXPECT_EQ(int(JOB), news.jobEnds[0].job);
    EXPECT_EQ(JobEnd::REFUSED, news.jobEnds[0].outcome);
    EXPECT_EQ(end.trouble, news.jobEnds[0].trouble);
    EXPECT_EQ(SEVEN, news.jobEnds[0].values);
}

TEST_F(HostBoardTest, ARecipesProgressStaysKnown)
{
    board.recipeProgress(JOB, 4);
    EXPECT_EQ(4, board.takeNews().recipeBlocksDone);
    EXPECT_EQ(4, board.takeNews().recipeBlocksDone);
}

TEST_F(HostBoardTest, TheBlocksOfARecipeAreToldWithItsEndAndNotOfTheNextOne)
{
    JobEnd end;
    end.job = JOB;
    board.recipeProgress(JOB, 4);
    board.jobEnded(end);
    EXPECT_EQ(4, board.takeNews().recipeBlocksDone);
    EXPECT_EQ(0, board.takeNews().recipeBlocksDone);
}

TEST_F(HostBoardTest, TheEndOfAnotherJobLeavesARecipesBlocks)
{
    JobEnd end;
    end.job = JOB + 1;
    board.recipeProgress(JOB, 4);
    board.jobEnded(end);
    board.takeNews();
    EXPECT_EQ(4, board.takeNews().recipeBlocksDone);
}

TEST_F(HostBoardTest, ChangesThatNobodyTakesAreDroppedAndCounted)
{
    for (int i = 0; i < HostBoard::MOST_CHANGES + 3; ++i)
        board.tagRead(0, i % 2 == 0 ? ZERO : SEVEN, i);
    const News news = board.takeNews();
    EXPECT_EQ(100000u, news.changes.size());
    EXPECT_EQ(3, news.changesMissed);
}

TEST_F(HostBoardTest, ADroppedChangeIsStillInTheTagsState)
{
    for (int i = 0; i < HostBoard::MOST_CHANGES; ++i)
        board.tagRead(0, i % 2 == 0 ? ZERO : SEVEN, i);
    board.tagRead(0, QByteArray::fromHex("0800"), 1);
    EXPECT_EQ(QByteArray::fromHex("0800"), tag(0).bytes);
    EXPECT_EQ(100000, tag(0).changes);
}

TEST_F(HostBoardTest, MissedChangesStayCountedAfterNewsAreTaken)
{
    for (int i = 0; i < HostBoard::MOST_CHANGES + 3; ++i)
        board.tagRead(0, i % 2 == 0 ? ZERO : SEVEN, i);
    board.takeNews();
    board.tagRead(1, SEVEN, 1);
    const News news = board.takeNews();
    EXPECT_EQ(1u, news.changes.size());
    EXPECT_EQ(3, news.changesMissed);
}

TEST_F(HostBoardTest, FramesThatNobodyTakesAreDroppedAndCounted)
{
    for (int i = 0; i < HostBoard::MOST_FRAMES + 2; ++i)
        board.frame(FrameRecord::SENT, SEVEN, i);
    const News news = board.takeNews();
    EXPECT_EQ(20000u, news.frames.size());
    EXPECT_EQ(2, news.framesMissed);
}

TEST_F(HostBoardTest, EndsOfJobsAreNeverDropped)
{
    const int jobs = 2 * HostBoard::MOST_CHANGES;
    for (int i = 0; i < jobs; ++i)
        board.jobEnded(JobEnd());
    EXPECT_EQ(size_t(jobs), board.takeNews().jobEnds.size());
}

TEST_F(HostBoardTest, AFrameKeepsItsTimeAndDirection)
{
    board.frame(FrameRecord::RECEIVED, SEVEN, 77);
    const News news = board.takeNews();
    ASSERT_EQ(1u, news.frames.size());
    EXPECT_EQ(77, news.frames[0].time);
    EXPECT_EQ(FrameRecord::RECEIVED, news.frames[0].direction);
    EXPECT_EQ(SEVEN, news.frames[0].bytes);
}

TEST(HostBoardWithoutFrames, KeepsNone)
{
    HostBoard board(0, false);
    board.frame(FrameRecord::SENT, SEVEN, 1);
    EXPECT_TRUE(board.takeNews().frames.empty());
}

TEST_F(HostBoardTest, WaitingWithNewsAlreadyThereEndsAtOnce)
{
    board.tagRead(0, SEVEN, 1);
    board.waitForNews(60000);
    EXPECT_EQ(1u, board.takeNews().changes.size());
}

TEST_F(HostBoardTest, WaitingWithoutNewsEndsWithItsTime)
{
    board.waitForNews(0);
    EXPECT_TRUE(board.takeNews().changes.empty());
}

TEST_F(HostBoardTest, AnotherThreadIsWokenByNewsAndMissesNone)
{
    const int values = 20000;
    std::vector<News::Change> seen;
    int jobEnds = 0;
    std::thread reader([&] {
        while (jobEnds == 0) {
            board.waitForNews(60000);
            const News news = board.takeNews();
            seen.insert(seen.end(), news.changes.begin(), news.changes.end());
            jobEnds += int(news.jobEnds.size());
            board.figures(1);
            board.tags();
        }
    });
    for (int i = 1; i <= values; ++i)
        board.tagRead(i % TAGS, QByteArray::number(i), i);
    board.jobEnded(JobEnd());
    reader.join();
    ASSERT_EQ(size_t(values), seen.size());
    for (int i = 1; i <= values; ++i) {
        ASSERT_EQ(i, seen[size_t(i - 1)].time);
        ASSERT_EQ(QByteArray::number(i), seen[size_t(i - 1)].state.bytes);
    }
}
