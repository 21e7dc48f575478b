#include "session/stationWatch.h"

#include <gtest/gtest.h>

#include <algorithm>

// Times are microseconds of a clock that only the tests advance. Pauses are counted in time-outs.

namespace {

enum { TIME_OUT = 1000, STATION = 7, OTHER_STATION = 8, NOT_HEARD = 0, HEARD = 1, NONE = -1 };

} // namespace

class StationWatchTest : public testing::Test
{
protected:
    StationWatchTest() : watch(TIME_OUT) {}

    /// @return the station whose probe is due at that time, or NONE
    int askedAt(qint64 time)
    {
        const std::optional<StationWatch::Probe> probe = watch.takeDueProbe(time);
        return probe ? probe->station : int(NONE);
    }

    /// @return the wait of the probe that is due, or NONE
    qint64 waitAt(qint64 time)
    {
        const std::optional<StationWatch::Probe> probe = watch.takeDueProbe(time);
        return probe ? probe->wait : qint64(NONE);
    }

    qint64 nextProbe() const
    {
        return watch.nextProbe().value_or(NONE);
    }

    /// The station's next probe is sent when it is due, and is given up after a time-out.
    void probeFails(bool heard = NOT_HEARD)
    {
        now = nextProbe();
        ASSERT_EQ(int(STATION), askedAt(now));
        now += TIME_OUT;
        watch.gaveUp(STATION, heard, now);
    }

    /// The station answered before and becomes silent.
    void goesSilent()
    {
        ASSERT_TRUE(watch.gaveUp(STATION, NOT_HEARD, now));
    }

    StationWatch watch;
    qint64 now = 0;
};

TEST_F(StationWatchTest, UnknownStationIsPolled)
{
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, ExpectedStationIsProbedBeforePolling)
{
    watch.expect(STATION, 300);
    EXPECT_FALSE(watch.isPolled(STATION));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_EQ(300, nextProbe());
    EXPECT_EQ(int(NONE), askedAt(299));
    EXPECT_EQ(int(STATION), askedAt(300));
}

TEST_F(StationWatchTest, FirstProbeWaitsForAnEighthOfTheTimeOut)
{
    watch.expect(STATION, 0);
    EXPECT_EQ(TIME_OUT / 8, waitAt(0));
}

TEST_F(StationWatchTest, AnsweringStationIsPolledAndNotProbed)
{
    watch.expect(STATION, 0);
    askedAt(0);
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, SecondProbeWaitsForTheWholeTimeOut)
{
    watch.expect(STATION, 0);
    askedAt(0);
    EXPECT_FALSE(watch.gaveUp(STATION, NOT_HEARD, 125));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_FALSE(watch.isPolled(STATION));
    EXPECT_EQ(125 + TIME_OUT, nextProbe());
    EXPECT_EQ(0, waitAt(125 + TIME_OUT));
}

