#include "campaign.h"

#include "branches.h"
#include "callGenerator.h"
#include "callRunner.h"
#include "minimiser.h"

#include <algorithm>
#include <chrono>
#include <iomanip>
#include <sstream>
#include <vector>

namespace model {

namespace {

std::vector<Branch> allBranches()
{
    std::vector<Branch> all;
    for (size_t i = 0; i < BRANCH_COUNT; ++i)
        all.push_back(static_cast<Branch>(i));
    return all;
}

unsigned long long reached(Branch branch)
{
    return branchCounters()[static_cast<size_t>(branch)];
}

/// Minimising ends early where each try takes long, as with a driver that loops.
const std::chrono::seconds MOST_TIME_TO_MINIMISE(60);

std::string failureText(const DriverFunctions& driver, std::uint64_t seed, std::vector<Call> calls,
                        const Disagreement& first)
{
    using Clock = std::chrono::steady_clock;
    calls.resize(first.callIndex + 1);
    const Clock::time_point end = Clock::now() + MOST_TIME_TO_MINIMISE;
    const std::vector<Call> few = minimised(calls, [&driver, end](const std::vector<Call>& rest) {
        return Clock::now() < end && runApart(driver, rest).found;
    });
    const Disagreement last = runApart(driver, few);
    std::ostringstream out;
    out << "seed " << seed << ": the driver and the model disagree after " << calls.size()
        << " calls; " << few.size() << " of them suffice:\n";
    for (size_t i = 0; i <= last.callIndex && i < few.size(); ++i)
        out << (i == last.callIndex ? "> " : "  ") << callText(few[i]) << "\n";
    out << last.text << "model_run --seed " << seed << " --calls 1 runs the whole sequence again\n";
    return out.str();
}

} // namespace

CampaignResult runCampaign(const DriverFunctions& driver, std::uint64_t firstSeed,
                           unsigned long long leastCalls)
{
    const auto start = std::chrono::steady_clock::now();
    // Here, so that every child counts in the same memory, and for this campaign alone.
    std::fill_n(branchCounters(), BRANCH_COUNT, 0ULL);
    CampaignResult result;
    for (std::uint64_t seed = firstSeed; result.calls < leastCalls && result.agreed; ++seed) {
        const std::vector<Call> calls = randomCalls(seed);
        const Disagreement disagreement = runApart(driver, calls);
        ++result.sequences;
        result.calls += disagreement.found ? disagreement.callIndex + 1 : calls.size();
        if (!disagreement.found) continue;
        result.agreed = false;
        result.failedSeed = seed;
        result.failure = failureText(driver, seed, calls, disagreement);
    }
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    result.seconds = took.count();
    return result;
}

std::string coverageReport()
{
    std::vector<Branch> all = allBranches();
    std::stable_sort(all.begin(), all.end(),
                     [](Branch a, Branch b) { return reached(a) > reached(b); });
    std::ostringstream out;
    for (Branch branch : all)
        out << std::setw(12) << reached(branch) << "  " << branchName(branch) << "\n";
    return out.str();
}

std::string rareBranches(unsigned long long least)
{
    std::ostringstream out;
    for (Branch branch : allBranches())
        if (reached(branch) < least)
            out << "  " << branchName(branch) << ": " << reached(branch) << " times\n";
    return out.str();
}

} // namespace model
