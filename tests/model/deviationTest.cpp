// What is made of a driver that does not do what the model does.

#include "callGenerator.h"
#include "callRunner.h"
#include "campaign.h"
#include "driver/driverLibrary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <sstream>

namespace {

enum { FIRST_SEED = 1, MOST_CALLS = 50000, ONE_SEQUENCE = 1, FEW = 4, A_SECOND = 1 };

/// The calls that a failure lists: between its first line and what differs.
std::vector<std::string> listedCalls(const std::string& failure)
{
    std::istringstream lines(failure);
    std::vector<std::string> calls;
    std::string line;
    std::getline(lines, line);
    while (std::getline(lines, line) &&
           (line.compare(2, 5, "intf_") == 0 || line.compare(2, 6, "host: ") == 0))
        calls.push_back(line);
    return calls;
}

bool startsWith(const std::string& text, const std::string& start)
{
    return text.compare(0, start.size(), start) == 0;
}

bool contains(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

bool listsAreas(const model::Call& call)
{
    return std::holds_alternative<model::AreaListCall>(call);
}

/// The seed of the first sequence that the crashing driver does not survive.
std::uint64_t firstSeedThatListsAreas()
{
    std::uint64_t seed = FIRST_SEED;
    for (;; ++seed) {
        const std::vector<model::Call> calls = model::randomCalls(seed);
        if (std::any_of(calls.begin(), calls.end(), listsAreas)) return seed;
    }
}

} // namespace

TEST(DeviatingDriver, IsShownWithItsSeedAndTheFewCallsThatItTakes)
{
    const DriverLibrary library(QStringLiteral(KAKB_LOST_READS_FILE));
    const model::CampaignResult result = model::runCampaign(library, FIRST_SEED, MOST_CALLS);
    ASSERT_FALSE(result.agreed);
    EXPECT_TRUE(startsWith(result.failure, "seed " + std::to_string(result.failedSeed) + ": "));
    const std::vector<std::string> calls = listedCalls(result.failure);
    ASSERT_GE(calls.size(), 2u) << result.failure;
    EXPECT_LE(calls.size(), size_t(FEW)) << result.failure;
    EXPECT_TRUE(startsWith(calls.back(), "> ")) << result.failure;
    EXPECT_TRUE(contains(result.failure, "intf_addConditionRead(")) << result.failure;
}

TEST(DeviatingDriver, IsShownInTheSameWayWhenItsSeedIsRunAlone)
{
    const DriverLibrary library(QStringLiteral(KAKB_LOST_READS_FILE));
    const model::CampaignResult result = model::runCampaign(library, FIRST_SEED, MOST_CALLS);
    ASSERT_FALSE(result.agreed);
    const model::CampaignResult again =
        model::runCampaign(library, result.failedSeed, ONE_SEQUENCE);
    EXPECT_EQ(again.failure, result.failure);
    EXPECT_EQ(again.sequences, 1u);
}

TEST(CrashingDriver, IsShownWithItsSeedAndTheCallThatItCrashedIn)
{
    const DriverLibrary library(QStringLiteral(KAKB_CRASH_FILE));
    const model::CampaignResult result = model::runCampaign(library, FIRST_SEED, MOST_CALLS);
    ASSERT_FALSE(result.agreed);
    const std::uint64_t seed = firstSeedThatListsAreas();
    EXPECT_EQ(result.failedSeed, seed);
    EXPECT_TRUE(startsWith(result.failure, "seed " + std::to_string(seed) + ": "));
    // The start is always kept.
    const std::vector<std::string> calls = listedCalls(result.failure);
    ASSERT_EQ(calls.size(), 2u) << result.failure;
    EXPECT_TRUE(startsWith(calls[1], "> intf_getRegListByType(")) << result.failure;
    EXPECT_TRUE(contains(result.failure, "ended with signal " + std::to_string(SIGABRT)))
        << result.failure;
}

TEST(LoopingDriver, IsEndedAndDisagrees)
{
    const DriverLibrary library(QStringLiteral(KAKB_ENDLESS_LOOP_FILE));
    const std::vector<model::Call> calls = {model::AreaListCall{0},
                                            model::IdentityCall{model::Identity::PARAMETER, false},
                                            model::AreaListCall{0}};
    const model::Disagreement disagreement = model::runApart(library, calls, A_SECOND);
    EXPECT_TRUE(disagreement.found);
    EXPECT_EQ(disagreement.callIndex, 1u);
    EXPECT_TRUE(contains(disagreement.text, "ended with signal")) << disagreement.text;
}
