#include "session/pollSchedule.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <set>
#include <string>

// Which block is read next, on a virtual clock in milliseconds. A block is named by a letter.

namespace {

enum { MS = 1000, MOST_STEPS = 100000 };

ReadBlock blockOf(char name, const char* rate = "fast", int station = 1)
{
    ReadBlock block;
    block.station = station;
    block.area = QLatin1String("MW");
    block.number = 3000 + name;
    block.count = 1;
    EXPECT_TRUE(takeRate(QLatin1String(rate), block.rate));
    return block;
}

char nameOf(const ReadBlock& block)
{
    return char(block.number - 3000);
}

} // namespace

class PollScheduleTest : public testing::Test
{
protected:
    void set(const std::vector<ReadBlock>& blocks, qint64 paceMs = 0)
    {
        schedule.set(blocks, paceMs * MS);
    }

    /// Reads the block that is due. Each read takes readMs.
    /// @return its name; '-': none is due
    char read()
    {
        const std::optional<int> due = schedule.due(now);
        if (!due) return '-';
        const char name = nameOf(schedule.block(*due));
        schedule.began(*due, now);
        starts[name].push_back(now / MS);
        now += readMs * MS;
        if (unanswered.count(name) == 0) schedule.answered(*due);
        return name;
    }

    std::string read(int times)
    {
        std::string names;
        while (times-- > 0)
            names += read();
        return names;
    }

    /// Reads all blocks when they are due, and waits between them.
    void runUntil(qint64 endMs)
    {
        for (int steps = 0; now < endMs * MS; ++steps) {
            ASSERT_LT(steps, int(MOST_STEPS)) << "no time passes";
            if (read() != '-') continue;
            const std::optional<qint64> next = schedule.nextAt();
            ASSERT_TRUE(!next || *next > now) << "nothing is due, but there is no wait";
            now = std::min(next.value_or(endMs * MS), endMs * MS);
        }
    }

    void replace(char name, const std::vector<ReadBlock>& parts)
    {
        for (int i = 0;; ++i) {
            if (nameOf(schedule.block(i)) == name) return schedule.replace(i, parts);
        }
    }

    std::set<int> silent;
    std::set<char> unanswered;
    PollSchedule schedule{[this](int station) { return silent.count(station) == 0; }};
    qint64 now = 0;
    qint64 readMs = 0;
    std::map<char, std::vector<qint64>> starts;
};

using Times = std::vector<qint64>;

TEST_F(PollScheduleTest, NothingIsDueWithoutBlocks)
{
    set({});
    EXPECT_EQ('-', read());
    EXPECT_EQ(std::nullopt, schedule.nextAt());
}

TEST_F(PollScheduleTest, FastBlocksTakeTurnsInTheOrderOfTheDriver)
{
    ReadBlock inputs = blockOf('D');
    inputs.area = QLatin1String("IW");
    set({inputs, blockOf('C', "fast", 2), blockOf('B'), blockOf('A')});
    EXPECT_EQ("ABDCABDC", read(8));
}

TEST_F(PollScheduleTest, CycleBeginsAPaceAfterTheCycleBefore)
{
    set({blockOf('A'), blockOf('B')}, 100);
    readMs = 10;
    runUntil(350);
    EXPECT_EQ((Times{0, 100, 200, 300}), starts['A']);
    EXPECT_EQ((Times{10, 110, 210, 310}), starts['B']);
}

TEST_F(PollScheduleTest, CycleLongerThanThePaceIsFollowedAtOnce)
{
    set({blockOf('A'), blockOf('B')}, 100);
    readMs = 70;
    runUntil(500);
    EXPECT_EQ((Times{0, 140, 280, 420}), starts['A']);
}

TEST_F(PollScheduleTest, LateCycleIsNotMadeUpFor)
{
    set({blockOf('A')}, 100);
    read();
    now = 350 * MS; // the line was taken by writes
    runUntil(700);
    EXPECT_EQ((Times{0, 350, 450, 550, 650}), starts['A']);
}

