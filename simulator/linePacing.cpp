#include "linePacing.h"

#include <algorithm>

namespace {

const std::int64_t SECOND_NS = 1000000000;
const std::int64_t SHORTEST_SILENCE_NS = 5000000;
const std::int64_t NETWORK_SILENCE_NS = 100000000;

enum { CHARACTER_BITS = 10, SILENCE_HALF_CHARACTERS = 7 };

} // namespace

LinePacing::LinePacing(const LineSettings& settings) : m_settings(settings) {}

std::int64_t LinePacing::pacedTime(std::size_t bytes) const
{
    return m_settings.isSerialPort ? 0 : wireTime(bytes);
}

std::int64_t LinePacing::timeAfterWrite(std::size_t bytes) const
{
    return m_settings.isSerialPort ? wireTime(bytes) : 0;
}

std::int64_t LinePacing::requestEnd(const Request& request, std::int64_t previousEnd) const
{
    const std::int64_t start = std::max(request.firstByteAt, previousEnd);
    return std::max(request.lastByteAt, start + pacedTime(request.bytes.size()));
}

std::int64_t LinePacing::replyStart(std::int64_t requestEnd) const
{
    return requestEnd + m_settings.turnaroundNs;
}

std::vector<OutgoingPiece> LinePacing::pieces(std::int64_t start, const Bytes& reply) const
{
    if (reply.empty()) return {};
    if (!m_settings.byteByByte) return {{start + pacedTime(reply.size()), reply, true}};
    std::vector<OutgoingPiece> single;
    for (std::size_t i = 0; i < reply.size(); ++i)
        single.push_back({start + pacedTime(i + 1), {reply[i]}, i + 1 == reply.size()});
    return single;
}

std::int64_t LinePacing::endOfFrameSilence() const
{
    const std::int64_t shortest = m_settings.isNetwork ? NETWORK_SILENCE_NS : SHORTEST_SILENCE_NS;
    return std::max(shortest, wireTime(SILENCE_HALF_CHARACTERS) / 2);
}

/// Rounded up, so that no frame is faster than the wire.
std::int64_t LinePacing::wireTime(std::size_t bytes) const
{
    if (m_settings.baud <= 0) return 0;
    const std::int64_t bits = std::int64_t(bytes) * CHARACTER_BITS;
    return (bits * SECOND_NS + m_settings.baud - 1) / m_settings.baud;
}
