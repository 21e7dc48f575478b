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

JobEnd endWith(JobEnd::Outcome outcome, const char* reason)
{
    JobEnd end;
    end.outcome = outcome;
    end.reason = QLatin1String(reason);
    return end;
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
        return jobs.ended(station, AREA, number, JobEnd());
    }

    bool refused(int number)
    {
        return jobs.ended(STATION, AREA, number, endWith(JobEnd::REFUSED, "refused"));
    }

    /// Takes all elements that can be taken.
    /// @return their numbers
    std::vector<int> takeAll()
    {
        std::vector<int> taken;
        while (const std::optional<ElementWrite> write = jobs.takeNext())
            taken.push_back(write->number);
        return taken;
    }

    WriteJobs jobs;
};

TEST_F(WriteJobsTest, NothingIsTakenAtFirst)
{
    EXPECT_FALSE(jobs.takeNext());
    EXPECT_TRUE(jobs.takeEnded().empty());
}

TEST_F(WriteJobsTest, ElementsAreTakenInOrder)
{
    jobs.add(FIRST_JOB, {wordWrite(5, 1), wordWrite(3, 1)});
    jobs.add(SECOND_JOB, {wordWrite(4, 1)});
    EXPECT_EQ((std::vector<int>{5, 3, 4}), takeAll());
}

TEST_F(WriteJobsTest, ElementKeepsItsBytesAndStation)
{
    jobs.add(FIRST_JOB, {wordWrite(5, 42, OTHER_STATION)});
    const std::optional<ElementWrite> taken = jobs.takeNext();
    ASSERT_TRUE(taken);
    EXPECT_EQ(int(OTHER_STATION), taken->station);
    EXPECT_EQ(QByteArray::fromHex("2A00"), taken->bytes);
}

TEST_F(WriteJobsTest, JobEndsWithItsLastElement)
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

TEST_F(WriteJobsTest, JobEndIsReportedOnce)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1)});
    takeAll();
    done(1);
    jobs.takeEnded();
    EXPECT_TRUE(jobs.takeEnded().empty());
}

TEST_F(WriteJobsTest, JobWithoutElementsEndsAtOnce)
{
    jobs.add(FIRST_JOB, {});
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::DONE, ends[0].outcome);
}

TEST_F(WriteJobsTest, JobReportsItsFirstFailure)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1), wordWrite(2, 1), wordWrite(3, 1)});
    takeAll();
    refused(2);
    jobs.ended(STATION, AREA, 1, endWith(JobEnd::TIMED_OUT, "silent"));
    done(3);
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(JobEnd::REFUSED, ends[0].outcome);
    EXPECT_EQ(QLatin1String("tag2: refused"), ends[0].trouble);
}

TEST_F(WriteJobsTest, AtMostFiveHundredElementsAreOutstanding)
{
    jobs.add(FIRST_JOB, wordWrites(0, 600));
    EXPECT_EQ(500u, takeAll().size());
    EXPECT_EQ(500, jobs.outstanding());
}

TEST_F(WriteJobsTest, EndedElementMakesRoomForAnother)
{
    jobs.add(FIRST_JOB, wordWrites(0, 600));
    takeAll();
    done(17);
    EXPECT_EQ(std::vector<int>{500}, takeAll());
}

TEST_F(WriteJobsTest, SecondWriteOfAnElementWaitsForTheFirst)
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

TEST_F(WriteJobsTest, WaitingElementDoesNotDelayOthers)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(1, 22), wordWrite(2, 22)});
    EXPECT_EQ(std::vector<int>{2}, takeAll());
}

TEST_F(WriteJobsTest, SameNumberOfAnotherStationIsAnotherElement)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11), wordWrite(1, 11, OTHER_STATION)});
    EXPECT_EQ(2u, takeAll().size());
    EXPECT_TRUE(done(1, OTHER_STATION));
    EXPECT_EQ(1, jobs.outstanding());
}

TEST_F(WriteJobsTest, NewerWriteReplacesAWaitingWrite)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    jobs.add(THIRD_JOB, {wordWrite(1, 33)});
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(SECOND_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::LOST, ends[0].outcome);
    EXPECT_EQ(QLatin1String("tag1: replaced by a newer write, not sent"), ends[0].trouble);
    done(1);
    EXPECT_EQ(33, jobs.takeNext().value().bytes.at(0));
}

TEST_F(WriteJobsTest, TwoWritesOfAnElementEndSeparately)
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

TEST_F(WriteJobsTest, ElementTwiceInAJobEndsTheJobOnce)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11), wordWrite(1, 22)});
    EXPECT_EQ(std::vector<int>{1}, takeAll());
    EXPECT_TRUE(jobs.takeEnded().empty());
    done(1);
    EXPECT_EQ(1u, jobs.takeEnded().size());
}

