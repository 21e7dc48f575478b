// One fault at a time. Each has figures that the exchange must reach.

#include "pollingHost.h"

#include <gtest/gtest.h>

namespace {

enum { MS = 1000, SECOND = 1000000, TIME_OUT = 100 * MS, RUN = 20000, DOUBLING_RUN = 5000 };

LineTiming serialLine()
{
    return LineTiming(LineSettings());
}

void expectNothingWrong(const PollRun& run)
{
    EXPECT_EQ(0, run.wrong);
    EXPECT_EQ(0, run.wronglyRefused);
    EXPECT_EQ(0, run.falselyConfirmed);
}

/// Twenty reads of equal length, so that the plan does not tell them apart.
std::vector<QByteArray> wordsOfOneLength(int station = 1)
{
    std::vector<QByteArray> requests;
    for (int i = 0; i < 20; ++i)
        requests.push_back(readOf(3000 + 200 * i, 1, station));
    return requests;
}

struct Lateness
{
    double timeOuts;
    bool isFixed; ///< the lateness counts in TIME_OUT; else in the host's present time-out
    bool isNetwork;
};

class LatePeer : public testing::TestWithParam<Lateness>
{
};

} // namespace

TEST_P(LatePeer, CausesNoWrongValueAndIsInStepAfterOneFence)
{
    Habits habits;
    habits.late = 0.3;
    habits.lateness = GetParam().timeOuts;
    habits.timeOut = GetParam().isFixed ? qint64(TIME_OUT) : 0;
    habits.lost = 0.02;
    OrderlyPeer peer(habits, 5);
    PollingHost host(peer, GetParam().isNetwork ? LineTiming::network() : serialLine(),
                     settingsOf(TIME_OUT));
    host.poll(wordsOfOneLength());
    host.writeEvery(7);
    host.run(RUN);
    expectNothingWrong(host.figures);
    // Of a peer that is later than any time-out few answers count. All of them are right.
    EXPECT_GT(host.figures.answered, GetParam().isFixed ? RUN / 2 : 0);

    // From now on the peer is in time. After the late answers and one fence no fence is needed.
    peer.habits = Habits();
    host.run(50);
    const int fences = host.figures.fences;
    const int answered = host.figures.answered;
    host.run(1000);
    EXPECT_EQ(fences, host.figures.fences);
    EXPECT_GT(host.figures.answered - answered, 800);
    print("late", host.figures);
}

INSTANTIATE_TEST_SUITE_P(ByTimeOuts, LatePeer,
                         testing::Values(Lateness{1.9, true, false}, Lateness{1.9, false, true},
                                         Lateness{3, true, true}, Lateness{3, false, false},
                                         Lateness{11, true, false}, Lateness{11, false, true},
                                         Lateness{100, true, true}, Lateness{100, false, false}));

TEST(AlwaysLatePeer, GetsATimeOutThatFits)
{
    Habits habits;
    habits.service = 5 * TIME_OUT;
    OrderlyPeer peer(habits, 5);
    PollingHost host(peer, serialLine(), settingsOf(TIME_OUT));
    host.poll(wordsApart());
    host.run(40);
    const PollRun before = host.figures;
    host.run(200);
    expectNothingWrong(host.figures);
    EXPECT_EQ(before.givenUp, host.figures.givenUp);
    EXPECT_EQ(before.fences, host.figures.fences);
}

TEST(StalledPeer, IsPolledAtFullSpeedWithinASecondAfterTheStall)
{
    for (const qint64 timeOut : {40 * MS, 100 * MS}) {
        for (qint64 stall = 100 * MS; stall <= 5 * SECOND; stall += 20 * MS) {
            Habits habits;
            habits.stallEvery = 20 * SECOND;
            habits.stallFor = stall;
            OrderlyPeer peer(habits, 5);
            PollingHost host(peer, serialLine(), settingsOf(timeOut));
            host.poll(wordsOfOneLength());
            host.runFor(20 * SECOND + stall);
            ASSERT_GT(peer.stalls, 0);
            host.runFor(SECOND);
            const PollRun before = host.figures;
            host.runFor(2 * SECOND);
            expectNothingWrong(host.figures);
            // 8 + 7 or 9 bytes at 38400 baud, the silence and the service: 8.2 ms at most.
            EXPECT_GT(host.figures.answered - before.answered, 240) << stall;
            EXPECT_EQ(before.givenUp, host.figures.givenUp) << stall;
        }
    }
}

