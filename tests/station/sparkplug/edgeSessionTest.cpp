// The way to a session of the edge node and its end: limits, numbers that are given back, what
// waits, marks and history.

#include "edgeBench.h"

#include "sparkplug/edgeHistory.h"

#include <gtest/gtest.h>

namespace {

EdgeBench::Setup withHistory()
{
    EdgeBench::Setup setup;
    setup.keepsHistory = true;
    return setup;
}

/// The oven answers; its history is kept.
struct Kept : EdgeBench
{
    Kept() : EdgeBench(withHistory())
    {
        beBorn();
        stand("oven", 1, true);
    }

    /// The rows that were sent as history, by their values.
    std::vector<double> historical(size_t first) const
    {
        std::vector<double> values;
        for (const Told& told : since(first)) {
            for (const ReceivedMetric& metric : told.payload.metrics) {
                if (metric.isHistorical) values.push_back(metric.number(9));
            }
        }
        return values;
    }

    std::vector<Told> marks() const
    {
        std::vector<Told> found;
        for (const Told& told : session.told) {
            if (told.message.topic == QLatin1String("kakb-mark/works/station"))
                found.push_back(told);
        }
        return found;
    }
};

} // namespace

TEST(EdgeNode, GivesUpABrokerThatDoesNotAnswerForTenSeconds)
{
    EdgeBench bench;
    bench.turn();
    bench.passMs(9999);
    EXPECT_EQ(0, bench.session.drops);
    bench.passMs(1);
    EXPECT_EQ(1, bench.session.drops);
    EXPECT_EQ(0, bench.sequence.back) << "its CONNECT had left";
    EXPECT_FALSE(bench.node.standing().trouble.isEmpty());
    bench.passMs(1000);
    EXPECT_EQ(2, bench.session.connects);
}

TEST(EdgeNode, GivesTheNumberBackWhenNoConnectLeftWithinTenSeconds)
{
    EdgeBench bench;
    bench.session.connectIsSent = false;
    bench.turn();
    bench.passMs(10000);
    EXPECT_EQ(1, bench.sequence.back);
}

TEST(EdgeNode, GivesTheNumberBackOnlyWhenNoConnectLeft)
{
    EdgeBench bench;
    bench.turn();
    bench.cut(false);
    EXPECT_EQ(1, bench.sequence.back);
    bench.passMs(1000);
    bench.cut(true);
    EXPECT_EQ(1, bench.sequence.back) << "the broker has seen this one";
}

TEST(EdgeNode, GivesUpABrokerThatDoesNotAnswerASubscription)
{
    EdgeBench bench;
    bench.turn();
    bench.accept();
    bench.passMs(9999);
    EXPECT_EQ(0, bench.session.leaves);
    bench.passMs(1);
    EXPECT_EQ(1, bench.session.leaves);
    EXPECT_TRUE(bench.all("NDEATH").empty()) << "nothing was born";
    bench.passMs(1000);
    EXPECT_EQ(2, bench.session.connects);
    EXPECT_EQ(2, bench.sequence.given);
    EXPECT_EQ(0, bench.sequence.back) << "the broker has seen the first CONNECT";
}

TEST(EdgeNode, LeavesABrokerThatRefusesTheSubscription)
{
    EdgeBench bench;
    bench.turn();
    bench.accept();
    bench.grant(false);
    EXPECT_EQ(1, bench.session.leaves);
    EXPECT_TRUE(bench.session.published.empty());
    bench.passMs(999);
    EXPECT_EQ(1, bench.session.connects);
    bench.passMs(1);
    EXPECT_EQ(2, bench.session.connects);
    EXPECT_EQ(2, bench.sequence.given);
    EXPECT_EQ(0, bench.sequence.back) << "the broker has seen the first CONNECT";
}

TEST(EdgeNode, SendsNoConnectWhoseNumberIsNotStored)
{
    EdgeBench bench;
    bench.sequence.isBroken = true;
    for (int i = 0; i < 100; ++i)
        bench.passMs(100);
    EXPECT_EQ(0, bench.session.connects);
    EXPECT_FALSE(bench.node.standing().trouble.isEmpty());
    bench.sequence.isBroken = false;
    bench.passMs(30000);
    EXPECT_EQ(1, bench.session.connects);
}

