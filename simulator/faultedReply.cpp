#include "faultedReply.h"

namespace {

enum { BYTE_BITS = 8, MOST_STRAY_BYTES = 3, LAST_STATION = 247, EXCEPTION_FLAG = 0x80 };

std::size_t below(std::mt19937& random, std::size_t limit)
{
    return random() % limit;
}

void flipOneBit(Bytes& reply, std::mt19937& random)
{
    std::uint8_t& byte = reply[below(random, reply.size())];
    byte = static_cast<std::uint8_t>(byte ^ 1u << below(random, BYTE_BITS));
}

Bytes strayBytes(std::mt19937& random)
{
    Bytes stray(1 + below(random, MOST_STRAY_BYTES));
    for (std::uint8_t& byte : stray)
        byte = static_cast<std::uint8_t>(random() & 0xFF);
    return stray;
}

Bytes joined(Bytes first, const Bytes& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Bytes fromAnotherStation(Bytes reply, std::mt19937& random)
{
    const std::size_t own = reply[STATION_AT];
    std::size_t other = 1 + below(random, LAST_STATION - 1);
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

Bytes faultedReply(Fault fault, Bytes reply, std::mt19937& random)
{
    switch (fault) {
    case FAULT_CORRUPT:
        flipOneBit(reply, random);
        return reply;
    case FAULT_TRUNCATE:
        reply.resize(1 + below(random, reply.size() - 1));
        return reply;
    case FAULT_DUPLICATE:
        return joined(reply, reply);
    case FAULT_STRAY_BEFORE:
        return joined(strayBytes(random), reply);
    case FAULT_STRAY_AFTER:
        return joined(reply, strayBytes(random));
    case FAULT_WRONG_STATION:
        return fromAnotherStation(reply, random);
    default:
        return reply;
    }
}
