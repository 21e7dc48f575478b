// Address texts and area names through the calls of the host's editor, and back from number to
// text.

#include "fuzzRun.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzRun run(data, size);
    run.start(3, 32);
    while (run.isLeft())
        run.make({FuzzRun::CHECK, FuzzRun::CHECK_VALIDITY, FuzzRun::COPY_SERIES, FuzzRun::DESCRIBE,
                  FuzzRun::LIST_AREAS, FuzzRun::READ});
    return 0;
}
