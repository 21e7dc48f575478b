#include "recipeJobs.h"
#include "sessionBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

// Stations that do not answer: they are asked from time to time, and cost the others little. A
// time-out is 100 ms unless a test says otherwise.

namespace {

enum {
    NUMBER = 3010,
    JOB = 1,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND,
    LONGEST_PAUSE = 120 ///< in time-outs, between two probes of a silent station
};

const QString LOST = QLatin1String("link lost: unplugged");

} // namespace

class DriverFeederSilentStationTest : public testing::Test
{
protected:
    SessionBench bench;
};

TEST_F(DriverFeederSilentStationTest, ASilentStationsTagsAreBadAndTheOthersGood)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_EQ(QLatin1String("station 2 does not answer"), bench.sink.tags[1].trouble);
}

TEST_F(DriverFeederSilentStationTest, ASilentStationIsAskedAfterGrowingPauses)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    std::vector<qint64> asked;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming&) {
        if (request.at(0) == 2) asked.push_back(bench.now);
    };
    bench.run(60 * SECOND);
    // Three attempts, then pauses of 4, 20, 40, 80, 120 time-outs, each from the end of the last.
    ASSERT_GE(asked.size(), 9u);
    const int pauses[] = {4, 20, 40, 80, 120, 120};
    for (size_t i = 0; i < 6; ++i) {
        const double pause = double(asked[3 + i] - asked[2 + i]) / SessionBench::ANSWER - 1;
        EXPECT_NEAR(pauses[i], pause, 0.3) << i;
    }
}

TEST(DriverFeederSilentStation, OnANetworkItHoldsUpTheOthersForOneTimeOutAtATime)
{
    // All its probes are fences, however long its own blocks are.
    SessionBench bench(SessionBench::ANSWER, LineTiming::network());
    bench.plc.station(2).silent = true;
    std::vector<Tag> tags = {tagOf("MW", NUMBER)};
    for (int i = 0; i < 125; ++i)
        tags.push_back(tagOf("MW", NUMBER + i, Tag::UINT16, 2));
    qint64 askedAt = 0;
    qint64 longestBreak = 0;
    int asked = 0;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming&) {
        asked += request.at(0) == 2 ? 1 : 0;
        if (request.at(0) != 1) return;
        longestBreak = std::max(longestBreak, bench.now - askedAt);
        askedAt = bench.now;
    };
    bench.poll(tags);
    bench.run(60 * SECOND);
    EXPECT_GE(asked, 5);
    EXPECT_EQ(0, bench.sentWith(2, 3));
    EXPECT_LE(longestBreak, SessionBench::ANSWER + 10 * MS);
}

TEST_F(DriverFeederSilentStationTest, ARecipeThatItDoesNotAnswerIsOneFailureWhateverItsAttempts)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(500 * MS);
    ASSERT_FALSE(bench.sink.tags[1].good);
    bench.feeder.addRecipe(upload(JOB, {tagOf("MW", 3100, Tag::UINT16, 2)}));
    ASSERT_TRUE(bench.runUntilEnded(JOB));
    const qint64 failedAt = bench.now;
    qint64 askedAt = -1;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming&) {
        if (request.at(0) == 2 && askedAt < 0) askedAt = bench.now;
    };
    bench.run(10 * SECOND);
    // The second pause behind a silent station's failures is 20 time-outs.
    EXPECT_NEAR(20, double(askedAt - failedAt) / SessionBench::ANSWER, 0.3);
}

TEST_F(DriverFeederSilentStationTest, ASilentStationComesBackByItselfWithinTheLongestPause)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(300 * SECOND);
    EXPECT_FALSE(bench.sink.tags[1].good);
    bench.plc.station(2).silent = false;
    const auto isBack = [this] { return bench.sink.tags[1].good; };
    EXPECT_TRUE(bench.runUntil(isBack, (LONGEST_PAUSE + 2) * qint64(SessionBench::ANSWER)));
    bench.sink.tags[1].reads = 0;
    bench.run(SECOND);
    EXPECT_GE(bench.sink.tags[1].reads, 40);
}

TEST_F(DriverFeederSilentStationTest,
       AValueThatChangedWhileItsStationWasSilentIsShownWithTheFirstAnswer)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    bench.plc.station(2).holding[NUMBER] = 99;
    bench.plc.station(2).silent = false;
    ASSERT_TRUE(bench.runUntil([this] { return bench.sink.tags[1].good; }));
    EXPECT_EQ(99, bench.shown(1));
    bench.run(SECOND);
    EXPECT_EQ(99, bench.shown(1));
}

TEST_F(DriverFeederSilentStationTest, ASilentStationIsAskedAtOnceWhenTheLinkIsBack)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(300 * SECOND);
    bench.loseLink(LOST);
    bench.plc.station(2).silent = false;
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[1].good);
}

