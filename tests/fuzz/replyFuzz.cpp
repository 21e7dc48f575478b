// Replies to one pending request of each kind: what is accepted, what reaches the cache or the
// recipe buffer, and what is left as it was.

#include "fuzzRun.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    enum { MERGE_LIMIT = 125 };
    FuzzRun run(data, size);
    run.start(run.input.number(0, 3), MERGE_LIMIT);
    run.make({FuzzRun::WRITE, FuzzRun::READ_ONCE, FuzzRun::POLL, FuzzRun::SET_RECIPE});
    run.make({FuzzRun::MOVE_FLAG, FuzzRun::READ, FuzzRun::FILL_RECIPE});
    while (run.isLeft())
        run.make({FuzzRun::EXCHANGE, FuzzRun::EXCHANGE, FuzzRun::EXCHANGE, FuzzRun::READ});
    return 0;
}
