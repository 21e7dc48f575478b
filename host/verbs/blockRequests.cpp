#include "verbs/blockRequests.h"

#include "session/polledTags.h"
#include "session/startedDriver.h"

namespace {

enum { ATTEMPTS = 1 };

/// The read is given up without an answer, which also takes it out of the driver's queue.
BlockRequest requestFor(const ReadBlock& block, StartedDriver& driver)
{
    driver.queueRead(PolledTags::oneShotKeyOf(block));
    FRAME_PRO frame;
    if (!driver.nextRequest(&frame)) return BlockRequest();
    QByteArray silence;
    QString errorText;
    driver.dealRcvFrame(silence, errorText);
    driver.takeChanges(); // the driver reports the end of each read
    return {QByteArray(reinterpret_cast<const char*>(frame.sendBuf), frame.sendLen), frame.recvLen};
}

} // namespace

// The driver's one-shot reads and its polled reads have the same frames. Polled blocks would be
// laid out in the driver's cache first, which takes seconds for 100,000 words.
std::vector<BlockRequest> blockRequests(const std::vector<ReadBlock>& blocks,
                                        const DriverLibrary& driver)
{
    StartedDriver started(driver, ATTEMPTS);
    std::vector<BlockRequest> requests;
    requests.reserve(blocks.size());
    for (const ReadBlock& block : blocks)
        requests.push_back(requestFor(block, started));
    return requests;
}
