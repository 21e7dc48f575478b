#ifndef OUTCOME_H
#define OUTCOME_H

#include "modelTypes.h"

#include <optional>

namespace model {

/// Everything that a host can see of one call.
struct Outcome
{
    int result = 0;
    std::vector<int> numbers;
    std::vector<std::string> texts;
    Bytes bytes;
    std::optional<Frame> frame;
    std::vector<Notification> notifications;
};

/// Empty when `actual` is what was expected, else both in words.
std::string difference(const Outcome& expected, const Outcome& actual);

/// The same for the host's memory after the call.
std::string difference(const HostMemory& expected, const HostMemory& actual);

} // namespace model

#endif
