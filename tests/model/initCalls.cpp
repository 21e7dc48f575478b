#include "initCalls.h"

namespace model {

namespace {

enum { PROPERTY_PARTS = 5 };

const std::vector<int> CONTEXTS = {0, 1, 7, -5, 1000000};
const std::vector<int> RETRY_LIMITS = {3, 3, 3, 2, 1, 5, 0, -1};
const std::vector<int> MERGE_LIMITS = {32, 32, 125, 16, 12, 10, 8, 6, 4, 3, 2, 1, 0, -3};
const std::vector<int> LOCAL_ONLY = {1, -1, 7};
const std::vector<std::string> NO_NUMBERS = {"", "abc", "3x", " ", "99999999999", "0x10", "1.5"};

std::string part(RandomSource& random, int number)
{
    if (random.oneIn(40)) return random.pick(NO_NUMBERS);
    if (random.oneIn(40)) return " " + std::to_string(number) + " ";
    return std::to_string(number);
}

std::string joined(const std::vector<std::string>& parts, int count)
{
    std::string text;
    for (int i = 0; i < count; ++i)
        text += (i == 0 ? "" : "#") + parts[static_cast<size_t>(i)];
    return text;
}

} // namespace

InitCall randomInit(RandomSource& random, int& context)
{
    InitCall call;
    call.shared = !random.oneIn(12);
    call.buffer = !random.oneIn(12);
    call.mutex = !random.oneIn(12);
    call.status = !random.oneIn(12);
    call.hasText = !random.oneIn(20);
    call.arg = random.between(-2, 2);
    const int newContext = random.pick(CONTEXTS);
    const int localOnly = random.oneIn(10) ? random.pick(LOCAL_ONLY) : 0;
    const std::string retryLimit = part(random, random.pick(RETRY_LIMITS));
    const std::string mergeLimit = part(random, random.pick(MERGE_LIMITS));
    const std::vector<std::string> parts = {std::to_string(newContext),
                                            part(random, localOnly),
                                            part(random, 12),
                                            retryLimit,
                                            mergeLimit,
                                            "more",
                                            "9"};
    const bool irregular = random.oneIn(8);
    const int count =
        irregular ? random.between(0, static_cast<int>(parts.size())) : int(PROPERTY_PARTS);
    if (!call.hasText) return call;
    call.text = joined(parts, count);
    if (count >= PROPERTY_PARTS) context = newContext;
    return call;
}

} // namespace model
