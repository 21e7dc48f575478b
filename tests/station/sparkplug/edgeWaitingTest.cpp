// What waits for the socket, or for a configuration that names it.

#include "edgeBench.h"

#include "sparkplug/edgeData.h"

#include <gtest/gtest.h>

TEST(EdgeWaiting, TheLastReadingAheadOfItsConfigurationCountsAlsoWhenTooManyWait)
{
    EdgeBench bench;
    bench.beBorn();
    bench.stand("oven", 1, true);
    bench.session.isFull = true;
    enum { READINGS = EdgeData::MOST_WAITING + 1 };
    std::vector<Sample> samples;
    for (int i = 0; i < READINGS; ++i)
        samples.push_back(bench.reading("press", "force", i % 60000));
    samples.push_back(bench.standing("press", 3, false));
    samples.push_back(bench.standing("press", 3, true));
    bench.take(samples);
    std::vector<EdgeDevice> devices = plantDevices();
    devices.push_back({QLatin1String("press"), 3, {tagOf("force", 3, Tag::UINT16)}});
    bench.node.setDevices(devices);
    bench.session.isFull = false;
    bench.turn();
    const Told last = bench.session.told.back();
    ASSERT_EQ(QLatin1String("press-3"), last.device);
    const ReceivedMetric* const force = last.payload.named("force");
    ASSERT_NE(nullptr, force);
    EXPECT_EQ(quint64((READINGS - 1) % 60000), force->bits);
}

/// The disk is full, and no broker is there: nobody will ever tell these values.
TEST(EdgeWaiting, ValuesThatNeitherTheHistoryNorABrokerTakesAreCountedAsDropped)
{
    EdgeBench::Setup setup;
    setup.keepsHistory = true;
    EdgeBench bench(setup);
    bench.beBorn();
    bench.stand("oven", 1, true);
    bench.cut();
    for (const double value : {1.0, 2.0, 3.0}) {
        Sample unkept = bench.reading("oven", "temperature", value);
        unkept.number = 0;
        bench.take({unkept});
    }
    bench.passMs(5000);
    bench.accept();
    bench.grant();
    bench.passMs(1000);
    EXPECT_EQ(3, bench.node.standing().dropped);
}