TEST(EdgeNode, ConnectsAtOnceBehindAGoodSessionAndWithPausesBehindBadOnes)
{
    EdgeBench bench;
    bench.beBorn();
    bench.passMs(1000);
    bench.cut();
    EXPECT_EQ(2, bench.session.connects) << "at once";
    bench.cut();
    bench.passMs(999);
    EXPECT_EQ(2, bench.session.connects);
    bench.passMs(1);
    EXPECT_EQ(3, bench.session.connects);
    bench.cut();
    bench.passMs(1999);
    EXPECT_EQ(3, bench.session.connects) << "the pause grows";
    bench.passMs(1);
    EXPECT_EQ(4, bench.session.connects);
}

TEST(EdgeNode, LeavesInEveryState)
{
    EdgeBench pausing;
    pausing.node.leave();
    EXPECT_TRUE(pausing.node.isOver());

    EdgeBench connecting;
    connecting.turn();
    connecting.node.leave();
    EXPECT_TRUE(connecting.node.isOver());
    EXPECT_EQ(1, connecting.session.drops);

    EdgeBench subscribing;
    subscribing.turn();
    subscribing.accept();
    subscribing.node.leave();
    EXPECT_TRUE(subscribing.node.isOver());
    EXPECT_EQ(1, subscribing.session.leaves);

    EdgeBench cut;
    cut.beBorn();
    cut.node.leave();
    cut.cut();
    EXPECT_TRUE(cut.node.isOver()) << "the connection went ahead of the acknowledgement";
}

TEST(EdgeNode, SaysWhenItsNextTurnIs)
{
    EdgeBench bench;
    const qint64 start = bench.clock.steady();
    EXPECT_EQ(start + 1000000, bench.turn()) << "the history is looked at once a second";
    bench.clock.passMs(9500);
    bench.turn();
    EXPECT_EQ(start + 10000000, bench.turn()) << "the broker has ten seconds";
    bench.accept();
    bench.grant();
    EXPECT_GT(bench.turn(), bench.clock.steady());
    EXPECT_LE(bench.turn(), bench.clock.steady() + 1000000);
    bench.session.isFull = true;
    bench.stand("oven", 1, true);
    bench.clock.passMs(60000);
    EXPECT_GT(bench.turn(), bench.clock.steady()) << "a full socket is no reason to spin";
}

TEST(EdgeNode, LooksAtTheHistoryOnceASecondAlsoWithoutASession)
{
    EdgeBench bench(withHistory());
    bench.turn();
    const int before = bench.log.looks;
    for (int i = 0; i < 50; ++i)
        bench.passMs(100);
    EXPECT_GE(bench.log.looks, before + 5);
    EXPECT_LE(bench.log.looks, before + 10);
}

TEST(EdgeNode, TellsHowItStands)
{
    EdgeBench bench;
    EXPECT_EQ(PlantStanding::PAUSING, bench.node.standing().state);
    bench.turn();
    EXPECT_EQ(PlantStanding::CONNECTING, bench.node.standing().state);
    EXPECT_EQ(QLatin1String("mqtt://broker1:1883"), bench.node.standing().server);
    bench.accept();
    EXPECT_EQ(PlantStanding::CONNECTING, bench.node.standing().state);
    bench.passMs(5);
    bench.grant();
    EXPECT_EQ(PlantStanding::BORN, bench.node.standing().state);
    EXPECT_EQ(bench.clock.wall(), bench.node.standing().since);
    bench.stand("oven", 1, true);
    bench.read("oven", "count", 3);
    EXPECT_EQ(1u, bench.node.standing().sent);
    EXPECT_EQ(1u, bench.node.standing().sessions);
    bench.cut();
    EXPECT_EQ(PlantStanding::PAUSING, bench.node.standing().state);
    EXPECT_EQ(QLatin1String("the connection was lost"), bench.node.standing().trouble);
}

// What the socket does not take.

TEST(EdgeNode, DataWaitsForTheSocket)
{
    Kept bench;
    bench.session.isFull = true;
    const size_t before = bench.mark();
    bench.read("oven", "temperature", 1);
    bench.stand("oven", 1, false);
    bench.passMs(5000);
    EXPECT_EQ(before, bench.mark());
    bench.session.isFull = false;
    bench.turn();
    ASSERT_GE(bench.mark(), before + 2);
    EXPECT_TRUE(bench.since(before)[0].is("DDATA"));
    EXPECT_TRUE(bench.since(before)[1].is("DDEATH"));
}

