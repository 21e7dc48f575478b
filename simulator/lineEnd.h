#ifndef LINE_END_H
#define LINE_END_H

#include "frame.h"

#include <stdexcept>
#include <string>

/// The link cannot be opened, or is lost for good. what() names the device and the reason.
class LinkError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The PLC's end of a line. No call waits. A call that fails for good throws LinkError.
class LineEnd
{
public:
    LineEnd() = default;
    virtual ~LineEnd() = default;
    LineEnd(const LineEnd&) = delete;
    LineEnd& operator=(const LineEnd&) = delete;

    /// What a host opens: a path or "tcp:ADDRESS,PORT".
    virtual std::string address() const = 0;

    /// Becomes readable when bytes have come; -1 when no host is connected.
    virtual int descriptor() const = 0;

    /// Becomes readable when a host wants to connect; -1 when hosts do not connect to this line.
    virtual int listener() const
    {
        return -1;
    }

    /// Connects the waiting host and disconnects the host before it.
    virtual void acceptHost() {}

    /// Becomes readable when a host has closed the line; -1 when the line cannot tell.
    virtual int departures() const
    {
        return -1;
    }

    /// Frees the line for the next host, after departures() became readable.
    virtual void hostLeft() {}

    /// The bytes that have come; none when none have come or the host is gone.
    virtual Bytes receive() = 0;

    /// Bytes that the host's side has no room for are lost, as on a wire.
    virtual void send(const Bytes& bytes) = 0;
};

enum { READ_BYTES = 4096 };

/// Throws LinkError "what: reason" with the reason that errno names.
[[noreturn]] void failLink(const std::string& what);

/// As failLink(), with the words "in use by another program" where errno means that.
[[noreturn]] void failOpening(const std::string& what);

#endif
