#include "session/stationWatch.h"

#include <gtest/gtest.h>

// Times are microseconds of a clock that only the tests move. Pauses are counted in time-outs.

namespace {

enum { TIME_OUT = 1000, STATION = 7, OTHER_STATION = 8, NOT_HEARD = 0, HEARD = 1, NONE = -1 };

} // namespace

class StationWatchTest : public testing::Test
{
protected:
    StationWatchTest() : watch(TIME_OUT) {}

    /// @return the station that is due to be asked by then, or NONE
    int askedAt(qint64 time)
    {
        const std::optional<StationWatch::Probe> probe = watch.takeDueProbe(time);
        return probe ? probe->station : int(NONE);
    }

    /// @return how long the due station's answer is waited for, or NONE
    qint64 waitAt(qint64 time)
    {
        const std::optional<StationWatch::Probe> probe = watch.takeDueProbe(time);
        return probe ? probe->wait : qint64(NONE);
    }

    qint64 nextProbe() const
    {
        return watch.nextProbe().value_or(NONE);
    }

    /// The station's next probe goes out when it is due, and is not answered within a time-out.
    void probeFails(bool heard = NOT_HEARD)
    {
        now = nextProbe();
        ASSERT_EQ(int(STATION), askedAt(now));
        now += TIME_OUT;
        watch.gaveUp(STATION, heard, now);
    }

    /// The station answered until now and does no more.
    void goesSilent()
    {
        ASSERT_TRUE(watch.gaveUp(STATION, NOT_HEARD, now));
    }

    StationWatch watch;
    qint64 now = 0;
};

TEST_F(StationWatchTest, AStationThatWasNeverExpectedIsPolledAndNotSilent)
{
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, AnExpectedStationIsAskedAtOnceAndNotPolledBeforeItAnswers)
{
    watch.expect(STATION, 300);
    EXPECT_FALSE(watch.isPolled(STATION));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_EQ(300, nextProbe());
    EXPECT_EQ(int(NONE), askedAt(299));
    EXPECT_EQ(int(STATION), askedAt(300));
}

TEST_F(StationWatchTest, TheFirstAnswerOfAnExpectedStationIsWaitedForAnEighthOfTheTimeOut)
{
    watch.expect(STATION, 0);
    EXPECT_EQ(TIME_OUT / 8, waitAt(0));
}

TEST_F(StationWatchTest, AnExpectedStationThatAnswersIsPolledAndAskedNoMore)
{
    watch.expect(STATION, 0);
    askedAt(0);
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, AnExpectedStationThatMissesItsFirstProbeIsAskedAgainWithTheWholeTimeOut)
{
    watch.expect(STATION, 0);
    askedAt(0);
    EXPECT_FALSE(watch.gaveUp(STATION, NOT_HEARD, 125));
    EXPECT_FALSE(watch.isSilent(STATION));
    EXPECT_FALSE(watch.isPolled(STATION));
    EXPECT_EQ(125 + TIME_OUT, nextProbe());
    EXPECT_EQ(0, waitAt(125 + TIME_OUT));
}

TEST_F(StationWatchTest, AnExpectedStationThatMissesBothProbesIsSilent)
{
    watch.expect(STATION, 0);
    probeFails();
    now = nextProbe();
    askedAt(now);
    EXPECT_TRUE(watch.gaveUp(STATION, NOT_HEARD, now + TIME_OUT));
    EXPECT_TRUE(watch.isSilent(STATION));
    EXPECT_EQ(now + 5 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, NoiseInPlaceOfBothFirstAnswersMakesAStationSilentToo)
{
    watch.expect(STATION, 0);
    probeFails(HEARD);
    EXPECT_FALSE(watch.isSilent(STATION));
    probeFails(HEARD);
    EXPECT_TRUE(watch.isSilent(STATION));
}

TEST_F(StationWatchTest, AnAnswerToTheSecondProbeOrAfterItBringsTheStation)
{
    watch.expect(STATION, 0);
    probeFails();
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_TRUE(watch.isPolled(STATION));
}

TEST_F(StationWatchTest, ALateAnswerBringsASilentStationAheadOfItsProbe)
{
    goesSilent();
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_TRUE(watch.isPolled(STATION));
    EXPECT_EQ(int(NONE), askedAt(1000 * TIME_OUT));
}

TEST_F(StationWatchTest, OneGiveUpWithoutAByteMakesAStationSilent)
{
    EXPECT_TRUE(watch.gaveUp(STATION, NOT_HEARD, 0));
    EXPECT_TRUE(watch.isSilent(STATION));
    EXPECT_FALSE(watch.isPolled(STATION));
}

TEST_F(StationWatchTest, OneSilentStationLeavesTheOthersAlone)
{
    goesSilent();
    EXPECT_FALSE(watch.isSilent(OTHER_STATION));
    EXPECT_TRUE(watch.isPolled(OTHER_STATION));
}

TEST_F(StationWatchTest, NoiseMakesAStationSilentOnlyAtTheThirdGiveUpInARow)
{
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 0));
    EXPECT_FALSE(watch.gaveUp(STATION, HEARD, 1));
    EXPECT_TRUE(watch.isPolled(STATION));
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
    goesSilent();
    EXPECT_FALSE(watch.gaveUp(STATION, NOT_HEARD, 1));
}

