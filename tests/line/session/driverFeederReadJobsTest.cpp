#include "sessionBench.h"

#include <gtest/gtest.h>

// One read job of several blocks, some of which fail. Nothing is polled.

namespace {

enum { JOB = 1, NUMBER = 3010, FAR_NUMBER = 3500 };

} // namespace

class DriverFeederReadJobsTest : public testing::Test
{
protected:
    /// Reads the tags in one job, to its end.
    JobEnd::Outcome read(const std::vector<Tag>& tags)
    {
        bench.know(tags);
        bench.feeder.addRead(JOB, bench.blocks);
        EXPECT_TRUE(bench.runUntilEnded(JOB));
        return bench.sink.outcome(JOB);
    }

    std::string troubleOf(int tag)
    {
        return bench.sink.tags[tag].trouble.toStdString();
    }

    SessionBench bench;
};

TEST_F(DriverFeederReadJobsTest, SilentStationLeavesTheValuesOfTheOthers)
{
    bench.plc.station(2).silent = true;
    bench.plc.station(3);
    EXPECT_EQ(JobEnd::TIMED_OUT,
              read({tagOf("MW", NUMBER, Tag::UINT16, 1), tagOf("MW", NUMBER, Tag::UINT16, 2),
                    tagOf("MW", FAR_NUMBER, Tag::UINT16, 2), tagOf("MW", NUMBER, Tag::UINT16, 3)}));
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_TRUE(bench.sink.tags[3].good);
    for (const int tag : {1, 2}) {
        EXPECT_FALSE(bench.sink.tags[tag].good);
        EXPECT_EQ("station 2 does not answer", troubleOf(tag));
    }
    EXPECT_EQ(0, bench.sink.endedTwice);
}

TEST_F(DriverFeederReadJobsTest, EachTagHasItsOwnReason)
{
    bench.plc.station(2).silent = true;
    bench.plc.station(1).refusals[FAR_NUMBER] = 2;
    EXPECT_EQ(JobEnd::REFUSED,
              read({tagOf("MW", NUMBER, Tag::UINT16, 1), tagOf("MW", FAR_NUMBER, Tag::UINT16, 1),
                    tagOf("MW", NUMBER, Tag::UINT16, 2)}));
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_EQ("refused by the PLC: illegal address (exception 2)", troubleOf(1));
    EXPECT_EQ("station 2 does not answer", troubleOf(2));
}
