#include "sessionBench.h"

#include <gtest/gtest.h>

namespace {

enum { JOB = 1, NUMBER = 3010, WRITE_REGISTER = 6 };

} // namespace

/// A late echo has the newer write's station, function and register. Only the value differs.
class DriverFeederLateEchoTest : public testing::Test
{
protected:
    enum { OLDER_VALUE = 1, NEWER_VALUE = 2, ALWAYS = 1000 };

    /// Writes the older value, then the newer one. `times` times the newer write does not reach the
    /// PLC, and the older one's echo comes in its place.
    void write(int times)
    {
        bench.writeWord(JOB, NUMBER, OLDER_VALUE);
        ASSERT_TRUE(bench.runUntilEnded(JOB));
        const QByteArray echo = bench.sent.back(); // of one register, so it repeats the request
        bench.line.disturb = [this, echo, times](const QByteArray& request,
                                                 ModelLine::Coming& coming) mutable {
            if (request.at(1) != WRITE_REGISTER || times-- <= 0) return;
            bench.plc.station(1).holding[NUMBER] = OLDER_VALUE;
            coming.bytes = echo;
        };
        bench.writeWord(JOB + 1, NUMBER, NEWER_VALUE);
        ASSERT_TRUE(bench.runUntilEnded(JOB + 1));
    }

    SessionBench bench;
};

TEST_F(DriverFeederLateEchoTest, OfAnOlderValueDoesNotEndANewerWrite)
{
    write(ALWAYS);
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(int(OLDER_VALUE), bench.plc.word(1, NUMBER));
}

TEST_F(DriverFeederLateEchoTest, OfAnOlderValueLeadsToARepeatOfTheNewerWrite)
{
    write(1);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(int(NEWER_VALUE), bench.plc.word(1, NUMBER));
}
