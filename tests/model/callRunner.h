#ifndef CALL_RUNNER_H
#define CALL_RUNNER_H

#include "calls.h"

#include <string>
#include <vector>

struct DriverFunctions;

namespace model {

/// The first call that the driver and the model do not agree on.
struct Disagreement
{
    bool found = false;
    size_t callIndex = 0;
    std::string text;
};

/// A sequence takes some milliseconds.
enum { MOST_CPU_SECONDS = 10 };

/// Makes the calls of the driver and of the model, in a child process of its own: the driver keeps
/// state that only a new process is without. A driver that crashes disagrees, and so does one that
/// loops for `mostCpuSeconds`.
Disagreement runApart(const DriverFunctions& driver, const std::vector<Call>& calls,
                      unsigned mostCpuSeconds = MOST_CPU_SECONDS);

} // namespace model

#endif
