// Any calls of the nineteen exports in any order, with valid pointers and small counts.

#include "fuzzRun.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    enum { MOST_CALLS = 400, NEW_START = 20 };
    FuzzRun run(data, size);
    for (int i = 0; i < MOST_CALLS && run.isLeft(); ++i) {
        if (run.input.oneIn(NEW_START))
            run.start(run.input.number(0, 3), run.input.number(-1, 125));
        run.make({FuzzRun::ASK_IDENTITY, FuzzRun::CHECK,      FuzzRun::CHECK_VALIDITY,
                  FuzzRun::DESCRIBE,     FuzzRun::LIST_AREAS, FuzzRun::COPY_SERIES,
                  FuzzRun::POLL,         FuzzRun::POLL,       FuzzRun::READ_ONCE,
                  FuzzRun::READ_ONCE,    FuzzRun::SET_RECIPE, FuzzRun::MOVE_FLAG,
                  FuzzRun::FILL_RECIPE,  FuzzRun::WRITE,      FuzzRun::WRITE,
                  FuzzRun::READ,         FuzzRun::EXCHANGE,   FuzzRun::EXCHANGE,
                  FuzzRun::EXCHANGE,     FuzzRun::EXCHANGE,   FuzzRun::EXCHANGE,
                  FuzzRun::EXCHANGE,     FuzzRun::EXCHANGE});
    }
    return 0;
}
