// Months on a noisy bus, in one process and drawn from a seed.

#include "faultRun.h"

#include <gtest/gtest.h>

#include <ctime>
#include <iostream>

namespace {

enum {
    LONG_RUN = KAKB_FAULT_EXCHANGES,
    MILLION = 1000000,
    SECONDS_FOR_A_MILLION = 60,
    NO_SPEED_ASKED = 100000,
    RUN_WITHOUT_HELP = LONG_RUN / 5,
    SHORT_RUN = 20000,
    SEEDS = 20,
    LONG_RUN_SEED = 4711,
    LONG_RUN_ATTEMPTS = 2
};

void runToTheEnd(FaultRun& run, int exchanges)
{
    run.disturb(exchanges);
    run.settle();
    run.cycle();
    run.expectCacheEqualsMemory();
    run.expectWritesAccountedFor();
}

/// A run in which something never happened would prove nothing of it.
void expectEverythingHappened(const FaultRun& run)
{
    for (int fault = 1; fault < static_cast<int>(Fault::KINDS); ++fault)
        EXPECT_GT(run.line().faults(static_cast<Fault>(fault)), 100)
            << faultName(static_cast<Fault>(fault));
    EXPECT_GT(run.line().displaced(), 10);
    EXPECT_GT(run.accounts().confirmed, 1000);
    EXPECT_GT(run.accounts().withdrawn, 10);
    EXPECT_GT(run.figures().oneShotsRead, 10);
    EXPECT_GT(run.figures().downloads, 1);
    EXPECT_GT(run.figures().uploads, 1);
}

void expectNoProblems(const FaultRun& run)
{
    for (const std::string& problem : run.problems())
        ADD_FAILURE() << problem;
}

class ShortRun : public testing::TestWithParam<int>
{
};

} // namespace

TEST(LongRun, EndsWithTheCacheLikeThePlcAndEveryWriteAccountedFor)
{
    FaultRun run(LONG_RUN_SEED, LONG_RUN_ATTEMPTS);
    const std::clock_t start = std::clock();
    runToTheEnd(run, LONG_RUN);
    const double seconds = double(std::clock() - start) / CLOCKS_PER_SEC;
    run.print(std::cout);
    std::cout << seconds << " s of processor time\n";
    expectNoProblems(run);
    expectEverythingHappened(run);
    EXPECT_LT(seconds, LONG_RUN == MILLION ? int(SECONDS_FOR_A_MILLION) : int(NO_SPEED_ASKED));
}

TEST(LongRun, WithAHostThatLeavesAllToTheDriverEndsWell)
{
    FaultRun run(LONG_RUN_SEED, LONG_RUN_ATTEMPTS, FaultRun::PLAIN);
    runToTheEnd(run, RUN_WITHOUT_HELP);
    run.print(std::cout);
    expectNoProblems(run);
    for (const Fault fault : {Fault::DROP_REQUEST, Fault::DROP, Fault::CORRUPT, Fault::TRUNCATE,
                              Fault::DUPLICATE, Fault::GARBAGE_BEFORE, Fault::GARBAGE_AFTER})
        EXPECT_GT(run.line().faults(fault), 100) << faultName(fault);
    EXPECT_EQ(0, run.line().faults(Fault::LATE));
    EXPECT_GT(run.accounts().confirmed, 1000);
    EXPECT_GT(run.accounts().withdrawn, 10);
}

TEST_P(ShortRun, EndsWithTheCacheLikeThePlcAndEveryWriteAccountedFor)
{
    const int seed = GetParam();
    FaultRun run(static_cast<std::uint32_t>(seed), 1 + seed % 3);
    runToTheEnd(run, SHORT_RUN);
    run.print(std::cout);
    expectNoProblems(run);
    EXPECT_GT(run.accounts().confirmed, 1000);
    EXPECT_GT(run.accounts().withdrawn, 1);
}

INSTANTIATE_TEST_SUITE_P(EachSeed, ShortRun, testing::Range(1, SEEDS + 1));