/// Only the last of many values waits live; those before it follow as history.
TEST(EdgeNode, TooManyWaitingValuesAreOwedAsHistory)
{
    Kept bench;
    bench.session.isFull = true;
    enum { READINGS = 100005 };
    std::vector<Sample> samples;
    for (int i = 0; i < READINGS; ++i)
        samples.push_back(bench.reading("oven", "temperature", i));
    bench.take(samples);
    bench.commitRows();
    const size_t before = bench.mark();
    bench.session.isFull = false;
    bench.turn();
    size_t live = 0;
    double last = 0;
    for (const Told& told : bench.since(before)) {
        for (const ReceivedMetric& metric : told.payload.metrics) {
            if (metric.isHistorical) continue;
            ++live;
            last = metric.number(9);
        }
    }
    EXPECT_LT(live, 100u);
    EXPECT_EQ(READINGS - 1, last);
    for (int i = 0; i < 6000; ++i)
        bench.passMs(1);
    EXPECT_EQ(size_t(READINGS), live + bench.historical(before).size()) << "none lost, none twice";
}

TEST(EdgeNode, WhatRebirthsFoldIsOwedButForTheValuesThatTheyTell)
{
    Kept bench;
    bench.session.isFull = true;
    for (const double value : {1.0, 2.0, 3.0})
        bench.read("oven", "temperature", value);
    bench.command("NCMD", QString(), rebirthBytes());
    bench.commitRows();
    const size_t before = bench.mark();
    bench.session.isFull = false;
    bench.turn();
    for (int i = 0; i < 1000; ++i)
        bench.passMs(10);
    EXPECT_EQ(3, bench.all("DBIRTH").back().payload.named("temperature")->number(9));
    EXPECT_EQ((std::vector<double>{1, 2}), bench.historical(before));
}

// Marks.

TEST(EdgeNode, AMarkFollowsTheCommitOfWhatWasSent)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.passMs(1000);
    EXPECT_TRUE(bench.marks().empty());
    bench.commitRows();
    bench.passMs(200);
    ASSERT_EQ(1u, bench.marks().size());
    EXPECT_EQ(1, bench.marks()[0].message.qos);
    EXPECT_FALSE(bench.marks()[0].message.isRetained);
    EXPECT_TRUE(bench.marks()[0].message.payload.startsWith(R"({"sequence":1,"time":)"));
    bench.acknowledge();
    bench.passMs(5000);
    EXPECT_EQ(1u, bench.marks().size()) << "it would prove no more";
    bench.read("oven", "temperature", 2);
    bench.commitRows();
    bench.passMs(100);
    EXPECT_EQ(2u, bench.marks().size());
}

/// A cut in the middle of a long replay repeats only a small part of it.
TEST(EdgeNode, MarksFollowThePartsOfTheHistory)
{
    Kept bench;
    bench.cut();
    const int rows = 20 * EdgeHistory::MOST_IN_A_STEP;
    for (int i = 1; i <= rows; ++i)
        bench.read("oven", "temperature", i);
    bench.commitRows();
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    size_t sent = 0;
    while (sent < size_t(rows) / 2) {
        bench.passMs(10);
        bench.acknowledge();
        sent = bench.historical(0).size();
    }
    const size_t before = bench.mark();
    bench.cut();
    bench.passMs(5000);
    bench.accept();
    bench.grant();
    for (int i = 0; i < 100; ++i)
        bench.passMs(10);
    const std::vector<double> again = bench.historical(before);
    ASSERT_FALSE(again.empty());
    EXPECT_LE(sent - size_t(again[0]), 5u * EdgeHistory::MOST_IN_A_STEP);
    EXPECT_EQ(rows, again.back());
}

/// Neither its birth told it, nor is it owed yet.
TEST(EdgeNode, NoMarkProvesARowThatIsHeld)
{
    Kept bench;
    bench.passMs(1050); // it becomes owed at the next full second
    bench.read("mill", "speed", 5);
    bench.commitRows();
    bench.passMs(800);
    EXPECT_TRUE(bench.marks().empty());
    bench.acknowledge();
    bench.cut();
    const size_t before = bench.mark();
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    bench.stand("mill", 1, true);
    bench.passMs(1000);
    EXPECT_EQ(1u, bench.historical(before).size());
}

TEST(EdgeNode, AMarkWaitsForTheOneBeforeIt)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.commitRows();
    bench.passMs(1000);
    bench.read("oven", "temperature", 2);
    bench.commitRows();
    bench.passMs(1000);
    EXPECT_EQ(1u, bench.marks().size());
    bench.acknowledge();
    bench.passMs(1000);
    EXPECT_EQ(2u, bench.marks().size());
}