TEST_F(StationWatchTest, TwoMissedProbesMakeAStationSilent)
{
    watch.expect(STATION, 0);
    probeFails();
    now = nextProbe();
    askedAt(now);
    EXPECT_TRUE(watch.gaveUp(STATION, NOT_HEARD, now + TIME_OUT));
    EXPECT_TRUE(watch.isSilent(STATION));
    EXPECT_EQ(now + 5 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, NoiseInPlaceOfBothAnswersMakesAStationSilent)
{
    watch.expect(STATION, 0);
    probeFails(HEARD);
    EXPECT_FALSE(watch.isSilent(STATION));
    probeFails(HEARD);
    EXPECT_TRUE(watch.isSilent(STATION));
}

TEST_F(StationWatchTest, AnswerAfterTheFirstProbeMakesAStationPolled)
{
    watch.expect(STATION, 0);
    probeFails();
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_TRUE(watch.isPolled(STATION));
}

TEST_F(StationWatchTest, LateAnswerMakesASilentStationPolled)
{
    goesSilent();
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_EQ(int(NONE), askedAt(1000 * TIME_OUT));
}

TEST_F(StationWatchTest, HurriedProbeComesAtItsTime)
{
    goesSilent();
    EXPECT_EQ(4 * TIME_OUT, nextProbe());
    watch.hurry(STATION, 500);
    EXPECT_EQ(500, nextProbe());
    EXPECT_EQ(int(STATION), askedAt(500));
}

TEST_F(StationWatchTest, LaterHurryDoesNotDelayAProbe)
{
    goesSilent();
    watch.hurry(STATION, 500);
    watch.hurry(STATION, 700);
    EXPECT_EQ(500, nextProbe());
    watch.hurry(STATION, 5 * TIME_OUT);
    EXPECT_EQ(500, nextProbe());
}

TEST_F(StationWatchTest, FailedHurriedProbeDoesNotMakeThePauseLonger)
{
    goesSilent();
    for (int i = 0; i < 5; ++i) {
        watch.hurry(STATION, now + 500);
        probeFails();
        EXPECT_EQ(now + 4 * TIME_OUT, nextProbe()) << i;
    }
    probeFails();
    EXPECT_EQ(now + 20 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, OnlyASilentStationIsHurried)
{
    watch.hurry(STATION, 500);
    EXPECT_EQ(NONE, nextProbe());
    watch.expect(STATION, 1000);
    watch.hurry(STATION, 500);
    EXPECT_EQ(1000, nextProbe());
    watch.answered(STATION);
    watch.hurry(STATION, 500);
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, GiveUpWithoutBytesMakesAStationSilent)
{
    EXPECT_TRUE(watch.gaveUp(STATION, NOT_HEARD, 0));
    EXPECT_TRUE(watch.isSilent(STATION));
    EXPECT_FALSE(watch.isPolled(STATION));
}

TEST_F(StationWatchTest, OtherStationsArePolledBesideASilentStation)
{
    goesSilent();
    EXPECT_FALSE(watch.isSilent(OTHER_STATION));
    EXPECT_TRUE(watch.isPolled(OTHER_STATION));
}

TEST_F(StationWatchTest, ThirdConsecutiveNoisyGiveUpMakesAStationSilent)
{
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 0));
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 1));
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_TRUE(watch.gaveUp(STATION, HEARD, 2));
}

TEST_F(StationWatchTest, AnswerResetsTheCountOfNoisyGiveUps)
{
    watch.gaveUp(STATION, HEARD, 0);
    watch.gaveUp(STATION, HEARD, 1);
    watch.answered(STATION);
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 2));
}

TEST_F(StationWatchTest, SilenceIsReportedOnce)
{
    goesSilent();
    EXPECT_FALSE(watch.gaveUp(STATION, NOT_HEARD, 1));
}

TEST_F(StationWatchTest, SilentStationIsProbedAfterFourTimeOuts)
{
    watch.gaveUp(STATION, NOT_HEARD, 500);
    EXPECT_EQ(int(NONE), askedAt(500 + 4 * TIME_OUT - 1));
    EXPECT_EQ(0, waitAt(500 + 4 * TIME_OUT));
}

TEST_F(StationWatchTest, DueProbeIsTakenOnce)
{
    goesSilent();
    askedAt(4 * TIME_OUT);
    EXPECT_EQ(int(NONE), askedAt(1000 * TIME_OUT));
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, PausesGrowUpTo120TimeOuts)
{
    goesSilent();
    for (const int pause : {4, 20, 40, 80, 120, 120}) {
        EXPECT_EQ(now + pause * TIME_OUT, nextProbe());
        probeFails();
    }
}

TEST_F(StationWatchTest, LongestPauseBoundsTheGrowthAndIsNotShorterThanTheFirst)
{
    for (const int longest : {16, 2}) {
        StationWatch bounded(TIME_OUT, qint64(longest) * TIME_OUT);
        qint64 time = 0;
        bounded.gaveUp(STATION, NOT_HEARD, time);
        for (const int pause : {4, std::max(longest, 4), std::max(longest, 4)}) {
            EXPECT_EQ(time + pause * TIME_OUT, bounded.nextProbe());
            time += (pause + 1) * TIME_OUT;
            ASSERT_TRUE(bounded.takeDueProbe(time));
            bounded.gaveUp(STATION, NOT_HEARD, time);
        }
    }
}

