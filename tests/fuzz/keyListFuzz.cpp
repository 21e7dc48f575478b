// Lists of keys and recipe records: what is planned from them, and that every frame of it can be
// asked for and answered.

#include "fuzzRun.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzRun run(data, size);
    run.start(run.input.number(0, 3), run.input.number(-1, 125));
    while (run.isLeft())
        run.make({FuzzRun::POLL, FuzzRun::READ_ONCE, FuzzRun::SET_RECIPE, FuzzRun::MOVE_FLAG,
                  FuzzRun::EXCHANGE, FuzzRun::EXCHANGE, FuzzRun::EXCHANGE, FuzzRun::EXCHANGE});
    return 0;
}
