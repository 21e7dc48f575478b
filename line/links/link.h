#ifndef LINK_H
#define LINK_H

#include <QByteArray>

#include <memory>
#include <stdexcept>

/// The link cannot be opened, or is lost. what() is one sentence.
struct LinkError : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Carries bytes to a PLC and back. The constructor opens the link, the destructor closes it. Every
/// function throws LinkError when the link is lost. One thread uses the object.
class Link
{
public:
    virtual ~Link() = default;

    /// Hands all bytes to the system.
    virtual void write(const QByteArray& bytes) = 0;

    /// The bytes that have come, without waiting. Call it whenever descriptor() is readable: the
    /// descriptor of a lost link is readable too, and read() then throws LinkError.
    virtual QByteArray read() = 0;

    /// A descriptor for WakeableWait: it waits for bytes and for a wake-up together, and in
    /// microseconds.
    virtual int descriptor() const = 0;
};

#endif