/// The mill gave a value and fell silent before it was born. A mark behind the value does not prove
/// it.
TEST(EdgeNode, AValueThatNoBirthToldYetIsOwedAheadOfAMark)
{
    Kept bench;
    bench.read("mill", "speed", 5);
    bench.read("oven", "temperature", 1);
    bench.commitRows();
    bench.passMs(1000);
    bench.acknowledge();
    bench.cut();
    bench.passMs(1000);
    const size_t before = bench.mark();
    bench.accept();
    bench.grant();
    bench.read("mill", "speed", 6);
    bench.stand("mill", 1, true);
    bench.commitRows();
    bench.passMs(1000);
    size_t found = 0;
    for (const Told& told : bench.since(before)) {
        for (const ReceivedMetric& metric : told.payload.metrics)
            found += metric.isHistorical && told.device == QLatin1String("mill-1") ? 1 : 0;
    }
    EXPECT_EQ(1u, found);
}

TEST(EdgeNode, WhatNoMarkHasProvenFollowsTheNextBirthsAsHistory)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.commitRows();
    bench.passMs(1000);
    bench.acknowledge();
    bench.read("oven", "temperature", 2);
    bench.commitRows();
    bench.passMs(1000); // its mark is not acknowledged
    bench.cut();
    bench.read("oven", "temperature", 3);
    bench.commitRows();
    const size_t before = bench.mark();
    bench.accept();
    bench.grant();
    bench.passMs(100);
    EXPECT_EQ((std::vector<double>{2, 3}), bench.historical(before));
    EXPECT_EQ(3, bench.all("DBIRTH").back().payload.named("temperature")->number(9));
    EXPECT_EQ(2u, bench.node.standing().historical);
}

TEST(EdgeNode, AnAcknowledgementOfAnEndedSessionProvesNothing)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.commitRows();
    bench.passMs(1000);
    const int request = bench.session.published.back().request;
    bench.cut();
    bench.node.delivered(request);
    bench.accept();
    const size_t before = bench.mark();
    bench.grant();
    bench.passMs(100);
    EXPECT_EQ(std::vector<double>{1}, bench.historical(before));
}

TEST(EdgeNode, AStopProvesWhatWasSentBehindAMarkThatIsUnderway)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.commitRows();
    bench.passMs(1000);
    ASSERT_EQ(1u, bench.marks().size());
    bench.read("oven", "temperature", 2);
    bench.commitRows();
    bench.node.leave();
    EXPECT_EQ(2u, bench.marks().size());
    EXPECT_TRUE(bench.session.told.back().is("NDEATH"));
    bench.acknowledge();
    EXPECT_TRUE(bench.node.isOver());
    EXPECT_EQ(0, bench.ledger.behind());
}

TEST(EdgeNode, AStopProvesWhatWasSent)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.commitRows();
    bench.node.leave();
    ASSERT_EQ(1u, bench.marks().size());
    EXPECT_TRUE(bench.session.told.back().is("NDEATH"));
}

TEST(EdgeNode, AGapIsOwed)
{
    Kept bench;
    bench.read("oven", "temperature", 1);
    bench.reading("oven", "temperature", 2); // the queue had no room for it
    Sample gap;
    gap.kind = Sample::GAP;
    gap.number = 2;
    const Sample third = bench.reading("oven", "temperature", 3);
    bench.commitRows();
    const size_t before = bench.mark();
    bench.take({gap, third});
    bench.passMs(1000);
    EXPECT_EQ(std::vector<double>{2}, bench.historical(before));
}

/// A reading of a device that is not born yet is told by its birth, or owed.
TEST(EdgeNode, ReadingsAheadOfABirthAreToldByItOrOwed)
{
    Kept bench;
    const size_t before = bench.mark();
    bench.stand("oven", 1, false);
    bench.take({bench.reading("oven", "temperature", 1), bench.reading("oven", "temperature", 2),
                bench.standing("oven", 1, true)});
    bench.commitRows();
    bench.passMs(1000);
    EXPECT_EQ(2, bench.all("DBIRTH").back().payload.named("temperature")->number(9));
    EXPECT_EQ(std::vector<double>{1}, bench.historical(before));
}

// History.

