#include "sessionBench.h"

#include <gtest/gtest.h>

// Links that return what is sent, as two-wire adapters do. Nobody tells the host.

namespace {

enum { JOB = 1, NUMBER = 3010, MS = SessionBench::MS, SECOND = SessionBench::SECOND };

} // namespace

class DriverFeederEchoTest : public testing::Test
{
protected:
    DriverFeederEchoTest()
    {
        bench.line.echoes = true;
        bench.plc.station(1).holding[NUMBER] = 5;
    }

    void loseLinkAndBringItBack()
    {
        bench.loseLink(QLatin1String("link lost"));
        bench.run(SECOND);
        bench.bringLinkBack();
        bench.run(SECOND);
    }

    SessionBench bench;
};

TEST_F(DriverFeederEchoTest, AnEchoIsFoundAndToldOnceThoughTheLinkIsLostAndBack)
{
    bench.poll({tagOf("MW", NUMBER)});
    bench.run(SECOND);
    EXPECT_EQ(1, bench.sink.echoesFound);
    loseLinkAndBringItBack();
    EXPECT_EQ(1, bench.sink.echoesFound);
}

TEST_F(DriverFeederEchoTest, OnALinkWithoutAnEchoNoneIsFound)
{
    bench.line.echoes = false;
    bench.poll({tagOf("MW", NUMBER)});
    bench.writeWord(JOB, NUMBER + 1, 7);
    bench.run(SECOND);
    loseLinkAndBringItBack();
    EXPECT_EQ(0, bench.sink.echoesFound);
}

TEST_F(DriverFeederEchoTest, ValuesAreShownAndWritesAreConfirmedBehindTheEcho)
{
    bench.poll({tagOf("MW", NUMBER)});
    bench.writeWord(JOB, NUMBER + 1, 7);
    bench.run(SECOND);
    EXPECT_EQ(5, bench.shown(0));
    EXPECT_EQ(JobEnd::DONE, bench.sink.outcome(JOB));
    EXPECT_EQ(7, bench.plc.word(1, NUMBER + 1));
    EXPECT_GE(bench.sink.tags[0].reads, 50);
}

TEST_F(DriverFeederEchoTest, AWriteThatThePlcRefusesIsNotConfirmedByItsEcho)
{
    bench.plc.station(1).refusals[NUMBER] = 2;
    bench.writeWord(JOB, NUMBER, 7);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::REFUSED, bench.sink.outcome(JOB));
}

TEST_F(DriverFeederEchoTest, AWriteToAStationThatIsGoneIsNotConfirmedByItsEcho)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.writeWord(JOB, NUMBER, 7, 2);
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    EXPECT_EQ(JobEnd::TIMED_OUT, bench.sink.outcome(JOB));
    EXPECT_EQ(0, bench.plc.word(2, NUMBER));
}

TEST_F(DriverFeederEchoTest, AnEchoIsNoSignOfLifeOfASilentStation)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(60LL * SECOND);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_TRUE(bench.sink.tags[0].good);
}

TEST_F(DriverFeederEchoTest, AStationThatIsGoneIsSilentAsSoonAsOnALinkWithoutAnEcho)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    const QString silent = QLatin1String("station 2 does not answer");
    const auto isTold = [&] { return bench.sink.tags[1].trouble == silent; };
    // A request and two fences.
    EXPECT_TRUE(bench.runUntil(isTold, 350 * MS));
}
