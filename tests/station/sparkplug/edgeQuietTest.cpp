// What an edge node does not do: say a thing twice, take an answer for another's, or spin.

#include "edgeBench.h"

#include <gtest/gtest.h>

namespace {

EdgeBench::Setup atServers(int servers)
{
    EdgeBench::Setup setup;
    setup.servers = servers;
    return setup;
}

/// Entries of the node's data with this alias.
size_t entries(const EdgeBench& bench, quint64 alias)
{
    size_t count = 0;
    for (const Told& data : bench.all("NDATA"))
        for (const ReceivedMetric& metric : data.payload.metrics)
            if (metric.alias == alias) ++count;
    return count;
}

} // namespace

TEST(EdgeQuiet, SaysNothingWhileNothingChanges)
{
    EdgeBench bench;
    bench.beBorn();
    bench.stand("oven", 1, true);
    const size_t before = bench.mark();
    bench.passMs(10000);
    EXPECT_TRUE(bench.since(before).empty());
}

TEST(EdgeQuiet, WhatABirthOfTheNodeHasToldIsNoNews)
{
    EdgeBench bench;
    bench.beBorn();
    bench.command("NCMD", QString(), QByteArray("garbage"));
    bench.cut();
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    const Told birth = bench.all("NBIRTH").back();
    const ReceivedMetric* const told = birth.payload.named("Commands/Refused");
    ASSERT_NE(nullptr, told);
    EXPECT_EQ(1u, told->bits);
    bench.passMs(3000);
    EXPECT_EQ(0u, entries(bench, told->alias.value_or(0)));
}

TEST(EdgeQuiet, BirthsThatASessionBeforeWasAskedForAreNotToldAgain)
{
    EdgeBench bench;
    bench.beBorn();
    bench.session.isFull = true;
    bench.command("NCMD", QString(), rebirthBytes());
    bench.cut();
    bench.session.isFull = false;
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    bench.passMs(3000);
    EXPECT_EQ(2u, bench.all("NBIRTH").size()) << "one a session";
}

TEST(EdgeQuiet, TheAnswerToAnotherSubscriptionGrantsNothing)
{
    EdgeBench bench;
    bench.turn();
    bench.accept();
    bench.node.subscribed(bench.session.subscriptions.back().request + 1, true);
    bench.turn();
    EXPECT_TRUE(bench.session.published.empty());
    bench.node.subscribed(bench.session.subscriptions.back().request + 1, false);
    bench.turn();
    EXPECT_EQ(0, bench.session.leaves);
    bench.grant();
    EXPECT_EQ(1u, bench.all("NBIRTH").size());
}

TEST(EdgeQuiet, TheEndOfASessionCountsOnce)
{
    EdgeBench bench;
    bench.turn();
    bench.cut(false);
    ASSERT_EQ(1, bench.sequence.back);
    ASSERT_EQ(PlantStanding::PAUSING, bench.node.standing().state);
    bench.node.ended(QLatin1String("another end"), false);
    bench.turn();
    EXPECT_EQ(1, bench.sequence.back);
    EXPECT_EQ("the connection was lost", bench.node.standing().trouble.toStdString());
}

TEST(EdgeQuiet, DoesNotSpinThroughItsServersWhileNoNumberIsStored)
{
    EdgeBench bench(atServers(3));
    bench.sequence.isBroken = true;
    for (int turn = 0; turn < 10; ++turn) {
        const qint64 next = bench.turn();
        EXPECT_GE(next, bench.clock.steady() + 1000000) << turn;
        bench.clock.passMs((next - bench.clock.steady()) / 1000);
    }
    EXPECT_EQ(0, bench.session.connects);
}
