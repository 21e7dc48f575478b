#include "session/oneShotReads.h"

#include <gtest/gtest.h>

namespace {

enum { FIRST_JOB = 10, SECOND_JOB = 11 };

ReadBlock blockAt(int number)
{
    ReadBlock block;
    block.station = 1;
    block.area = QLatin1String("MW");
    block.number = number;
    block.count = 1;
    return block;
}

} // namespace

class OneShotReadsTest : public testing::Test
{
protected:
    /// @return the number of the started block; -1: none
    int start()
    {
        const std::optional<OneShotReads::Read> read = reads.start();
        return read ? read->block.number : -1;
    }

    void endsWell()
    {
        reads.done(QByteArray());
    }

    void failsWith(const char* reason)
    {
        reads.failed(JobEnd::TIMED_OUT, QLatin1String("MW2"), QLatin1String(reason));
    }

    OneShotReads reads;
};

TEST_F(OneShotReadsTest, NothingToReadStartsNothing)
{
    EXPECT_EQ(-1, start());
    EXPECT_FALSE(reads.isUnderWay());
}

TEST_F(OneShotReadsTest, BlocksAreStartedOneAtATimeInOrder)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(2)});
    EXPECT_EQ(1, start());
    EXPECT_EQ(-1, start());
    EXPECT_TRUE(reads.isUnderWay());
    endsWell();
    EXPECT_EQ(2, start());
}

TEST_F(OneShotReadsTest, JobEndsWithItsLastBlock)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(2)});
    start();
    endsWell();
    EXPECT_TRUE(reads.takeEnded().empty());
    start();
    endsWell();
    const std::vector<JobEnd> ends = reads.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::DONE, ends[0].outcome);
    EXPECT_TRUE(reads.takeEnded().empty());
}

TEST_F(OneShotReadsTest, JobWithoutBlocksEndsAtOnce)
{
    reads.add(FIRST_JOB, {});
    const std::vector<JobEnd> ends = reads.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::DONE, ends[0].outcome);
}

TEST_F(OneShotReadsTest, JobGoesOnBehindAFailureAndNamesEachFailure)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(2), blockAt(3)});
    reads.add(SECOND_JOB, {blockAt(4)});
    start();
    failsWith("silent");
    EXPECT_EQ(2, start());
    failsWith("refused");
    EXPECT_TRUE(reads.takeEnded().empty());
    EXPECT_EQ(3, start());
    endsWell();
    const std::vector<JobEnd> ends = reads.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(int(FIRST_JOB), ends[0].job);
    EXPECT_EQ(JobEnd::TIMED_OUT, ends[0].outcome);
    EXPECT_EQ(QLatin1String("MW2: silent; MW2: refused"), ends[0].trouble);
    EXPECT_EQ(4, start());
}

TEST_F(OneShotReadsTest, EndHasThePlaceAndTheReasonOfTheFirstFailure)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(2)});
    start();
    reads.failed(JobEnd::REFUSED, QLatin1String("MW2"), QLatin1String("refused"));
    start();
    reads.failed(JobEnd::TIMED_OUT, QLatin1String("MW4"), QLatin1String("silent"));
    const JobEnd end = reads.takeEnded().at(0);
    EXPECT_EQ(JobEnd::REFUSED, end.outcome);
    EXPECT_EQ(QLatin1String("MW2"), end.block);
    EXPECT_EQ(QLatin1String("refused"), end.reason);
}

TEST_F(OneShotReadsTest, EndHasTheValuesOfTheBlocksInTheirOrder)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(2)});
    start();
    reads.done("ab");
    start();
    reads.done("c");
    EXPECT_EQ("abc", reads.takeEnded().at(0).values);
}

TEST_F(OneShotReadsTest, FailureOfOneJobIsNotThatOfTheNext)
{
    reads.add(FIRST_JOB, {blockAt(1)});
    start();
    failsWith("silent");
    reads.takeEnded();
    reads.add(SECOND_JOB, {blockAt(2)});
    start();
    endsWell();
    const std::vector<JobEnd> ends = reads.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(JobEnd::DONE, ends[0].outcome);
    EXPECT_TRUE(ends[0].trouble.isEmpty());
}

