#include "plan/wireCost.h"

#include "wire/frameShape.h"
#include "wire/lineTiming.h"

namespace {

enum {
    WORD_BYTES = 2,
    ROUNDING_WORDS = 1000 // LineTiming rounds up, which for single words would add up in a block
};

} // namespace

WireCost wireCost(const LineTiming& timing, qint64 turnaround)
{
    WireCost cost;
    cost.request = timing.frame(FIXED_REQUEST_BYTES + READ_OVERHEAD) + 2 * timing.silentInterval() +
                   turnaround;
    cost.word =
        (timing.frame(ROUNDING_WORDS * WORD_BYTES) + ROUNDING_WORDS / 2) / int(ROUNDING_WORDS);
    return cost;
}