TEST_F(PollScheduleTest, IntervalsCountFromStartToStart)
{
    set({blockOf('S', "10s")});
    readMs = 300;
    runUntil(35000);
    EXPECT_EQ((Times{0, 10000, 20000, 30000}), starts['S']);
}

TEST_F(PollScheduleTest, LateReadDoesNotShiftTheLaterTimes)
{
    set({blockOf('S', "100ms")});
    read();
    now = 130 * MS;
    runUntil(350);
    EXPECT_EQ((Times{0, 130, 200, 300}), starts['S']);
}

TEST_F(PollScheduleTest, MissedTimesAreLeftOut)
{
    set({blockOf('S', "100ms")});
    read();
    now = 520 * MS;
    runUntil(750);
    EXPECT_EQ((Times{0, 520, 600, 700}), starts['S']);
}

TEST_F(PollScheduleTest, IntervalDoesNotWaitForThePace)
{
    set({blockOf('A'), blockOf('S', "300ms")}, 1000);
    runUntil(1250);
    EXPECT_EQ((Times{0, 1000}), starts['A']);
    EXPECT_EQ((Times{0, 300, 600, 900, 1200}), starts['S']);
}

TEST_F(PollScheduleTest, IntervalDoesNotWaitForTheEndOfALongCycle)
{
    set({blockOf('A'), blockOf('B'), blockOf('C'), blockOf('D'), blockOf('S', "350ms")});
    readMs = 100;
    EXPECT_EQ("SABCSDA", read(7));
}

TEST_F(PollScheduleTest, FastBlocksHaveEverySecondTurnWhenIntervalsTakeTheLine)
{
    set({blockOf('A'), blockOf('B'), blockOf('R', "1ms"), blockOf('S', "1ms")});
    readMs = 100;
    EXPECT_EQ("RASBRASB", read(8));
}

TEST_F(PollScheduleTest, OnceIsReadUntilItIsAnswered)
{
    set({blockOf('A'), blockOf('O', "once")}, 100);
    unanswered = {'O'};
    EXPECT_EQ("OAOOO", read(5));
    unanswered.clear();
    EXPECT_EQ("O--", read(3));
    EXPECT_EQ(100 * MS, schedule.nextAt());
    now = 100 * MS;
    EXPECT_EQ("A-", read(2));
}

TEST_F(PollScheduleTest, NewConnectionReadsEverythingAtOnce)
{
    set({blockOf('A'), blockOf('S', "10s"), blockOf('O', "once")}, 1000);
    EXPECT_EQ("OAS-", read(4));
    now = 500 * MS;
    schedule.startAnew();
    EXPECT_EQ("OAS-", read(4));
    runUntil(12000);
    EXPECT_EQ((Times{0, 500, 10500}), starts['S']);
    EXPECT_EQ((Times{0, 500}), starts['O']);
    EXPECT_EQ(1500, starts['A'][2]);
}

TEST_F(PollScheduleTest, SilentStationIsLeftOut)
{
    set({blockOf('A'), blockOf('B', "fast", 2), blockOf('S', "10ms", 2), blockOf('O', "once", 2)},
        10);
    silent = {2};
    runUntil(35);
    EXPECT_EQ((Times{0, 10, 20, 30}), starts['A']);
    EXPECT_EQ(1u, starts.size());
    silent = {1, 2};
    EXPECT_EQ('-', read());
    EXPECT_EQ(std::nullopt, schedule.nextAt());
}

TEST_F(PollScheduleTest, StationThatComesBackIsReadAtOnce)
{
    set({blockOf('A'), blockOf('B', "fast", 2), blockOf('S', "10s", 2), blockOf('O', "once", 2)},
        60000);
    runUntil(2000);
    silent = {2};
    runUntil(3000);
    silent.clear();
    schedule.stationCameBack(2);
    runUntil(70000);
    EXPECT_EQ((Times{0, 60000}), starts['A']);
    EXPECT_EQ((Times{0, 3000, 60000}), starts['B']);
    EXPECT_EQ((Times{0, 3000, 13000, 23000, 33000, 43000, 53000, 63000}), starts['S']);
    EXPECT_EQ((Times{0, 3000}), starts['O']);
}

