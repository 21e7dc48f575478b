// Property texts, and the calls that their numbers govern.

#include "fuzzRun.h"

namespace {

enum { PARTS = 5, MOST_TEXT = 80, MOST_CALLS = 12 };

/// Numbers in the text's own form, so that the calls behind are reached with any of them.
std::string anyProperties(FuzzInput& input)
{
    if (input.yes()) return input.cText(MOST_TEXT);
    std::string text;
    for (int i = 0; i < PARTS; ++i) {
        if (i > 0) text += '#';
        text += std::to_string(input.yes() ? input.number(-1, 130) : input.anyNumber());
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzRun run(data, size);
    while (run.isLeft()) {
        run.start(anyProperties(run.input));
        for (int i = 0; i < MOST_CALLS && run.isLeft(); ++i)
            run.make({FuzzRun::POLL, FuzzRun::READ_ONCE, FuzzRun::WRITE, FuzzRun::SET_RECIPE,
                      FuzzRun::MOVE_FLAG, FuzzRun::READ, FuzzRun::EXCHANGE, FuzzRun::EXCHANGE});
    }
    return 0;
}
