#include "requestCutter.h"

namespace {

enum {
    SINGLE_REQUEST_BYTES = 8,
    MULTIPLE_REQUEST_BYTES = 9, // without the data
    BYTE_COUNT_AT = 6,
    SHORTEST_REQUEST_BYTES = 4,  // station, function, checksum
    LONGEST_REQUEST_BYTES = 256, // MODBUS over Serial Line V1.02, 2.5.1
    LAST_FUNCTION = 127
};

enum LengthKind { LENGTH_KNOWN, LENGTH_NEEDS_MORE_BYTES, LENGTH_UNKNOWN, NO_REQUEST };

struct ExpectedLength
{
    LengthKind kind;
    std::size_t bytes;
};

ExpectedLength expectedLength(const Bytes& held)
{
    if (held.size() <= FUNCTION_AT) return {LENGTH_NEEDS_MORE_BYTES, 0};
    switch (held[FUNCTION_AT]) {
    case 1: // the device does not serve functions 1 and 2: it refuses them
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
        return {LENGTH_KNOWN, SINGLE_REQUEST_BYTES};
    case 15:
    case 16:
        if (held.size() <= BYTE_COUNT_AT) return {LENGTH_NEEDS_MORE_BYTES, 0};
        return {LENGTH_KNOWN, std::size_t(MULTIPLE_REQUEST_BYTES) + held[BYTE_COUNT_AT]};
    default:
        const int function = held[FUNCTION_AT];
        return {function >= 1 && function <= LAST_FUNCTION ? LENGTH_UNKNOWN : NO_REQUEST, 0};
    }
}

/// Length of the request at the start of the bytes; 0 when there is none or it is incomplete.
/// @param silent  the line fell silent after the bytes
std::size_t requestLength(const Bytes& held, bool silent)
{
    const ExpectedLength expected = expectedLength(held);
    std::size_t length = expected.bytes;
    if (expected.kind == LENGTH_UNKNOWN && silent) length = held.size();
    if (length < SHORTEST_REQUEST_BYTES || length > held.size()) return 0;
    return endsWithItsCrc(held.data(), length) ? length : 0;
}

bool holdsRequestBehindItsStart(const Bytes& held)
{
    for (std::size_t at = 1; at < held.size(); ++at) {
        const Bytes rest(held.begin() + std::ptrdiff_t(at), held.end());
        if (requestLength(rest, false) > 0) return true;
    }
    return false;
}

/// True when more bytes, or a silence, may complete a request.
bool mayBecomeRequest(const Bytes& held)
{
    const ExpectedLength expected = expectedLength(held);
    switch (expected.kind) {
    case LENGTH_KNOWN:
        return held.size() < expected.bytes;
    case LENGTH_NEEDS_MORE_BYTES:
        return true;
    case LENGTH_UNKNOWN:
        return held.size() <= LONGEST_REQUEST_BYTES && !holdsRequestBehindItsStart(held);
    default:
        return false;
    }
}

} // namespace

void RequestCutter::add(const Bytes& bytes, std::int64_t at)
{
    if (bytes.empty()) return;
    for (const std::uint8_t value : bytes)
        m_held.push_back({value, at});
    m_lastByteAt = at;
    m_silent = false;
}

std::optional<Request> RequestCutter::take()
{
    while (!m_held.empty()) {
        Bytes held;
        for (const Byte& byte : m_held)
            held.push_back(byte.value);
        const std::size_t length = requestLength(held, m_silent);
        if (length > 0) return takeFront(length);
        if (!m_silent && mayBecomeRequest(held)) return std::nullopt;
        dropOne();
    }
    if (m_silent) m_inBadFrame = false;
    return std::nullopt;
}

void RequestCutter::lineFellSilent()
{
    m_silent = true;
}

void RequestCutter::reset()
{
    m_held.clear();
    m_inBadFrame = false;
    m_silent = false;
}

Request RequestCutter::takeFront(std::size_t length)
{
    Request request;
    request.firstByteAt = m_held.front().at;
    request.lastByteAt = m_held[length - 1].at;
    for (std::size_t i = 0; i < length; ++i)
        request.bytes.push_back(m_held[i].value);
    m_held.erase(m_held.begin(), m_held.begin() + std::ptrdiff_t(length));
    m_inBadFrame = false;
    return request;
}

/// Drops one byte only, because a good request may start anywhere in bad bytes.
void RequestCutter::dropOne()
{
    if (!m_inBadFrame) ++m_badFrames;
    m_inBadFrame = true;
    m_held.erase(m_held.begin());
}
