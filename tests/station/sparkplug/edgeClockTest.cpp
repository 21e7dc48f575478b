// Times of values when somebody sets the station's clock.

#include "edgeBench.h"

#include <gtest/gtest.h>

namespace {

struct KeptBench : EdgeBench
{
    KeptBench() : EdgeBench(withHistory())
    {
        beBorn();
        stand("oven", 1, true);
    }

    static Setup withHistory()
    {
        Setup setup;
        setup.keepsHistory = true;
        return setup;
    }

    /// The times of this value of the oven's temperature, in the messages from `first` on.
    std::vector<qint64> timesOf(double value, size_t first) const
    {
        std::vector<qint64> times;
        for (const Told& told : since(first)) {
            for (const ReceivedMetric& metric : told.payload.metrics) {
                if (metric.valueField == 12 && metric.number(9) == value)
                    times.push_back(metric.time.value_or(0));
            }
        }
        return times;
    }
};

} // namespace

/// A database that keys its rows by metric and time holds what comes twice once.
TEST(EdgeNode, WhatComesAgainBehindACutHasItsFirstTimeThoughTheClockWasSetBack)
{
    KeptBench bench;
    const qint64 time = bench.clock.wall();
    bench.read("oven", "temperature", 1);
    EXPECT_EQ(std::vector<qint64>{time}, bench.timesOf(1, 0));
    bench.passMs(100);
    bench.read("oven", "temperature", 2);
    bench.commitRows();
    bench.cut();
    bench.clock.setWall(time - 2 * 3600 * 1000);
    const size_t before = bench.mark();
    bench.passMs(5000);
    bench.accept();
    bench.grant();
    bench.passMs(1000);
    EXPECT_EQ(std::vector<qint64>{time}, bench.timesOf(1, before));
}