namespace {

/// A cut of many rows; the births behind it are out.
struct Behind : Kept
{
    explicit Behind(int rows)
    {
        cut();
        std::vector<Sample> samples;
        for (int i = 0; i < rows; ++i)
            samples.push_back(reading("oven", "temperature", i));
        take(samples);
        commitRows();
        clock.passMs(10000);
        turn();
        first = mark();
        accept();
        grant();
    }

    size_t first = 0;
};

} // namespace

TEST(EdgeNode, HistoryIsSentInStepsWithTheTimesOfItsRows)
{
    Behind bench(1200);
    size_t messages = 0;
    for (const Told& told : bench.since(bench.first)) {
        if (!told.is("DDATA")) continue;
        ++messages;
        EXPECT_LE(told.payload.metrics.size(), 500u);
        for (const ReceivedMetric& metric : told.payload.metrics) {
            EXPECT_TRUE(metric.isHistorical);
            EXPECT_EQ(1700000000000, *metric.time);
        }
    }
    EXPECT_EQ(1u, messages) << "one step a turn";
    for (int i = 0; i < 100; ++i)
        bench.passMs(1);
    const std::vector<double> values = bench.historical(bench.first);
    ASSERT_EQ(1200u, values.size());
    for (size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(double(i), values[i]);
}

TEST(EdgeNode, HistoryIsNotFasterThanTwentyThousandRowsASecond)
{
    Behind bench(50000);
    for (int i = 0; i < 1000; ++i)
        bench.passMs(1);
    EXPECT_LE(bench.historical(bench.first).size(), 21500u);
    EXPECT_GE(bench.historical(bench.first).size(), 10000u);
}

/// However fast its broker acknowledges them.
TEST(EdgeNode, NoMoreThanTenMarksASecondFollowTheHistory)
{
    enum { SECOND_MS = 1000, MOST = 10 };
    Behind bench(30000);
    const size_t before = bench.marks().size();
    for (int i = 0; i < SECOND_MS; ++i) {
        bench.passMs(1);
        bench.acknowledge();
    }
    EXPECT_LT(bench.historical(bench.first).size(), 30000u) << "the replay ended within the second";
    const size_t marks = bench.marks().size() - before;
    EXPECT_LE(marks, size_t(MOST));
    EXPECT_GE(marks, size_t(MOST / 2)) << "a cut would repeat a large part";
}

TEST(EdgeNode, LiveValuesGoAheadOfHistory)
{
    Behind bench(2000);
    bench.session.isFull = true;
    bench.passMs(1000);
    bench.read("oven", "temperature", -1);
    const size_t before = bench.mark();
    bench.passMs(100);
    EXPECT_EQ(before, bench.mark()) << "no history for a full socket";
    bench.session.isFull = false;
    bench.turn();
    const std::vector<Told> after = bench.since(before);
    ASSERT_GE(after.size(), 1u);
    EXPECT_FALSE(after[0].payload.metrics.at(0).isHistorical);
    EXPECT_EQ(-1, after[0].payload.metrics.at(0).number(9));
}

TEST(EdgeNode, HistoryOfADeadDeviceWaitsForItsBirth)
{
    Kept bench;
    bench.stand("mill", 1, true);
    bench.cut();
    bench.read("mill", "speed", 4);
    bench.stand("mill", 1, false);
    bench.commitRows();
    bench.passMs(1000);
    const size_t before = bench.mark();
    bench.accept();
    bench.grant();
    bench.passMs(1000);
    EXPECT_TRUE(bench.historical(before).empty());
    bench.stand("mill", 1, true);
    bench.passMs(1000);
    EXPECT_EQ(1u, bench.historical(before).size());
}

TEST(EdgeNode, RowsOfTagsThatAreGoneAreCountedAsDropped)
{
    Behind bench(3);
    bench.passMs(1000);
    bench.acknowledge();
    EXPECT_EQ(0, bench.node.standing().dropped);
    bench.cut();
    bench.read("oven", "temperature", 4);
    bench.commitRows();
    std::vector<EdgeDevice> devices = plantDevices();
    devices[0].tags.erase(devices[0].tags.begin());
    bench.node.setDevices(devices);
    bench.passMs(1000);
    bench.accept();
    bench.grant();
    bench.passMs(1000);
    EXPECT_EQ(1, bench.node.standing().dropped);
    bool isTold = false;
    const Told last = bench.all("NDATA").back();
    for (const ReceivedMetric& metric : last.payload.metrics)
        isTold = isTold || (metric.alias == 1u && metric.bits == 1); // Buffer/Dropped
    EXPECT_TRUE(isTold);
}
