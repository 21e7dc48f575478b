#ifndef LINE_PACING_H
#define LINE_PACING_H

#include "frame.h"
#include "requestCutter.h"

#include <cstdint>

/// The line that carries the frames.
struct LineSettings
{
    int baud = 0;                  ///< 0: bytes take no time
    bool isNetwork = false;        ///< pauses between bytes do not end a frame soon
    bool isSerialPort = false;     ///< the port itself takes the wire time
    std::int64_t turnaroundNs = 0; ///< from a request's end to its reply's start
    bool byteByByte = false;       ///< each byte at its time, not the reply at its end
};

/// Bytes to write to the line at one moment.
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

    /// How long the simulator delays so many bytes: 0 when the line is unpaced or paces itself.
    std::int64_t pacedTime(std::size_t bytes) const;

    /// From writing a piece until its last byte is on the wire. 0 except on a serial port, because
    /// a paced piece is written at its end.
    std::int64_t timeAfterWrite(std::size_t bytes) const;

    /// When a request would have ended on the wire. Its bytes may have come all at once.
    /// @param previousEnd  end of the request before it; two requests do not overlap
    std::int64_t requestEnd(const Request& request, std::int64_t previousEnd) const;

    /// The earliest start of its reply.
    std::int64_t replyStart(std::int64_t requestEnd) const;

    /// The pieces of a reply that starts at `start`, in order of time.
    std::vector<OutgoingPiece> pieces(std::int64_t start, const Bytes& reply) const;

    /// Silence that ends a frame: 3.5 characters, but at least 5 ms, because the system may hold
    /// back the rest of a request for longer than 3.5 characters. On a network 100 ms, because a
    /// sender may wait for the acknowledgement of the first part, which is commonly 40 ms late.
    std::int64_t endOfFrameSilence() const;

private:
    std::int64_t wireTime(std::size_t bytes) const;
    LineSettings m_settings;
};

#endif
