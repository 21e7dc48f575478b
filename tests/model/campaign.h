#ifndef CAMPAIGN_H
#define CAMPAIGN_H

#include <cstdint>
#include <string>

struct DriverFunctions;

namespace model {

struct CampaignResult
{
    unsigned long long calls = 0;
    unsigned long long sequences = 0;
    double seconds = 0;
    bool agreed = true;
    std::uint64_t failedSeed = 0;
    std::string failure; ///< seed, remaining calls, expected and actual
};

/// Runs the sequences of `firstSeed`, `firstSeed` + 1, ... until `leastCalls` calls agreed, or one
/// did not.
CampaignResult runCampaign(const DriverFunctions& driver, std::uint64_t firstSeed,
                           unsigned long long leastCalls);

/// How often each branch was reached, rarest last.
std::string coverageReport();

/// Names of the branches reached fewer than `least` times, one a line.
std::string rareBranches(unsigned long long least);

} // namespace model

#endif