TEST(DoublingPeer, CausesNoWrongValueInAnyPlan)
{
    const std::vector<std::vector<QByteArray>> plans = {
        wordsApart(), wordsOfOneLength(), fullBlocks(), {readOf(3000, 20)}, {readOf(3000, 125)}};
    for (const double share : {0.01, 0.1, 1.0}) {
        for (const std::vector<QByteArray>& plan : plans) {
            for (const bool isNetwork : {false, true}) {
                Habits habits;
                habits.doubled = share;
                habits.doubledAfter = 30 * MS;
                OrderlyPeer peer(habits, 5);
                PollingHost host(peer, isNetwork ? LineTiming::network() : serialLine(),
                                 settingsOf(TIME_OUT));
                host.poll(plan);
                host.writeEvery(9);
                host.run(DOUBLING_RUN);
                expectNothingWrong(host.figures);
                EXPECT_EQ(0, host.figures.givenUp);
                EXPECT_GT(peer.doublings, DOUBLING_RUN * share / 2);
            }
        }
    }
}

TEST(EchoingLink, ConfirmsNoWriteOfASilentOrRefusingPeer)
{
    for (const bool isSilent : {false, true}) {
        for (const int firstRefused : {6000, 65536}) {
            Habits habits;
            habits.echoes = true;
            habits.firstRefused = firstRefused;
            habits.mute = 0.1;
            OrderlyPeer peer(habits, 5);
            PollingHost host(peer, serialLine(), settingsOf(TIME_OUT));
            host.poll(wordsApart());
            host.writeEvery(2);
            host.run(20);
            peer.isSilent[1] = isSilent;
            const PollRun before = host.figures;
            host.run(200);
            expectNothingWrong(host.figures);
            EXPECT_EQ(ECHO_PRESENT, host.machine.echo());
            const bool isConfirmed = !isSilent && firstRefused > 6000;
            EXPECT_EQ(isConfirmed, host.figures.confirmed > before.confirmed);
            EXPECT_EQ(!isSilent, host.figures.answered > before.answered);
        }
    }
}

TEST(TwoStations, KeepTheOthersRateBetweenTheStallsOfOne)
{
    Habits habits;
    OrderlyPeer quiet(habits, 5);
    PollingHost undisturbed(quiet, serialLine(), settingsOf(TIME_OUT));
    std::vector<QByteArray> both;
    for (int i = 0; i < 20; ++i)
        both.push_back(readOf(3000 + 200 * i, 1 + i / 2 % 2, 1 + i % 2));
    undisturbed.poll(both);
    undisturbed.runFor(20 * SECOND);

    habits.stallEvery = 20 * SECOND;
    habits.stallFor = 2 * SECOND;
    habits.stalledStation = 1;
    OrderlyPeer peer(habits, 5);
    PollingHost host(peer, serialLine(), settingsOf(TIME_OUT));
    host.poll(both);
    host.runFor(3 * habits.stallEvery + habits.stallFor);
    const int before = host.answeredBy(2);
    host.runFor(habits.stallEvery - habits.stallFor);
    expectNothingWrong(host.figures);
    EXPECT_GT(peer.stalls, 0);
    const double share =
        double(host.answeredBy(2) - before) / (double(undisturbed.answeredBy(2)) * 18 / 20);
    EXPECT_GT(share, 0.95);
}

TEST(RefusingPeer, CausesNoWrongRefusalHoweverLateItIs)
{
    for (const double timeOuts : {1.9, 3.0, 11.0, 100.0}) {
        Habits habits;
        habits.firstRefused = 5000;
        habits.late = 0.3;
        habits.lateness = timeOuts;
        habits.timeOut = TIME_OUT;
        habits.mute = 0.05;
        habits.doubled = 0.1;
        habits.doubledAfter = 30 * MS;
        OrderlyPeer peer(habits, 5);
        PollingHost host(peer, serialLine(), settingsOf(TIME_OUT));
        host.poll(wordsOfOneLength());
        host.writeEvery(5);
        host.run(RUN);
        expectNothingWrong(host.figures);
        EXPECT_GT(host.figures.refused, RUN / 100);
    }
}

TEST(DamagingLine, CausesNoWrongValueWithDoubledFrames)
{
    for (const double share : {0.01, 0.1, 0.3}) {
        Habits habits;
        habits.corrupt = share;
        habits.doubled = share;
        habits.doubledAfter = 30 * MS;
        habits.stray = share;
        OrderlyPeer peer(habits, 5);
        PollingHost host(peer, serialLine(), settingsOf(TIME_OUT));
        host.poll(wordsApart());
        host.writeEvery(3);
        host.run(RUN);
        expectNothingWrong(host.figures);
        EXPECT_GT(host.figures.confirmed, RUN / 6);
        EXPECT_LT(host.figures.givenUp, RUN * share / 2 + 1);
    }
}

TEST(RefusingPeer, CostsNoTimeOutWhenItRefusesEverything)
{
    Habits habits;
    habits.firstRefused = 0;
    OrderlyPeer peer(habits, 5);
    PollingHost host(peer, serialLine(), settingsOf(10 * SECOND));
    host.poll(wordsApart());
    host.run(50);
    EXPECT_EQ(50, host.figures.refused);
    EXPECT_LT(host.now, 2 * SECOND);
}