TEST_F(StationWatchTest, ReturnIsReportedOnce)
{
    goesSilent();
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_FALSE(watch.answered(STATION));
}

TEST_F(StationWatchTest, PausesStartAnewAfterAReturn)
{
    goesSilent();
    probeFails();
    probeFails();
    watch.answered(STATION);
    goesSilent();
    EXPECT_EQ(now + 4 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, NextProbeIsTheEarliestOfAllStations)
{
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 300);
    watch.gaveUp(STATION, NOT_HEARD, 100);
    EXPECT_EQ(100 + 4 * TIME_OUT, nextProbe());
    EXPECT_EQ(int(STATION), askedAt(200 + 4 * TIME_OUT));
    EXPECT_EQ(300 + 4 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, StationDueLongestIsProbedFirst)
{
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 100);
    watch.gaveUp(STATION, NOT_HEARD, 300);
    EXPECT_EQ(int(OTHER_STATION), askedAt(1000 * TIME_OUT));
    EXPECT_EQ(int(STATION), askedAt(1000 * TIME_OUT));
}

TEST_F(StationWatchTest, UnheardStationIsProbedBeforeASilentStation)
{
    goesSilent();
    watch.expect(OTHER_STATION, 5 * TIME_OUT);
    EXPECT_EQ(int(OTHER_STATION), askedAt(5 * TIME_OUT));
    EXPECT_EQ(int(STATION), askedAt(5 * TIME_OUT));
}

TEST_F(StationWatchTest, FailedProbeDelaysOtherProbesByATimeOut)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 0);
    probeFails();
    EXPECT_EQ(5 * TIME_OUT, now);
    EXPECT_EQ(6 * TIME_OUT, nextProbe());
    EXPECT_EQ(int(NONE), askedAt(6 * TIME_OUT - 1));
    EXPECT_EQ(int(OTHER_STATION), askedAt(6 * TIME_OUT));
}

TEST_F(StationWatchTest, ShortProbesFollowWithoutAPause)
{
    watch.expect(STATION, 0);
    watch.expect(OTHER_STATION, 0);
    askedAt(0);
    watch.gaveUp(STATION, NOT_HEARD, 125);
    EXPECT_EQ(int(OTHER_STATION), askedAt(125));
}

TEST_F(StationWatchTest, AllAreSilentWhenEachExpectedStationIs)
{
    EXPECT_FALSE(watch.areAllSilent());
    watch.expect(STATION, 0);
    watch.expect(OTHER_STATION, 0);
    for (const int station : {int(STATION), int(OTHER_STATION)}) {
        watch.gaveUp(station, NOT_HEARD, 1);
        EXPECT_FALSE(watch.areAllSilent());
        watch.gaveUp(station, NOT_HEARD, 2);
    }
    EXPECT_TRUE(watch.areAllSilent());
    watch.answered(STATION);
    EXPECT_FALSE(watch.areAllSilent());
}

TEST_F(StationWatchTest, NewLinkProbesEveryStation)
{
    goesSilent();
    watch.answered(OTHER_STATION);
    watch.startAnew(50);
    for (const int station : {int(STATION), int(OTHER_STATION)}) {
        EXPECT_FALSE(watch.isSilent(station));
        EXPECT_FALSE(watch.isPolled(station));
        const std::optional<StationWatch::Probe> probe = watch.takeDueProbe(50);
        ASSERT_TRUE(probe);
        EXPECT_EQ(station, probe->station);
        EXPECT_EQ(TIME_OUT / 8, probe->wait);
    }
    EXPECT_EQ(int(NONE), askedAt(1000 * TIME_OUT));
}

TEST_F(StationWatchTest, ProbeLostWithALinkIsRepeated)
{
    goesSilent();
    askedAt(4 * TIME_OUT);
    watch.startAnew(5 * TIME_OUT);
    EXPECT_EQ(int(STATION), askedAt(5 * TIME_OUT));
}
