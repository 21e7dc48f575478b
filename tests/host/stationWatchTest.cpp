#include "session/stationWatch.h"

#include <gtest/gtest.h>

// Times are microseconds of a clock that only the tests move. Pauses are counted in time-outs.

namespace {

enum { TIME_OUT = 1000, STATION = 7, OTHER_STATION = 8, NOT_HEARD = 0, HEARD = 1 };

} // namespace

class StationWatchTest : public testing::Test
{
protected:
    StationWatchTest() : watch(TIME_OUT) {}

    /// Lets a station fail once more, one time-out after its probe went out.
    void probeFails()
    {
        const qint64 due = watch.nextProbe().value();
        ASSERT_EQ(STATION, watch.takeDueProbe(due).value_or(0));
        now = due + TIME_OUT;
        watch.gaveUp(STATION, NOT_HEARD, now);
    }

    StationWatch watch;
    qint64 now = 0;
};

TEST_F(StationWatchTest, AStationThatWasNeverAskedIsNotSilent)
{
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_FALSE(watch.nextProbe());
}

TEST_F(StationWatchTest, OneGiveUpWithoutAByteMakesAStationSilent)
{
    EXPECT_TRUE(watch.gaveUp(STATION, NOT_HEARD, 0));
    EXPECT_TRUE(watch.isSilent(STATION));
}

TEST_F(StationWatchTest, OneSilentStationLeavesTheOthersAlone)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    EXPECT_FALSE(watch.isSilent(OTHER_STATION));
}

TEST_F(StationWatchTest, NoiseMakesAStationSilentOnlyAtTheThirdGiveUpInARow)
{
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 0));
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 1));
    EXPECT_TRUE(watch.gaveUp(STATION, HEARD, 2));
}

TEST_F(StationWatchTest, AnAnswerBetweenStartsTheCountOfNoisyGiveUpsAnew)
{
    watch.gaveUp(STATION, HEARD, 0);
    watch.gaveUp(STATION, HEARD, 1);
    watch.answered(STATION);
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 2));
}

TEST_F(StationWatchTest, ASilentStationIsToldOfOnce)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    EXPECT_FALSE(watch.gaveUp(STATION, NOT_HEARD, 1));
}

TEST_F(StationWatchTest, TheFirstProbeIsDueAfterFourTimeOuts)
{
    watch.gaveUp(STATION, NOT_HEARD, 500);
    EXPECT_FALSE(watch.takeDueProbe(500 + 4 * TIME_OUT - 1));
    EXPECT_EQ(STATION, watch.takeDueProbe(500 + 4 * TIME_OUT).value_or(0));
}

TEST_F(StationWatchTest, AProbeThatWouldBeHeldBackIsPutOff)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.putOff(STATION, 7 * TIME_OUT);
    EXPECT_EQ(7 * TIME_OUT, watch.nextProbe());
    EXPECT_FALSE(watch.takeDueProbe(7 * TIME_OUT - 1));
    EXPECT_EQ(STATION, watch.takeDueProbe(7 * TIME_OUT).value_or(0));
}

TEST_F(StationWatchTest, AProbeThatIsDueLaterAnywayIsNotPutOff)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.putOff(STATION, 3 * TIME_OUT);
    EXPECT_EQ(4 * TIME_OUT, watch.nextProbe());
}

TEST_F(StationWatchTest, ADueProbeIsTakenOnce)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.takeDueProbe(4 * TIME_OUT);
    EXPECT_FALSE(watch.takeDueProbe(1000 * TIME_OUT));
    EXPECT_FALSE(watch.nextProbe());
}

TEST_F(StationWatchTest, ThePausesGrowUpToAHundredAndTwentyTimeOuts)
{
    watch.gaveUp(STATION, NOT_HEARD, now);
    for (const int pause : {4, 20, 40, 80, 120, 120}) {
        EXPECT_EQ(now + pause * TIME_OUT, watch.nextProbe().value_or(-1));
        probeFails();
    }
}

TEST_F(StationWatchTest, AStationThatAnswersIsBackAndIsToldOfOnce)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_FALSE(watch.answered(STATION));
}

TEST_F(StationWatchTest, AStationThatCameBackStartsWithTheShortestPauseAgain)
{
    watch.gaveUp(STATION, NOT_HEARD, now);
    probeFails();
    probeFails();
    watch.answered(STATION);
    watch.gaveUp(STATION, NOT_HEARD, now);
    EXPECT_EQ(now + 4 * TIME_OUT, watch.nextProbe().value_or(-1));
}

TEST_F(StationWatchTest, TheNextProbeIsTheEarliestOfAllStations)
{
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 300);
    watch.gaveUp(STATION, NOT_HEARD, 100);
    EXPECT_EQ(100 + 4 * TIME_OUT, watch.nextProbe().value_or(-1));
    EXPECT_EQ(STATION, watch.takeDueProbe(200 + 4 * TIME_OUT).value_or(0));
    EXPECT_EQ(300 + 4 * TIME_OUT, watch.nextProbe().value_or(-1));
}

TEST_F(StationWatchTest, AllSilentStationsAreDueWhenTheLinkIsBack)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 0);
    watch.probeAllAt(1 * TIME_OUT);
    EXPECT_EQ(STATION, watch.takeDueProbe(1 * TIME_OUT).value_or(0));
    EXPECT_EQ(OTHER_STATION, watch.takeDueProbe(1 * TIME_OUT).value_or(0));
    EXPECT_FALSE(watch.takeDueProbe(1 * TIME_OUT));
}

TEST_F(StationWatchTest, AProbeUnderWayIsNotDueASecondTimeWhenTheLinkIsBack)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.takeDueProbe(4 * TIME_OUT);
    watch.probeAllAt(5 * TIME_OUT);
    EXPECT_FALSE(watch.takeDueProbe(500 * TIME_OUT));
}

TEST_F(StationWatchTest, NoStationThatAnswersIsDueWhenTheLinkIsBack)
{
    watch.answered(STATION);
    watch.probeAllAt(0);
    EXPECT_FALSE(watch.takeDueProbe(1000 * TIME_OUT));
    EXPECT_FALSE(watch.nextProbe());
}
