#include "sessionBench.h"

#include <gtest/gtest.h>

// Jobs for a station that is known to be silent. A time-out is 100 ms.

namespace {

enum { JOB = 1, NUMBER = 3010, MS = SessionBench::MS, SECOND = SessionBench::SECOND };

} // namespace

class DriverFeederSilentStationJobsTest : public testing::Test
{
protected:
    SessionBench bench;
};

// Such writes end unsent. A session that took them for failed probes would put the next one off.
TEST_F(DriverFeederSilentStationJobsTest, WritesToASilentStationDoNotPutOffItsProbes)
{
    enum { WRITES = 80, EVERY_MS = 125 };
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    const auto isSilent = [this] { return !bench.sink.tags[1].good; };
    ASSERT_TRUE(bench.runUntil(isSilent, SECOND));
    std::vector<qint64> asked = {bench.now};
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming&) {
        if (request.at(0) == 2) asked.push_back(bench.now);
    };
    for (int i = 0; i < WRITES; ++i) {
        bench.writeWord(JOB + i, NUMBER, i, 2);
        bench.run(EVERY_MS * MS);
        ASSERT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB + i)) << i;
    }
    // Pauses of 4, 20 and 40 time-outs; each probe takes one time-out.
    ASSERT_EQ(4u, asked.size());
    const int pauses[] = {4, 21, 41};
    for (size_t i = 0; i < 3; ++i)
        EXPECT_NEAR(pauses[i], double(asked[i + 1] - asked[i]) / SessionBench::ANSWER, 0.3) << i;
}

TEST_F(DriverFeederSilentStationJobsTest, AReadOfAStationKnownToBeSilentEndsAtOnceAndHoldsUpNoOther)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    ASSERT_FALSE(bench.sink.tags[1].good);
    const qint64 begin = bench.now;
    bench.feeder.addRead(JOB, {bench.blocks[1]});
    bench.feeder.addRead(JOB + 1, {bench.blocks[0]});
    const auto haveEnded = [this] {
        return bench.sink.hasEnded(JOB) && bench.sink.hasEnded(JOB + 1);
    };
    ASSERT_TRUE(bench.runUntil(haveEnded, 60 * SECOND));
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_LT(bench.now - begin, SessionBench::ANSWER);
}
