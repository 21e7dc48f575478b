#ifndef LINE_END_H
#define LINE_END_H

#include "frame.h"

#include <stdexcept>
#include <string>

/// The link can't be had, or is lost for good. what() names the device and the reason.
class LinkError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// The PLC's end of a line. Nothing here waits. Where a call fails for good, it throws LinkError.
class LineEnd
{
public:
    LineEnd() = default;
    virtual ~LineEnd() = default;
    LineEnd(const LineEnd&) = delete;
    LineEnd& operator=(const LineEnd&) = delete;

    /// What a host opens: a path, or "tcp:ADDRESS,PORT".
    virtual std::string address() const = 0;

    /// Readable when bytes are there; -1 when no host is connected.
    virtual int descriptor() const = 0;

    /// Readable when a host wants to connect; -1 when that is not how hosts come.
    virtual int listener() const
    {
        return -1;
    }

    /// Lets the newest host take the place of the one before it.
    virtual void acceptHost() {}

    /// Readable when a host has left the line; -1 when that is not told.
    virtual int departures() const
    {
        return -1;
    }

    /// Makes the line free for the next host.
    virtual void hostLeft() {}

    /// What has come; nothing when nothing has, or when the host is gone.
    virtual Bytes receive() = 0;

    /// What the host's side has no room for is lost, as on a wire.
    virtual void send(const Bytes& bytes) = 0;
};

enum { READ_BYTES = 4096 };

/// "what: reason", the reason by errno.
[[noreturn]] void failLink(const std::string& what);

#endif
