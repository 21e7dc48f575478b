#ifndef REQUESTED_MEMORY_H
#define REQUESTED_MEMORY_H

#include "frame.h"
#include "place.h"

#include <optional>
#include <vector>

enum Access { ACCESS_READ, ACCESS_WRITE };

/// The memory that a request reads or writes.
struct RequestedMemory
{
    std::vector<MemorySpan> spans; ///< two when coils of QX and of MX are written together
    Access access = ACCESS_READ;
    bool isOfTheDevice = true; ///< every register and bit lies in one of the six areas
};

/// Nothing when the function is not served, the request is too short, or its count is wrong.
/// @param request  with its checksum
std::optional<RequestedMemory> requestedMemory(const Bytes& request);

#endif
