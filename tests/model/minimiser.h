#ifndef MINIMISER_H
#define MINIMISER_H

#include "calls.h"

#include <functional>

namespace model {

/// Delta debugging: drops calls, and keys and records from their lists, while the rest still fails.
/// The first call always stays, it starts the driver.
std::vector<Call> minimised(const std::vector<Call>& calls,
                            const std::function<bool(const std::vector<Call>&)>& fails);

} // namespace model

#endif