TEST_F(WriteJobsTest, OnlyOutstandingElementsEnd)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    EXPECT_FALSE(done(1));
    takeAll();
    EXPECT_TRUE(done(1));
    EXPECT_FALSE(done(1));
}

TEST_F(WriteJobsTest, FailWaitingEndsOnlyTheStationsWaitingElements)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1)});
    jobs.add(SECOND_JOB, {wordWrite(1, 1, OTHER_STATION)});
    jobs.failWaiting(STATION, endWith(JobEnd::TIMED_OUT, "silent"));
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::TIMED_OUT, ends[0].outcome);
    EXPECT_EQ(QLatin1String("tag1: silent"), ends[0].trouble);
    EXPECT_EQ(int(OTHER_STATION), jobs.takeNext().value().station);
    EXPECT_FALSE(jobs.takeNext());
}

TEST_F(WriteJobsTest, FailWaitingKeepsOutstandingElements)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1)});
    takeAll();
    jobs.failWaiting(STATION, endWith(JobEnd::TIMED_OUT, "silent"));
    EXPECT_TRUE(jobs.takeEnded().empty());
    EXPECT_TRUE(done(1));
}

TEST_F(WriteJobsTest, FailedWaitingElementCanBeWrittenAgain)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    jobs.failWaiting(STATION, endWith(JobEnd::TIMED_OUT, "silent"));
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    EXPECT_EQ(22, jobs.takeNext().value().bytes.at(0));
    EXPECT_FALSE(jobs.takeNext());
}

TEST_F(WriteJobsTest, HeldStationsElementsAreNotTaken)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 1), wordWrite(2, 1, OTHER_STATION)});
    const auto isHeld = [](int station) { return station == STATION; };
    EXPECT_EQ(int(OTHER_STATION), jobs.takeNext(isHeld).value().station);
    EXPECT_FALSE(jobs.takeNext(isHeld));
    EXPECT_TRUE(jobs.hasWaiting(STATION));
    EXPECT_FALSE(jobs.hasWaiting(OTHER_STATION));
    EXPECT_EQ(std::vector<int>{1}, takeAll());
}

TEST_F(WriteJobsTest, ElementsThatWerePutBackKeepTheirOrder)
{
    jobs.add(FIRST_JOB, wordWrites(1, 3));
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(0, 1)});
    jobs.putBack(STATION, AREA, 1);
    jobs.putBack(STATION, AREA, 2);
    // The driver still has the third element: the first must not overtake it into the driver.
    EXPECT_TRUE(jobs.isComingBack(STATION));
    EXPECT_TRUE(takeAll().empty());
    jobs.putBack(STATION, AREA, 3);
    EXPECT_FALSE(jobs.isComingBack(STATION));
    EXPECT_EQ((std::vector<int>{1, 2, 3, 0}), takeAll());
    EXPECT_TRUE(jobs.takeEnded().empty());
}

TEST_F(WriteJobsTest, OtherStationsAreTakenWhileElementsComeBack)
{
    jobs.add(FIRST_JOB, wordWrites(1, 2));
    takeAll();
    jobs.putBack(STATION, AREA, 1);
    jobs.add(SECOND_JOB, {wordWrite(9, 1, OTHER_STATION)});
    EXPECT_FALSE(jobs.isComingBack(OTHER_STATION));
    EXPECT_EQ(std::vector<int>{9}, takeAll());
}

TEST_F(WriteJobsTest, ElementThatWasPutBackIsReplacedByANewerValue)
{
    jobs.add(FIRST_JOB, {wordWrite(1, 11)});
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(1, 22)});
    jobs.putBack(STATION, AREA, 1);
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::NOT_SENT, ends[0].execution);
    EXPECT_EQ(22, jobs.takeNext().value().bytes.at(0));
    EXPECT_FALSE(jobs.takeNext());
}

TEST_F(WriteJobsTest, DroppedJobTellsTheElementThatWentOut)
{
    jobs.add(FIRST_JOB, wordWrites(1, 4));
    takeAll();
    jobs.add(SECOND_JOB, {wordWrite(9, 1)});
    jobs.dropAll(QLatin1String("gone"),
                 [](int, const QString&, int number) { return number == 3 ? 2 : 0; });
    const std::vector<JobEnd> ends = jobs.takeEnded();
    ASSERT_EQ(2u, ends.size());
    EXPECT_EQ(JobEnd::LOST, ends[0].outcome);
    EXPECT_EQ(JobEnd::MAYBE_EXECUTED, ends[0].execution);
    EXPECT_EQ(QLatin1String("tag3: gone; the PLC may have executed it"), ends[0].trouble);
    EXPECT_EQ(JobEnd::NOT_SENT, ends[1].execution);
    EXPECT_EQ(QLatin1String("tag9: not sent: gone"), ends[1].trouble);
    EXPECT_EQ(0, jobs.outstanding());
    EXPECT_FALSE(jobs.takeNext());
}
