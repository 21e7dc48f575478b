#include "stallSchedule.h"

#include <gtest/gtest.h>

namespace {

const std::int64_t MS = 1000000;

StallSettings stalls(std::int64_t lengthMs, std::int64_t everyMs)
{
    StallSettings settings;
    settings.lengthNs = lengthMs * MS;
    settings.everyNs = everyMs * MS;
    return settings;
}

/// goesOnAt() in milliseconds, after a first request at `firstMs`.
std::int64_t goesOnAt(const StallSettings& settings, std::int64_t firstMs, std::int64_t atMs)
{
    StallSchedule schedule(settings);
    schedule.requestSeen(firstMs * MS);
    return schedule.goesOnAt(atMs * MS) / MS;
}

} // namespace

TEST(StallSchedule, NoStallWithoutALength)
{
    for (const std::int64_t at : {0, 1000, 1001, 5000})
        EXPECT_EQ(at, goesOnAt(StallSettings(), 0, at));
}

TEST(StallSchedule, SingleStallStartsOneSecondAfterTheFirstRequest)
{
    EXPECT_EQ(5999, goesOnAt(stalls(300, 0), 5000, 5999));
    EXPECT_EQ(6300, goesOnAt(stalls(300, 0), 5000, 6000));
    EXPECT_EQ(6300, goesOnAt(stalls(300, 0), 5000, 6299));
    EXPECT_EQ(6300, goesOnAt(stalls(300, 0), 5000, 6300));
    for (const std::int64_t at : {6301, 7000, 7100, 60000})
        EXPECT_EQ(at, goesOnAt(stalls(300, 0), 5000, at));
}

TEST(StallSchedule, PeriodicStallsAreTimedFromStartToStart)
{
    for (const std::int64_t start : {12000, 14000, 16000, 1010000}) {
        EXPECT_EQ(start - 1, goesOnAt(stalls(500, 2000), 10000, start - 1));
        EXPECT_EQ(start + 500, goesOnAt(stalls(500, 2000), 10000, start));
        EXPECT_EQ(start + 500, goesOnAt(stalls(500, 2000), 10000, start + 499));
        EXPECT_EQ(start + 500, goesOnAt(stalls(500, 2000), 10000, start + 500));
        EXPECT_EQ(start + 501, goesOnAt(stalls(500, 2000), 10000, start + 501));
    }
    EXPECT_EQ(10000, goesOnAt(stalls(500, 2000), 10000, 10000));
}

TEST(StallSchedule, OnlyTheFirstRequestStartsTheClock)
{
    StallSchedule schedule(stalls(300, 0));
    EXPECT_EQ(9000 * MS, schedule.goesOnAt(9000 * MS));
    schedule.requestSeen(8000 * MS);
    schedule.requestSeen(8500 * MS);
    EXPECT_EQ(9300 * MS, schedule.goesOnAt(9000 * MS));
    EXPECT_EQ(9500 * MS, schedule.goesOnAt(9500 * MS));
}

TEST(StallSchedule, OrderedStallStartsWithItsOrder)
{
    StallSchedule schedule{StallSettings()};
    schedule.stall(5000, 300);
    EXPECT_EQ(4999, schedule.goesOnAt(4999));
    EXPECT_EQ(5300, schedule.goesOnAt(5000));
    EXPECT_EQ(5300, schedule.goesOnAt(5299));
    EXPECT_EQ(5301, schedule.goesOnAt(5301));
}

TEST(StallSchedule, NewOrderMovesTheEndOfAnOrderedStall)
{
    StallSchedule schedule{StallSettings()};
    schedule.stall(5000, 300);
    schedule.stall(5100, 1000);
    EXPECT_EQ(6100, schedule.goesOnAt(5000)); // what was held from the begin on waits on
    schedule.stall(5200, 0);
    EXPECT_EQ(5200, schedule.goesOnAt(5000));
    EXPECT_EQ(5200, schedule.goesOnAt(5200));
    EXPECT_EQ(6000, schedule.goesOnAt(6000));
}

TEST(StallSchedule, OrderedAndPeriodicStallsThatOverlapAreOneStall)
{
    StallSchedule schedule(stalls(300, 1000)); // 1000 to 1300, 2000 to 2300, and so on
    schedule.requestSeen(0);
    schedule.stall(1200 * MS, 900 * MS);
    EXPECT_EQ(2300 * MS, schedule.goesOnAt(1100 * MS));
    EXPECT_EQ(2300 * MS, schedule.goesOnAt(1500 * MS));
    EXPECT_EQ(2400 * MS, schedule.goesOnAt(2400 * MS));
}