TEST_F(OneShotReadsTest, ReadWithoutAJobReportsNoEnd)
{
    reads.add(FIRST_JOB, {blockAt(1)});
    reads.add(OneShotReads::NO_JOB, {blockAt(8)});
    EXPECT_EQ(1, start());
    endsWell();
    reads.takeEnded();
    EXPECT_EQ(8, start());
    endsWell();
    EXPECT_TRUE(reads.takeEnded().empty());
    EXPECT_EQ(-1, start());
}

TEST_F(OneShotReadsTest, FailedReadWithoutAJobDropsNothing)
{
    reads.add(OneShotReads::NO_JOB, {blockAt(8), blockAt(9)});
    reads.add(OneShotReads::NO_JOB, {blockAt(10)});
    reads.add(FIRST_JOB, {blockAt(1)});
    for (const int number : {8, 9, 10}) {
        EXPECT_EQ(number, start());
        failsWith("refused");
    }
    EXPECT_TRUE(reads.takeEnded().empty());
    EXPECT_EQ(1, start());
}

TEST_F(OneShotReadsTest, ReadsAfterWritesAreJoinedWhileTheyWait)
{
    reads.addAfterWrite(blockAt(8));
    reads.addAfterWrite(blockAt(8));
    reads.addAfterWrite(blockAt(9));
    EXPECT_EQ(8, start());
    reads.addAfterWrite(blockAt(8)); // the read under way may have been too early
    endsWell();
    EXPECT_EQ(9, start());
    endsWell();
    EXPECT_EQ(8, start());
    endsWell();
    EXPECT_EQ(-1, start());
    EXPECT_TRUE(reads.takeEnded().empty());
}

TEST_F(OneShotReadsTest, ReadAfterAWriteIsNotJoinedWithAJob)
{
    reads.add(FIRST_JOB, {blockAt(9)});
    reads.addAfterWrite(blockAt(9));
    EXPECT_EQ(9, start());
    endsWell();
    EXPECT_EQ(1u, reads.takeEnded().size());
    EXPECT_EQ(9, start());
}

TEST_F(OneShotReadsTest, EndWithoutAReadIsIgnored)
{
    reads.add(FIRST_JOB, {blockAt(1)});
    endsWell();
    EXPECT_TRUE(reads.takeEnded().empty());
    EXPECT_EQ(1, start());
}

TEST_F(OneShotReadsTest, OnlyTheFirstThreeFailuresAreNamed)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(2), blockAt(3), blockAt(4), blockAt(5)});
    for (const char* const trouble : {"a", "b", "c", "d", "e"}) {
        start();
        failsWith(trouble);
    }
    const std::vector<JobEnd> ends = reads.takeEnded();
    ASSERT_EQ(1u, ends.size());
    EXPECT_EQ(QLatin1String("MW2: a; MW2: b; MW2: c; and 2 more"), ends[0].trouble);
}

TEST_F(OneShotReadsTest, PartsOfARefusedBlockAreReadNextForItsJob)
{
    reads.add(FIRST_JOB, {blockAt(1), blockAt(9)});
    EXPECT_EQ(1, start());
    reads.split({blockAt(1), blockAt(2), blockAt(3)});
    for (const int number : {1, 2, 3}) {
        EXPECT_FALSE(reads.isUnderWay());
        EXPECT_EQ(number, start());
        endsWell();
        EXPECT_TRUE(reads.takeEnded().empty());
    }
    EXPECT_EQ(9, start());
    endsWell();
    EXPECT_EQ(1u, reads.takeEnded().size());
}

TEST_F(OneShotReadsTest, PartsOfAReadWithoutAJobReportNoEnd)
{
    reads.add(OneShotReads::NO_JOB, {blockAt(1)});
    start();
    reads.split({blockAt(1), blockAt(2)});
    for (const int number : {1, 2}) {
        EXPECT_EQ(number, start());
        endsWell();
    }
    EXPECT_TRUE(reads.takeEnded().empty());
    EXPECT_EQ(-1, start());
}
