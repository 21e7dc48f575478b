#include "sessionBench.h"

#include <gtest/gtest.h>

namespace {

enum { JOB = 1, NUMBER = 3010, WRITE_REGISTER = 6 };

} // namespace

/// The late echo of an older write has the station, function and register of the newer write. Only
/// the value differs.
class DriverFeederLateEchoTest : public testing::Test
{
protected:
    enum { OLDER_VALUE = 1, NEWER_VALUE = 2, ALWAYS = 1000 };

    /// Writes the older value, then the newer value. The newer write fails `times` times to reach
    /// the PLC; each time the echo of the older write comes instead.
    void write(int times)
    {
        bench.writeWord(JOB, NUMBER, OLDER_VALUE);
        ASSERT_TRUE(bench.runUntilEnded(JOB));
        const QByteArray echo =
            bench.sent.back(); // the echo of a single register equals the request
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

TEST_F(DriverFeederLateEchoTest, OfAnOlderValueDoesNotConfirmANewerWrite)
{
    write(ALWAYS);
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(int(OLDER_VALUE), bench.plc.word(1, NUMBER));
}

TEST_F(DriverFeederLateEchoTest, OfAnOlderValueMakesTheNewerWriteBeRetried)
{
    write(1);
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB + 1));
    EXPECT_EQ(int(NEWER_VALUE), bench.plc.word(1, NUMBER));
}
