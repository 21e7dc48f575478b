#ifndef CANCELLATION_H
#define CANCELLATION_H

#include "links/descriptor.h"

#include <sys/eventfd.h>

#include <atomic>
#include <cerrno>
#include <system_error>

/// A request to stop whatever waits for it, now and from now on. Asked from any thread.
class Cancellation
{
public:
    /// Throws std::system_error when the system has no descriptor left.
    Cancellation() : m_event(eventfd(0, EFD_CLOEXEC))
    {
        if (m_event.number() < 0)
            throw std::system_error(errno, std::generic_category(), "no event descriptor");
    }

    void ask()
    {
        m_isAsked = true;
        eventfd_write(m_event.number(), 1);
    }
    bool isAsked() const
    {
        return m_isAsked;
    }

    /// Readable for ever once it is asked for.
    int descriptor() const
    {
        return m_event.number();
    }

private:
    std::atomic<bool> m_isAsked{false};
    Descriptor m_event;
};

#endif
