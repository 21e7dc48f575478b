#ifndef BLOCK_REQUESTS_H
#define BLOCK_REQUESTS_H

#include "driver/driverLibrary.h"
#include "plan/readPlan.h"

#include <QByteArray>

#include <vector>

/// The driver's request for a block.
struct BlockRequest
{
    QByteArray bytes;
    int replyLength = 0; ///< bytes
};

/// The driver's requests for the blocks, in the order of the blocks. It starts the driver, so no
/// other StartedDriver may exist.
std::vector<BlockRequest> blockRequests(const std::vector<ReadBlock>& blocks,
                                        const DriverLibrary& driver);

#endif