TEST_F(StationWatchTest, ASilentStationIsAskedFirstAfterFourTimeOutsAndWithTheWholeTimeOut)
{
    watch.gaveUp(STATION, NOT_HEARD, 500);
    EXPECT_EQ(int(NONE), askedAt(500 + 4 * TIME_OUT - 1));
    EXPECT_EQ(0, waitAt(500 + 4 * TIME_OUT));
}

TEST_F(StationWatchTest, ADueProbeIsTakenOnce)
{
    goesSilent();
    askedAt(4 * TIME_OUT);
    EXPECT_EQ(int(NONE), askedAt(1000 * TIME_OUT));
    EXPECT_EQ(NONE, nextProbe());
}

TEST_F(StationWatchTest, ThePausesGrowUpToAHundredAndTwentyTimeOuts)
{
    goesSilent();
    for (const int pause : {4, 20, 40, 80, 120, 120}) {
        EXPECT_EQ(now + pause * TIME_OUT, nextProbe());
        probeFails();
    }
}

TEST_F(StationWatchTest, AStationThatAnswersIsToldOfOnce)
{
    goesSilent();
    EXPECT_TRUE(watch.answered(STATION));
    EXPECT_FALSE(watch.answered(STATION));
}

TEST_F(StationWatchTest, AStationThatCameBackStartsWithTheShortestPauseAgain)
{
    goesSilent();
    probeFails();
    probeFails();
    watch.answered(STATION);
    goesSilent();
    EXPECT_EQ(now + 4 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, TheNextProbeIsTheEarliestOfAllStations)
{
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 300);
    watch.gaveUp(STATION, NOT_HEARD, 100);
    EXPECT_EQ(100 + 4 * TIME_OUT, nextProbe());
    EXPECT_EQ(int(STATION), askedAt(200 + 4 * TIME_OUT));
    EXPECT_EQ(300 + 4 * TIME_OUT, nextProbe());
}

TEST_F(StationWatchTest, OfSeveralDueStationsTheOneThatHasWaitedLongestIsAsked)
{
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 100);
    watch.gaveUp(STATION, NOT_HEARD, 300);
    EXPECT_EQ(int(OTHER_STATION), askedAt(1000 * TIME_OUT));
    EXPECT_EQ(int(STATION), askedAt(1000 * TIME_OUT));
}

TEST_F(StationWatchTest, AStationThatWasNeverHeardIsAskedAheadOfASilentOne)
{
    goesSilent();
    watch.expect(OTHER_STATION, 5 * TIME_OUT);
    EXPECT_EQ(int(OTHER_STATION), askedAt(5 * TIME_OUT));
    EXPECT_EQ(int(STATION), askedAt(5 * TIME_OUT));
}

TEST_F(StationWatchTest, BehindAProbeThatFailsTheOthersHaveATimeOutForThemselves)
{
    watch.gaveUp(STATION, NOT_HEARD, 0);
    watch.gaveUp(OTHER_STATION, NOT_HEARD, 0);
    probeFails();
    EXPECT_EQ(5 * TIME_OUT, now);
    EXPECT_EQ(6 * TIME_OUT, nextProbe());
    EXPECT_EQ(int(NONE), askedAt(6 * TIME_OUT - 1));
    EXPECT_EQ(int(OTHER_STATION), askedAt(6 * TIME_OUT));
}

TEST_F(StationWatchTest, TheShortProbesOfStationsThatWereNeverHeardFollowOneAnother)
{
    watch.expect(STATION, 0);
    watch.expect(OTHER_STATION, 0);
    askedAt(0);
    watch.gaveUp(STATION, NOT_HEARD, 125);
    EXPECT_EQ(int(OTHER_STATION), askedAt(125));
}

TEST_F(StationWatchTest, AllStationsAreSilentWhenEveryExpectedOneIs)
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

TEST_F(StationWatchTest, EveryStationIsAskedAnewWhenTheLinkIsBack)
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

TEST_F(StationWatchTest, AProbeThatWentWithTheOldLinkIsTakenAgainOnTheNewOne)
{
    goesSilent();
    askedAt(4 * TIME_OUT);
    watch.startAnew(5 * TIME_OUT);
    EXPECT_EQ(int(STATION), askedAt(5 * TIME_OUT));
}
