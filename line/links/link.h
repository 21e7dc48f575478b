#ifndef LINK_H
#define LINK_H

#include <QByteArray>

#include <memory>
#include <stdexcept>

/// The link cannot be opened, or is gone. what() is one sentence.
struct LinkError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// A way for bytes to a PLC and back, used by one thread. Opened by its constructor, closed by its
/// destructor; every function throws LinkError when the link is gone.
class Link
{
public:
    virtual ~Link() = default;

    /// Hands all bytes to the system.
    virtual void write(const QByteArray& bytes) = 0;

    /// What has come, without waiting. Call it when descriptor() is readable: that is also how a
    /// lost link shows.
    virtual QByteArray read() = 0;

    /// To wait on, together with other things and more finely than in milliseconds.
    virtual int descriptor() const = 0;
};

#endif
