// Peers that answer in order and have every other fault. No value is ever the value of another
// register, no write is confirmed that the peer did not execute, and no refusal ends another
// request.

#include "pollingHost.h"

#include <gtest/gtest.h>

#include <cstdio>

namespace {

enum { EXCHANGES = KAKB_PEER_EXCHANGES, MS = 1000, SECOND = 1000000 };

std::vector<QByteArray> planOf(int kind)
{
    switch (kind) {
    case 0:
        return wordsApart();
    case 1:
        return fullBlocks();
    case 2:
        return {readOf(3000, 20)};
    case 3:
        return {readOf(0, 1), readOf(16, 1), readOf(32, 1)};
    case 4: { // two stations, all blocks of equal length
        std::vector<QByteArray> both;
        for (int i = 0; i < 10; ++i)
            both.push_back(readOf(3000 + 100 * i, 3, 1 + i % 2));
        return both;
    }
    default:
        return {readOf(3000, 1), readOf(3050, 1), readOf(0, 4), readOf(7095, 1), readOf(4000, 125)};
    }
}

enum { PLANS = 6 };

/// Random faults, far more frequent and longer than on a real link.
Habits drawnHabits(std::mt19937& random)
{
    const auto share = [&random](double most) { return double(random() % 1000) / 1000 * most; };
    const auto sometimes = [&](double most) { return random() % 2 == 0 ? 0 : share(most); };
    Habits habits;
    habits.service = random() % 30000;
    habits.late = sometimes(1);
    const double latenesses[] = {1.9, 3, 11, 100};
    habits.lateness = latenesses[random() % 4];
    habits.timeOut = random() % 2 == 0 ? 40 * MS : 0;
    habits.isAlwaysLate = random() % 4 == 0;
    habits.lost = sometimes(0.3);
    habits.mute = sometimes(0.3);
    habits.doubled = sometimes(0.5);
    habits.doubledAfter = random() % (100 * MS);
    habits.corrupt = sometimes(0.3);
    habits.stray = sometimes(0.3);
    habits.busy = random() % 4 == 0 ? share(0.2) : 0;
    habits.firstRefused = random() % 3 == 0 ? 5000 : 65536;
    habits.stallFor = random() % 2 == 0 ? 0 : 1 + random() % (5 * SECOND);
    habits.stallEvery = habits.stallFor == 0 ? 0 : 2 * habits.stallFor + SECOND;
    habits.echoes = random() % 4 == 0;
    return habits;
}

} // namespace

TEST(RandomPeer, CausesNoWrongValueConfirmationOrRefusal)
{
    enum { A_RUN = 2000 };
    std::mt19937 random(12);
    PollRun all;
    for (int done = 0; done < EXCHANGES; done += A_RUN) {
        OrderlyPeer peer(drawnHabits(random), unsigned(random()));
        const bool isNetwork = random() % 2 == 0;
        PollingHost host(peer, isNetwork ? LineTiming::network() : LineTiming(LineSettings()),
                         settingsOf(random() % 2 == 0 ? 40 * MS : 100 * MS));
        host.poll(planOf(int(random() % PLANS)));
        host.writeEvery(random() % 2 == 0 ? 0 : 3);
        host.run(A_RUN);
        if (random() % 3 == 0) {
            host.reconnect(random() % SECOND);
            host.run(A_RUN / 10);
        }
        const PollRun& run = host.figures;
        EXPECT_EQ(0, run.wrong + run.wronglyRefused + run.falselyConfirmed)
            << "run " << done / A_RUN;
        EXPECT_EQ(0, run.fencesThatWrite);
        all.answered += run.answered;
        all.wrong += run.wrong;
        all.refused += run.refused;
        all.wronglyRefused += run.wronglyRefused;
        all.confirmed += run.confirmed;
        all.falselyConfirmed += run.falselyConfirmed;
        all.givenUp += run.givenUp;
        all.sent += run.sent;
        all.fences += run.fences;
    }
    print("random peers", all);
    EXPECT_GT(all.answered, EXCHANGES / 4);
    EXPECT_GT(all.confirmed, EXCHANGES / 20);
    EXPECT_GT(all.refused, EXCHANGES / 100);
}
