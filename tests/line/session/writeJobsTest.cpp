#include "session/writeJobs.h"

#include <gtest/gtest.h>

namespace {

enum { STATION = 1, OTHER_STATION = 2, FIRST_JOB = 10, SECOND_JOB = 11, THIRD_JOB = 12 };

const QString AREA = QLatin1String("MW");

ElementWrite wordWrite(int number, int value, int station = STATION)
{
    ElementWrite write;
    write.station = station;
    write.area = AREA;
    write.number = number;
    write.bytes = QByteArray(2, '\0');
    write.bytes[0] = static_cast<char>(value);
    write.label = QString(QLatin1String("tag%1")).arg(number);
    return write;
}

std::vector<ElementWrite> wordWrites(int first, int count)
{
    std::vector<ElementWrite> writes;
    for (int i = 0; i < count; ++i)
        writes.push_back(wordWrite(first + i, 1));
    return writes;
}

} // namespace

class WriteJobsTest : public testing::Test
{
protected:
    bool done(int number, int station = STATION)
    {
        return jobs.ended(station, AREA, number, JobEnd::DONE, QString());
    }

    bool refused(int number)
    {
        return jobs.ended(STATION, AREA, number, JobEnd::REFUSED, QLatin1String("refused"));
    }

    /// Numbers of the elements that can be taken now.
    std::vector<int> takeAll()
    {
        std::vector<int> taken;
        while (const std::optional<ElementWrite> write = jobs.takeNext())
            taken.push_back(write->number);
        return taken;
    }

    WriteJobs jobs;
};

TEST_F(WriteJobsTest, NothingToWriteIsNothingToTake)
{
    EXPECT_FALSE(jobs.takeNext());
    EXPECT_TRUE(jobs.takeEnded().empty());
}

TEST_F(WriteJobsTest, ElementsAreTakenInTheirOrder)
{
    jobs.add(FIRST_JOB, {wordWrite(5, 1), wordWrite(3, 1)});
    jobs.add(SECOND_JOB, {wordWrite(4, 1)});
    EXPECT_EQ((std::vector<int>{5, 3, 4}), takeAll());
}

TEST_F(WriteJobsTest, AnElementKeepsItsBytesAndItsStation)
{
    jobs.add(FIRST_JOB, {wordWrite(5, 42, OTHER_STATION)});
    const std::optional<ElementWrite> taken = jobs.takeNext();
    ASSERT_TRUE(taken);
    EXPECT_EQ(int(OTHER_STATION), taken->station);
    EXPECT_EQ(QByteArray::fromHex("2A00"), taken->bytes);
}

TEST_F(WriteJobsTest, AJobEndsWithItsLastElement)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1), wordWrite(2, 1)});
    takeAll();
    EXPECT_TRUE(done(1));
    EXPECT_TRUE(jobs.takeEnded().empty());
    EXPECT_TRUE(done(2));
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::DONE, ends[0].outcome);
    EXPECT_TRUE(ends[0].trouble.isEmpty());
}

TEST_F(WriteJobsTest, AJobIsToldOfOnce)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1)});
    takeAll();
    done(1);
    jobs.takeEnded();
    EXPECT_TRUE(jobs.takeEnded().empty());
}

TEST_F(WriteJobsTest, AJobWithoutElementsEndsAtOnce)
{
    jobs.add(FIRST_JOB, {});
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::DONE, ends[0].outcome);
}

TEST_F(WriteJobsTest, AJobTellsOfItsFirstFailureWithTheElementsLabel)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1), wordWrite(2, 1), wordWrite(3, 1)});
    takeAll();
    refused(2);
    jobs.ended(STATION, AREA, 1, JobEnd::TIMED_OUT, QLatin1String("silent"));
    done(3);
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(JobEnd::REFUSED, ends[0].outcome);
    EXPECT_EQ(QLatin1String("tag2: refused"), ends[0].trouble);
}

TEST_F(WriteJobsTest, FiveHundredElementsAreOutstandingAtMost)
{
    jobs.add(FIRST_JOB, wordWrites(0, 600));
    EXPECT_EQ(500u, takeAll().size());
    EXPECT_EQ(500, jobs.outstanding());
}

