#ifndef CALL_GENERATOR_H
#define CALL_GENERATOR_H

#include "calls.h"

#include <cstdint>

namespace model {

/// A host's calls from its start on: some hundreds, the same for the same seed. Each seed has its
/// own habits: which calls it prefers, how noisy its line is, which limits it sets.
std::vector<Call> randomCalls(std::uint64_t seed);

} // namespace model

#endif
