#include "faultedReply.h"

namespace {

enum { BYTE_BITS = 8, MOST_STRAY_BYTES = 3, LAST_STATION = 247, EXCEPTION_FLAG = 0x80 };

std::size_t strayCount(const Draws& draws)
{
    return 1 + draws[0] % MOST_STRAY_BYTES;
}

/// How many numbers the fault needs in all, which may depend on the numbers drawn so far.
std::size_t drawCount(Fault fault, const Draws& draws)
{
    switch (fault) {
    case FAULT_CORRUPT:
        return 2;
    case FAULT_TRUNCATE:
    case FAULT_WRONG_STATION:
        return 1;
    case FAULT_STRAY_BEFORE:
    case FAULT_STRAY_AFTER:
        return draws.empty() ? 1 : 1 + strayCount(draws);
    default:
        return 0;
    }
}

void flipOneBit(Bytes& reply, const Draws& draws)
{
    std::uint8_t& byte = reply[draws[0] % reply.size()];
    byte = static_cast<std::uint8_t>(byte ^ 1u << draws[1] % BYTE_BITS);
}

Bytes strayBytes(const Draws& draws)
{
    Bytes stray(strayCount(draws));
    for (std::size_t i = 0; i < stray.size(); ++i)
        stray[i] = static_cast<std::uint8_t>(draws[i + 1] & 0xFF);
    return stray;
}

Bytes joined(Bytes first, const Bytes& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes fromAnotherStation(Bytes reply, const Draws& draws)
{
    const std::size_t own = reply[STATION_AT];
    std::size_t other = 1 + draws[0] % (LAST_STATION - 1);
    if (other >= own) ++other;
    reply[STATION_AT] = static_cast<std::uint8_t>(other);
    reply.resize(reply.size() - CRC_BYTES);
    return withCrc(reply);
}

} // namespace

Bytes exceptionReply(const Bytes& request, int code)
{
    return withCrc({request[STATION_AT],
                    static_cast<std::uint8_t>(request[FUNCTION_AT] | EXCEPTION_FLAG),
                    static_cast<std::uint8_t>(code)});
}

Draws drawsFor(Fault fault, std::mt19937& random)
{
    Draws draws;
    while (draws.size() < drawCount(fault, draws))
        draws.push_back(static_cast<std::uint32_t>(random()));
    return draws;
}

Bytes faultedReply(Fault fault, Bytes reply, const Draws& draws)
{
    switch (fault) {
    case FAULT_DROP:
        return {};
    case FAULT_CORRUPT:
        flipOneBit(reply, draws);
        return reply;
    case FAULT_TRUNCATE:
        reply.resize(1 + draws[0] % (reply.size() - 1));
        return reply;
    case FAULT_STRAY_BEFORE:
        return joined(strayBytes(draws), reply);
    case FAULT_STRAY_AFTER:
        return joined(reply, strayBytes(draws));
    case FAULT_WRONG_STATION:
        return fromAnotherStation(reply, draws);
    default:
        return reply;
    }
}
