#ifndef REQUEST_CUTTER_H
#define REQUEST_CUTTER_H

#include "frame.h"

#include <cstdint>
#include <optional>

/// One request as it came, checksum and all.
struct Request
{
    Bytes bytes;
    std::int64_t firstByteAt = 0; ///< nanoseconds, when its first byte was seen
    std::int64_t lastByteAt = 0;
};

/// Cuts requests out of the bytes that a line brings. It knows a request's length by its function
/// (1 to 6, 15, 16) and takes it by its checksum; one of another function ends where the line falls
/// silent. Bytes that make no request are dropped and counted.
class RequestCutter
{
public:
    /// @param at  nanoseconds, when the bytes were seen
    void add(const Bytes& bytes, std::int64_t at);

    /// The next whole request. None: what is held is the start of one, or nothing.
    std::optional<Request> take();

    /// The line has been silent for too long for the bytes held to be a request's start. Call
    /// take() until it has none: a request may lie behind bytes that looked like a longer one's
    /// start.
    void lineFellSilent();

    bool holdsBytes() const
    {
        return !m_held.empty();
    }
    std::int64_t lastByteAt() const
    {
        return m_lastByteAt;
    }

    /// Runs of bytes that made no request.
    std::int64_t badFrames() const
    {
        return m_badFrames;
    }

    /// Forgets what is held, as a new connection does.
    void reset();

private:
    struct Byte
    {
        std::uint8_t value;
        std::int64_t at;
    };
    Request takeFront(std::size_t length);
    void dropOne();

    std::vector<Byte> m_held;
    std::int64_t m_lastByteAt = 0;
    std::int64_t m_badFrames = 0;
    bool m_inBadFrame = false;
    bool m_silent = false;
};

#endif
