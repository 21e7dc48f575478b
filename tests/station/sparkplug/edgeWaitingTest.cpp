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

namespace {

EdgeBench::Setup keepingRows()
{
    EdgeBench::Setup setup;
    setup.keepsHistory = true;
    return setup;
}

/// The oven's count goes up by one a second, and its rows are committed.
struct Counting : EdgeBench
{
    Counting() : EdgeBench(keepingRows())
    {
        beBorn();
        stand("oven", 1, true);
    }

    void count(int seconds)
    {
        for (int i = 0; i < seconds; ++i) {
            read("oven", "count", ++m_value);
            commitRows();
            passMs(1000);
        }
    }
    qint64 behind() const
    {
        return node.standing().behind.value_or(-1);
    }

private:
    int m_value = 0;
};

} // namespace

/// The disk is full, and no broker is there: nobody will ever tell these values.
TEST(EdgeWaiting, ValuesThatNeitherTheHistoryNorABrokerTakesAreCountedAsDropped)
{
    EdgeBench bench(keepingRows());
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

TEST(EdgeWaiting, WithoutAHistoryValuesAreDroppedAsTheyComeWhileNoBrokerIsThere)
{
    EdgeBench bench;
    bench.beBorn();
    bench.stand("oven", 1, true);
    bench.read("oven", "count", 1);
    bench.passMs(1000);
    EXPECT_EQ(0, bench.node.standing().dropped);
    bench.cut();
    for (int i = 1; i <= 3; ++i) {
        bench.read("oven", "count", 1 + i);
        EXPECT_EQ(i, bench.node.standing().dropped);
    }
    bench.passMs(5000);
    bench.accept();
    bench.grant();
    bench.passMs(1000);
    EXPECT_EQ(3, bench.node.standing().dropped) << "each counts once";
}

/// A broker that hangs keeps its connection for long.
TEST(EdgeWaiting, RowsThatABrokerDoesNotAcknowledgeAreBehindAfterTwoSeconds)
{
    Counting bench;
    bench.count(2);
    EXPECT_EQ(0, bench.behind());
    bench.count(3);
    EXPECT_EQ(5, bench.behind());
    EXPECT_EQ(PlantStanding::BORN, bench.node.standing().state);
    bench.acknowledge(); // the first mark, which proves one row or two
    EXPECT_EQ(0, bench.behind());
    bench.passMs(1000);
    bench.acknowledge();
    bench.passMs(10000);
    EXPECT_EQ(0, bench.behind()) << "nothing is under way";
}

TEST(EdgeWaiting, RowsThatTheSocketDoesNotTakeAreBehindAfterTwoSeconds)
{
    Counting bench;
    bench.session.isFull = true;
    bench.count(5);
    EXPECT_EQ(5, bench.behind());
    bench.session.isFull = false;
    bench.turn();
    bench.passMs(1000);
    bench.acknowledge();
    EXPECT_EQ(0, bench.behind());
}