TEST_F(DriverFeederSilentStationTest, AStationThatIsStillSilentAfterALossSaysSo)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(10 * SECOND);
    bench.loseLink(LOST);
    bench.bringLinkBack();
    bench.run(SECOND);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_EQ(QLatin1String("station 2 does not answer"), bench.sink.tags[1].trouble);
}

TEST_F(DriverFeederSilentStationTest, AllStationsSilentLeaveTheLineQuietAndComeBack)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(1).silent = true;
    bench.plc.station(2).silent = true;
    bench.run(300 * SECOND);
    const size_t sent = bench.sent.size();
    const size_t fences = bench.fences.size();
    bench.run(60 * SECOND);
    // Each is asked every 12 s.
    EXPECT_LE(bench.fences.size(), fences + 12);
    EXPECT_GE(bench.fences.size(), fences + 8);
    EXPECT_EQ(sent, bench.sent.size());
    bench.plc.station(1).silent = false;
    bench.plc.station(2).silent = false;
    bench.run(15 * SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
    EXPECT_TRUE(bench.sink.tags[1].good);
}

TEST_F(DriverFeederSilentStationTest, IsProbedOnceAtATimeWhileTheLinkComesAndGoes)
{
    // A new link begins with one probe of an eighth of a time-out, and one more a time-out later.
    enum { LOSSES = 40, FIRST_PROBES_ALONE = SessionBench::ANSWER / (5 * MS) };
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    std::vector<qint64> asked;
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming&) {
        if (request.at(0) == 2) asked.push_back(bench.now);
    };
    int probes = 0;
    for (int i = 0; i < LOSSES; ++i) {
        // Before, in and after the time-outs of both.
        bench.loseLink(LOST);
        bench.run(7 * MS);
        bench.bringLinkBack();
        asked.clear();
        bench.run(i * 5 * MS);
        EXPECT_LE(asked.size(), i < FIRST_PROBES_ALONE ? 1u : 2u) << i;
        probes += int(asked.size());
    }
    EXPECT_GE(probes, LOSSES / 2);
    // On one link, probes lie a time-out and the shortest pause apart.
    asked.clear();
    bench.run(60 * SECOND);
    ASSERT_GE(asked.size(), 4u);
    for (size_t i = 1; i < asked.size(); ++i)
        EXPECT_GE(asked[i] - asked[i - 1], 5 * qint64(SessionBench::ANSWER)) << i;
}

TEST_F(DriverFeederSilentStationTest, ComesBackByItselfThoughTheLinkCameAndWentWithItsProbes)
{
    bench.pollTwoStations(NUMBER);
    bench.plc.station(2).silent = true;
    bench.run(2 * SECOND);
    for (int i = 0; i < 20; ++i) {
        const size_t sent = bench.fences.size();
        bench.bringLinkBack();
        // The link goes while the probe is on its way.
        ASSERT_TRUE(bench.runUntil(
            [&] { return bench.fences.size() > sent && bench.fences.back().at(0) == 2; }, SECOND));
        bench.loseLink(LOST);
        bench.run(300 * MS);
    }
    bench.bringLinkBack();
    bench.run(2 * SECOND);
    EXPECT_FALSE(bench.sink.tags[1].good);
    bench.plc.station(2).silent = false;
    const auto isBack = [this] { return bench.sink.tags[1].good; };
    EXPECT_TRUE(bench.runUntil(isBack, (LONGEST_PAUSE + 2) * qint64(SessionBench::ANSWER)));
}

namespace {

/// Good exchanges of the stations other than the silent one in ten virtual minutes.
int exchangesOfOthers(bool oneIsSilent)
{
    enum { STATIONS = 8, SILENT = 5, MINUTES = 10, DEFAULT_ANSWER = 500000 };
    SessionBench bench(DEFAULT_ANSWER);
    std::vector<Tag> tags;
    for (int station = 1; station <= STATIONS; ++station) {
        bench.plc.station(station);
        tags.push_back(tagOf("MW", NUMBER, Tag::UINT16, station));
    }
    // For comparison the station is not there at all.
    if (!oneIsSilent) tags.erase(tags.begin() + SILENT - 1);
    bench.plc.station(SILENT).silent = oneIsSilent;
    bench.poll(tags);
    bench.run(MINUTES * 60LL * SECOND);
    int good = 0;
    for (const RecordingSink::ExchangeNote& exchange : bench.sink.exchanges)
        good += exchange.result == REPLY_ACCEPTED ? 1 : 0;
    return good;
}

} // namespace

TEST(DriverFeederSilentStation, LeavesTheSevenOthersNinetyFivePercentOfTheirRate)
{
    const int alone = exchangesOfOthers(false);
    const int besides = exchangesOfOthers(true);
    const double share = double(besides) / double(alone);
    std::printf("one silent station of eight: the others keep %.1f %% of their exchanges\n",
                100 * share);
    EXPECT_GT(alone, 50000);
    EXPECT_GE(share, 0.95);
}
