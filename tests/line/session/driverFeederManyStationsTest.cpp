#include "sessionBench.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <set>
#include <utility>

// Many stations on a line, some of them silent from the start. A time-out is 500 ms.

namespace {

enum {
    TIME_OUT = 500000,
    STATIONS = 31,
    DEAD = 15,
    NUMBER = 3010,
    MS = SessionBench::MS,
    SECOND = SessionBench::SECOND
};

/// A line with 31 stations. Each station has one word; the tags have the order of the stations.
class Line
{
public:
    explicit Line(const std::set<int>& dead) : bench(TIME_OUT), m_dead(dead)
    {
        std::vector<Tag> tags;
        for (int station = 1; station <= STATIONS; ++station) {
            PlcModel::Station& memory = bench.plc.station(station);
            memory.silent = dead.count(station) != 0;
            memory.holding[NUMBER] = 100 + station;
            tags.push_back(tagOf("MW", NUMBER, Tag::UINT16, station));
        }
        bench.poll(tags);
    }

    bool showsAllThatLive()
    {
        for (int station = 1; station <= STATIONS; ++station) {
            if (m_dead.count(station) == 0 && bench.shown(station - 1) != 100 + station)
                return false;
        }
        return true;
    }

    SessionBench bench;

private:
    const std::set<int> m_dead;
};

std::set<int> everyOther()
{
    std::set<int> dead;
    for (int i = 1; i <= DEAD; ++i)
        dead.insert(2 * i);
    return dead;
}

std::set<int> theFirst()
{
    std::set<int> dead;
    for (int i = 1; i <= DEAD; ++i)
        dead.insert(i);
    return dead;
}

std::set<int> drawn(std::mt19937& random)
{
    std::set<int> dead;
    while (dead.size() < DEAD)
        dead.insert(1 + int(random() % unsigned(STATIONS)));
    return dead;
}

/// Milliseconds until the values of all answering stations are shown.
double msUntilAllAreShown(const std::set<int>& dead)
{
    Line line(dead);
    EXPECT_TRUE(line.bench.runUntil([&] { return line.showsAllThatLive(); }, 60LL * SECOND));
    return double(line.bench.now) / MS;
}

} // namespace

TEST(DriverFeederManyStations, AnsweringStationsAreShownWithinTwoSecondsBesideFifteenSilentStations)
{
    double longest = std::max(msUntilAllAreShown(theFirst()), msUntilAllAreShown(everyOther()));
    std::mt19937 random(4);
    for (int i = 0; i < 50; ++i)
        longest = std::max(longest, msUntilAllAreShown(drawn(random)));
    std::printf("16 living stations beside 15 dead ones are shown after %.0f ms at most\n",
                longest);
    EXPECT_LE(longest, 2000);
}

TEST(DriverFeederManyStations, AnsweringStationsHaveHalfOfTheTimeDuringTheSearch)
{
    Line line(everyOther());
    EXPECT_TRUE(line.bench.runUntil([&] { return line.showsAllThatLive(); }, 2LL * SECOND));
    const int before = line.bench.sink.tags[0].reads;
    line.bench.run(10LL * SECOND);
    // 16 words take 128 ms.
    EXPECT_GE(line.bench.sink.tags[0].reads - before, 10000 / 2 / 128);
}

TEST(DriverFeederManyStations, EachSilentStationIsReportedOnceAndSoon)
{
    Line line(everyOther());
    const auto areAllTold = [&] {
        return std::all_of(line.bench.sink.badCounts.begin(), line.bench.sink.badCounts.end(),
                           [](const auto& entry) { return entry.second > 0; }) &&
               line.bench.sink.badCounts.size() == size_t(DEAD);
    };
    EXPECT_TRUE(line.bench.runUntil(areAllTold, 20LL * SECOND));
    EXPECT_TRUE(line.showsAllThatLive());
    for (const int station : everyOther()) {
        EXPECT_FALSE(line.bench.sink.tags[station - 1].good);
        EXPECT_EQ(1, line.bench.sink.badCounts[station - 1]) << station;
    }
}

