#include "plan/wireCost.h"

#include "exchange/lineTiming.h"

namespace {

enum {
    REQUEST_BYTES = 8,
    REPLY_BYTES_AROUND_DATA = 5, // station, function, byte count and checksum
    WORD_BYTES = 2,
    ROUNDING_WORDS = 1000, // LineTiming rounds up, which for single words would add up in a block
    LEAST_REQUEST = 1000
};

} // namespace

WireCost wireCost(const LineTiming& timing, qint64 turnaround)
{
    WireCost cost;
    cost.request = timing.frame(REQUEST_BYTES + REPLY_BYTES_AROUND_DATA) +
                   2 * timing.silentInterval() + turnaround;
    cost.word =
        (timing.frame(ROUNDING_WORDS * WORD_BYTES) + ROUNDING_WORDS / 2) / int(ROUNDING_WORDS);
    if (cost.request <= 0) cost.request = LEAST_REQUEST;
    return cost;
}