TEST_F(WriteJobsTest, EachEndedElementMakesRoomForOne)
{
    jobs.add(FIRST_JOB, wordWrites(0, 600));
    takeAll();
    done(17);
    EXPECT_EQ(std::vector<int>{500}, takeAll());
}

TEST_F(WriteJobsTest, ASecondWriteOfAnElementWaitsForTheFirstOnesEnd)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    EXPECT_EQ(std::vector<int>{1}, takeAll());
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    EXPECT_TRUE(takeAll().empty());
    done(1);
    const std::optional<ElementWrite> second = jobs.takeNext();
    ASSERT_TRUE(second);
    EXPECT_EQ(22, second->bytes.at(0));
}

TEST_F(WriteJobsTest, AWaitingElementDoesNotHoldUpTheOthers)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(1, 22), wordWrite(2, 22)});
    EXPECT_EQ(std::vector<int>{2}, takeAll());
}

TEST_F(WriteJobsTest, TheSameNumberOfAnotherStationIsAnotherElement)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11), wordWrite(1, 11, OTHER_STATION)});
    EXPECT_EQ(2u, takeAll().size());
    EXPECT_TRUE(done(1, OTHER_STATION));
    EXPECT_EQ(1, jobs.outstanding());
}

TEST_F(WriteJobsTest, OfSeveralThatWaitTheNewestReplacesTheOlderWhichFails)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    jobs.add(THIRD_JOB, {wordWrite(1, 33)});
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(SECOND_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::LOST, ends[0].outcome);
    EXPECT_EQ(QLatin1String("tag1: replaced by a newer value"), ends[0].trouble);
    done(1);
    EXPECT_EQ(33, jobs.takeNext().value().bytes.at(0));
}

TEST_F(WriteJobsTest, EachOfTwoWritesOfOneElementEndsAsItsOwnFrameDid)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    refused(1);
    takeAll();
    done(1);
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(2u, ends.size());
    EXPECT_EQ(JobEnd::REFUSED, ends[0].outcome);
    EXPECT_EQ(int(SECOND_JOB), ends[1].job);
    EXPECT_EQ(JobEnd::DONE, ends[1].outcome);
}

TEST_F(WriteJobsTest, AnElementTwiceInOneJobEndsTheJobOnce)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11), wordWrite(1, 22)});
    EXPECT_EQ(std::vector<int>{1}, takeAll());
    EXPECT_TRUE(jobs.takeEnded().empty());
    done(1);
    EXPECT_EQ(1u, jobs.takeEnded().size());
}

TEST_F(WriteJobsTest, AnElementThatIsNotOutstandingCannotEnd)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    EXPECT_FALSE(done(1));
    takeAll();
    EXPECT_TRUE(done(1));
    EXPECT_FALSE(done(1));
}

TEST_F(WriteJobsTest, FailingAStationEndsWhatWaitsForItAndNothingElse)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1)});
    jobs.add(SECOND_JOB, {wordWrite(1, 1, OTHER_STATION)});
    jobs.failWaiting(STATION, QLatin1String("silent"));
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::TIMED_OUT, ends[0].outcome);
    EXPECT_EQ(QLatin1String("tag1: silent"), ends[0].trouble);
    EXPECT_EQ(int(OTHER_STATION), jobs.takeNext().value().station);
    EXPECT_FALSE(jobs.takeNext());
}

TEST_F(WriteJobsTest, FailingAStationLeavesWhatTheDriverHas)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1)});
    takeAll();
    jobs.failWaiting(STATION, QLatin1String("silent"));
    EXPECT_TRUE(jobs.takeEnded().empty());
    EXPECT_TRUE(done(1));
}

TEST_F(WriteJobsTest, AnElementThatFailedWhileItWaitedCanBeWrittenAgain)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    jobs.failWaiting(STATION, QLatin1String("silent"));
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    EXPECT_EQ(22, jobs.takeNext().value().bytes.at(0));
    EXPECT_FALSE(jobs.takeNext());
}
