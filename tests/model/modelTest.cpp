// The driver against the model, and the model's own tools.
//
//   model_tests
//
// Environment: KAKB_MODEL_SEED first sequence (default 1), KAKB_MODEL_CALLS calls at least (default
// 1000000). From 1000000 calls on each branch of the model must be reached 100 times. Fewer calls
// may miss a rare one; those of the default seed reach each once from 50000 on.

#include "callGenerator.h"
#include "campaign.h"
#include "driver/driverLibrary.h"
#include "minimiser.h"
#include "outcome.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace {

enum { DEFAULT_SEED = 1, DEFAULT_CALLS = 1000000, LEAST_REACHED = 100, FEWER_CALLS = 50000 };

/// How often each branch must be reached, at the least.
unsigned long long leastReached(unsigned long long seed, unsigned long long calls)
{
    if (calls >= DEFAULT_CALLS) return LEAST_REACHED;
    return seed == DEFAULT_SEED && calls >= FEWER_CALLS ? 1 : 0;
}

unsigned long long setting(const char* name, unsigned long long otherwise)
{
    const char* text = std::getenv(name);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

std::vector<std::string> texts(const std::vector<model::Call>& calls)
{
    std::vector<std::string> all;
    for (const model::Call& call : calls)
        all.push_back(model::callText(call));
    return all;
}

model::Call numbered(int number)
{
    return model::DescribeCall{std::to_string(number)};
}

bool holds(const std::vector<model::Call>& calls, int number)
{
    for (const model::Call& call : calls)
        if (std::get<model::DescribeCall>(call).area == std::to_string(number)) return true;
    return false;
}

model::Outcome someOutcome()
{
    model::Outcome outcome;
    outcome.result = 1;
    outcome.numbers = {2};
    outcome.texts = {"text"};
    outcome.bytes = {3};
    outcome.notifications = {{7, 1, "MW", 3000, {1, 0}}};
    model::Frame frame;
    frame.bytes = {1, 6, 11, 184, 0, 5, 203, 200};
    frame.recvLen = 8;
    frame.var = {4, 1, "MW", 3000, 1, {5, 0}};
    outcome.frame = frame;
    return outcome;
}

std::string differenceAfter(void (*change)(model::Outcome&))
{
    model::Outcome changed = someOutcome();
    change(changed);
    return model::difference(someOutcome(), changed);
}

} // namespace

TEST(Comparison, SeesEveryFieldOfAnOutcome)
{
    using model::Outcome;
    EXPECT_EQ(model::difference(someOutcome(), someOutcome()), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.result = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.numbers[0] = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.texts.clear(); }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.bytes.push_back(0); }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.notifications[0].context = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.notifications[0].station = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.notifications[0].name = "IW"; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.notifications[0].addr = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.notifications[0].seen[1] = 1; }), "");
}

TEST(Comparison, SeesEveryFieldOfAFrame)
{
    using model::Outcome;
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame.reset(); }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->bytes[7] = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->recvLen = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->dataStart = 3; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->itemCount = 1; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->var.varId = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->var.station = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->var.area = "QW"; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->var.addr = 0; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->var.count = 2; }), "");
    EXPECT_NE(differenceAfter([](Outcome& o) { o.frame->var.value[1] = 9; }), "");
}

TEST(Comparison, SeesTheHostsMemory)
{
    model::HostMemory expected;
    expected.recipe = {1, 2};
    model::HostMemory actual = expected;
    EXPECT_EQ(model::difference(expected, actual), "");
    actual.recipe[1] = 3;
    EXPECT_NE(model::difference(expected, actual), "");
    actual = expected;
    actual.downloadFlag = 1;
    EXPECT_NE(model::difference(expected, actual), "");
    actual = expected;
    actual.uploadFlag = 1;
    EXPECT_NE(model::difference(expected, actual), "");
}

TEST(Model, AgreesWithTheDriverOnRandomCallsAndReachesEveryBranch)
{
    const DriverLibrary library(QStringLiteral(KAKB_DRIVER_FILE));
    const unsigned long long calls = setting("KAKB_MODEL_CALLS", DEFAULT_CALLS);
    const unsigned long long seed = setting("KAKB_MODEL_SEED", DEFAULT_SEED);
    const model::CampaignResult result = model::runCampaign(library, seed, calls);
    ASSERT_TRUE(result.agreed) << result.failure;
    std::cout << model::coverageReport() << result.calls << " calls in " << result.sequences
              << " sequences, " << result.seconds << " s\n";
    const std::string rare = model::rareBranches(leastReached(seed, calls));
    EXPECT_TRUE(rare.empty()) << "reached too rarely:\n" << rare;
}

TEST(CallGenerator, MakesTheSameCallsForTheSameSeed)
{
    EXPECT_EQ(texts(model::randomCalls(42)), texts(model::randomCalls(42)));
    EXPECT_NE(texts(model::randomCalls(42)), texts(model::randomCalls(43)));
}

TEST(Minimiser, KeepsTheFirstCallAndThoseThatTheFailureNeeds)
{
    std::vector<model::Call> calls;
    for (int i = 0; i < 100; ++i)
        calls.push_back(numbered(i));
    const std::vector<model::Call> few =
        model::minimised(calls, [](const std::vector<model::Call>& rest) {
            return holds(rest, 17) && holds(rest, 83);
        });
    EXPECT_EQ(texts(few), texts({numbered(0), numbered(17), numbered(83)}));
}
