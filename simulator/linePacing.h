#ifndef LINE_PACING_H
#define LINE_PACING_H

#include "frame.h"
#include "requestCutter.h"

#include <cstdint>

/// What kind of line carries the frames.
struct LineSettings
{
    int baud = 0;                  ///< 0: as fast as the bytes come
    bool isNetwork = false;        ///< pauses between bytes mean nothing
    bool isSerialPort = false;     ///< the port itself takes the time that `baud` asks for
    std::int64_t turnaroundNs = 0; ///< from a request's end to its reply's start
    bool byteByByte = false;       ///< each byte at its time, not the whole reply at its end
};

/// Bytes to be handed to the line at one moment.
struct OutgoingPiece
{
    std::int64_t dueAt = 0; ///< nanoseconds
    Bytes bytes;
    bool endsFrame = false;
};

/// How long frames take on the line, in nanoseconds: a character is 10 bits.
class LinePacing
{
public:
    explicit LinePacing(const LineSettings& settings);

    /// What delivery is held back for: 0 when the line is not paced, or paces itself.
    std::int64_t pacedTime(std::size_t bytes) const;

    /// From the moment a piece is handed over until its last byte is on the wire: 0 but on a serial
    /// port, as a paced piece is handed over at its end.
    std::int64_t timeAfterWrite(std::size_t bytes) const;

    /// When a request that came at once would have ended on the wire.
    /// @param previousEnd  of the request before it, which it can't overlap
    std::int64_t requestEnd(const Request& request, std::int64_t previousEnd) const;

    /// The first moment at which its reply may start.
    std::int64_t replyStart(std::int64_t requestEnd) const;

    /// A reply that starts at `start`, as pieces in the order of their times.
    std::vector<OutgoingPiece> pieces(std::int64_t start, const Bytes& reply) const;

    /// Silence that ends a frame: 3.5 characters, but never under 5 ms, as the system may hold the
    /// rest of a request back for longer than that. On a network 100 ms, because a sender may wait
    /// for the acknowledgement of the first part, and that is commonly 40 ms late.
    std::int64_t endOfFrameSilence() const;

private:
    std::int64_t wireTime(std::size_t bytes) const;
    LineSettings m_settings;
};

#endif
