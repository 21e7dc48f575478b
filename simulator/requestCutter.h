#ifndef REQUEST_CUTTER_H
#define REQUEST_CUTTER_H

#include "frame.h"

#include <cstdint>
#include <optional>

/// A request as it came, with its checksum.
struct Request
{
    Bytes bytes;
    std::int64_t firstByteAt = 0; ///< nanoseconds, when the first byte was read
    std::int64_t lastByteAt = 0;
};

/// Cuts requests out of the bytes of a line. The function code gives a request's length (1 to 6,
/// 15, 16), and the checksum must be good; a request of another function ends where the line falls
/// silent. Bytes that belong to no request are dropped and counted.
class RequestCutter
{
public:
    /// @param at  nanoseconds, when the bytes were read
    void add(const Bytes& bytes, std::int64_t at);

    /// The next whole request; nothing when the held bytes are only the start of a request.
    std::optional<Request> take();

    /// The line has been silent for so long that the held bytes are no start of a request. Call
    /// take() until it returns nothing: a request may follow bytes that looked like the start of a
    /// longer request.
    void lineFellSilent();

    bool holdsBytes() const
    {
        return !m_held.empty();
    }
    std::int64_t lastByteAt() const
    {
        return m_lastByteAt;
    }

    /// Number of runs of bytes that belonged to no request.
    std::int64_t badFrames() const
    {
        return m_badFrames;
    }

    /// Forgets the held bytes, for a new connection.
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
