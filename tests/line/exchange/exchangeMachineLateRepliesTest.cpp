#include "pollingHost.h"

#include <gtest/gtest.h>

#include <cstdio>

// One request of forty is lost, and one answer of forty. A quarter of the other answers is late by
// up to two of the host's present time-outs.

namespace {

enum { REQUESTS = 200000, ANSWER = 10000 };

PollRun runLate(const std::vector<QByteArray>& requests, int firstRefused)
{
    Habits habits;
    habits.service = 1000;
    habits.late = 0.25;
    habits.lateness = 1.99;
    habits.lost = habits.mute = 0.025;
    habits.firstRefused = firstRefused;
    OrderlyPeer peer(habits, 4);
    ExchangeMachine::Settings settings;
    settings.answer = ANSWER;
    PollingHost host(peer, LineTiming(LineSettings()), settings);
    host.poll(requests);
    host.run(REQUESTS);
    return host.figures;
}

/// Ten blocks side by side. Their lengths go round from 1 to `lengths` words.
std::vector<QByteArray> blocksOf(int lengths)
{
    std::vector<QByteArray> blocks;
    for (int i = 0; i < 10; ++i)
        blocks.push_back(readOf(3000 + 10 * i, 1 + i % lengths));
    return blocks;
}

} // namespace

TEST(ExchangeMachineLateReplies, LateReplyIsNeverTakenForTheNextAnswer)
{
    const PollRun run = runLate(blocksOf(1), 65536);
    std::printf("late replies: %d requests, %d answered, %d with a wrong value\n", int(REQUESTS),
                run.answered, run.wrong);
    EXPECT_EQ(0, run.wrong);
    EXPECT_EQ(0, run.refused);
    EXPECT_GT(run.answered, REQUESTS * 9 / 10);
}

TEST(ExchangeMachineLateReplies, LateReplyIsNeverTakenForAnotherAmongRefusals)
{
    const PollRun run = runLate(blocksOf(2), 3070);
    EXPECT_EQ(0, run.wrong);
    EXPECT_EQ(0, run.wronglyRefused);
    EXPECT_GT(run.answered, REQUESTS * 6 / 10);
    EXPECT_GT(run.refused, REQUESTS / 4);
}