TEST(DriverFeederManyStations, SilentStationsCostAnsweringStationsLittleTime)
{
    const auto readsOfLiving = [](const std::set<int>& dead, bool areTheyThere) {
        SessionBench bench(TIME_OUT);
        std::vector<Tag> tags;
        for (int station = 1; station <= STATIONS; ++station) {
            const bool isDead = dead.count(station) != 0;
            if (isDead && !areTheyThere) continue;
            bench.plc.station(station).silent = isDead;
            tags.push_back(tagOf("MW", NUMBER, Tag::UINT16, station));
        }
        bench.poll(tags);
        bench.run(600LL * SECOND);
        int reads = 0;
        for (const auto& [tag, note] : bench.sink.tags)
            reads += note.reads;
        return reads;
    };
    // Each silent station is probed once in 121 time-outs.
    const double share = double(readsOfLiving({7}, true)) / double(readsOfLiving({7}, false));
    EXPECT_GE(share, 0.98);
    std::printf("one dead station of 31: the others keep %.1f %% of their exchanges\n",
                100 * share);
}

TEST(DriverFeederManyStations, AllAreSilentFromTheLastGiveUpToTheFirstAnswer)
{
    SessionBench bench;
    bench.pollTwoStations(NUMBER);
    bench.plc.station(1).silent = true;
    bench.run(10LL * SECOND);
    EXPECT_FALSE(bench.feeder.areAllSilent());
    bench.plc.station(2).silent = true;
    bench.run(10LL * SECOND);
    EXPECT_TRUE(bench.feeder.areAllSilent());
    bench.plc.station(1).silent = false;
    EXPECT_TRUE(bench.runUntil([&] { return !bench.feeder.areAllSilent(); }, 13LL * SECOND));
    bench.run(SECOND);
    EXPECT_TRUE(bench.sink.tags[0].good);
}

TEST(DriverFeederManyStations, AllMayBeSilentFromTheStart)
{
    SessionBench bench;
    bench.plc.station(1).silent = true;
    bench.poll({tagOf("MW", NUMBER), tagOf("MW", NUMBER, Tag::UINT16, 2)});
    EXPECT_FALSE(bench.feeder.areAllSilent());
    bench.run(2LL * SECOND);
    EXPECT_TRUE(bench.feeder.areAllSilent());
}

TEST(DriverFeederManyStations, NoneIsSilentWithoutPolling)
{
    SessionBench bench;
    bench.run(SECOND);
    EXPECT_FALSE(bench.feeder.areAllSilent());
    bench.writeWord(1, NUMBER, 5, 9);
    ASSERT_TRUE(bench.runUntilEnded(1));
    EXPECT_FALSE(bench.feeder.areAllSilent());
}

TEST(DriverFeederManyStations, LateAnswerToARequestEndsSilenceAtOnce)
{
    SessionBench bench;
    bench.pollTwoStations(NUMBER);
    const qint64 trouble = bench.now;
    const qint64 cameBack = trouble + SECOND;
    bool isDelayed = false;
    // One answer is a second late. The answers to all requests in between are lost.
    bench.line.disturb = [&](const QByteArray& request, ModelLine::Coming& coming) {
        if (request.at(0) != 2 || bench.now >= cameBack) return;
        if (std::exchange(isDelayed, true))
            coming.bytes.clear();
        else
            coming.delay = cameBack - bench.now;
    };
    bench.run(SECOND - MS);
    EXPECT_TRUE(isDelayed);
    EXPECT_FALSE(bench.sink.tags[1].good);
    EXPECT_TRUE(bench.runUntil([&] { return bench.sink.tags[1].good; }, 200 * MS));
}

TEST(DriverFeederManyStations, LateAnswerEndsSilenceAtOnce)
{
    for (const qint64 stall : {2, 5, 11, 30, 61}) {
        SessionBench bench;
        bench.pollTwoStations(NUMBER);
        bench.line.stall = {2, bench.now, bench.now + stall * SECOND};
        bench.run(stall * SECOND - MS);
        EXPECT_FALSE(bench.sink.tags[1].good) << stall;
        // The answers to the requests of the stall come one after the other.
        EXPECT_TRUE(bench.runUntil([&] { return bench.sink.tags[1].good; }, 200 * MS)) << stall;
    }
}
