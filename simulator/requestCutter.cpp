#include "requestCutter.h"

namespace {

enum {
    SINGLE_REQUEST_BYTES = 8,
    MULTIPLE_REQUEST_BYTES = 9, // without the data
    BYTE_COUNT_AT = 6
};

enum LengthKind { LENGTH_KNOWN, LENGTH_NEEDS_MORE_BYTES, NO_REQUEST };

struct ExpectedLength
{
    LengthKind kind;
    std::size_t bytes;
};

ExpectedLength expectedLength(const Bytes& held)
{
    if (held.size() <= FUNCTION_AT) return {LENGTH_NEEDS_MORE_BYTES, 0};
    switch (held[FUNCTION_AT]) {
    case 1: // the device has no functions 1 and 2, but refuses them
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
        return {NO_REQUEST, 0};
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
        const ExpectedLength expected = expectedLength(held);
        const bool whole = expected.kind == LENGTH_KNOWN && held.size() >= expected.bytes;
        if (whole && endsWithItsCrc(held.data(), expected.bytes)) return takeFront(expected.bytes);
        if (!whole && expected.kind != NO_REQUEST && !m_silent) return std::nullopt;
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

/// Byte by byte, because a good request may start anywhere in bad bytes.
void RequestCutter::dropOne()
{
    if (!m_inBadFrame) ++m_badFrames;
    m_inBadFrame = true;
    m_held.erase(m_held.begin());
}