TEST_F(PollScheduleTest, StationThatAnswersFirstBeginsTheCycle)
{
    set({blockOf('A'), blockOf('B', "fast", 2)}, 1000);
    silent = {1, 2};
    EXPECT_EQ('-', read());
    now = 5 * MS;
    silent = {1};
    schedule.stationCameBack(2);
    EXPECT_EQ("B-", read(2));
    now = 8 * MS;
    silent = {};
    schedule.stationCameBack(1);
    EXPECT_EQ("A-", read(2));
    runUntil(1100);
    EXPECT_EQ((Times{5, 1005}), starts['B']);
    EXPECT_EQ((Times{8, 1005}), starts['A']);
}

TEST_F(PollScheduleTest, PartsOfABlockAreReadInItsPlaceAtOnce)
{
    set({blockOf('A'), blockOf('M'), blockOf('Z')}, 100);
    EXPECT_EQ("AM", read(2));
    replace('M', {blockOf('K'), blockOf('L')});
    EXPECT_EQ("KLZ-", read(4));
    now = 100 * MS;
    EXPECT_EQ("AKLZ-", read(5));
}

TEST_F(PollScheduleTest, PartsOfTheLastBlockProlongTheCycle)
{
    set({blockOf('A'), blockOf('M')}, 100);
    EXPECT_EQ("AM-", read(3));
    now = 50 * MS;
    replace('M', {blockOf('K'), blockOf('L')});
    EXPECT_EQ("KL-", read(3));
    runUntil(150);
    EXPECT_EQ((Times{0, 100}), starts['A']);
    EXPECT_EQ((Times{50, 100}), starts['K']);
}

TEST_F(PollScheduleTest, PartsKeepTheTimesOfTheirBlock)
{
    set({blockOf('S', "1s")});
    read();
    now = 20 * MS;
    replace('S', {blockOf('K', "1s"), blockOf('L', "1s")});
    runUntil(2500);
    EXPECT_EQ((Times{20, 1000, 2000}), starts['K']);
    EXPECT_EQ((Times{20, 1000, 2000}), starts['L']);
}

TEST_F(PollScheduleTest, EveryBlockKeepsItsRateAmongRandomBlocks)
{
    std::mt19937 random(5);
    for (int round = 0; round < 50; ++round) {
        std::vector<ReadBlock> blocks;
        for (char name = 'A'; name < 'A' + 5; ++name)
            blocks.push_back(blockOf(name));
        std::map<char, qint64> intervals;
        for (char name = 'a'; name < 'a' + 5; ++name) {
            intervals[name] = 200 + qint64(random() % 1000);
            blocks.push_back(blockOf(name, (std::to_string(intervals[name]) + "ms").c_str()));
        }
        const qint64 pace = qint64(random() % 300);
        set(blocks, pace);
        now = 0;
        readMs = 1 + qint64(random() % 10);
        starts.clear();
        ASSERT_NO_FATAL_FAILURE(runUntil(20000));
        // A turn waits for five other intervals and five fast blocks at most: less than 200 ms.
        for (const auto& [name, interval] : intervals) {
            const Times& times = starts[name];
            ASSERT_GT(times.size(), 10u);
            for (size_t i = 0; i < times.size(); ++i)
                ASSERT_EQ(qint64(i), (times[i] - times[0]) / interval) << name;
        }
        for (char name = 'A'; name < 'A' + 5; ++name) {
            ASSERT_GT(starts[name].size(), 60u);
            for (size_t i = 1; i < starts['A'].size(); ++i)
                ASSERT_GE(starts['A'][i] - starts['A'][i - 1], pace);
        }
    }
}
