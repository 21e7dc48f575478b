#ifndef CANCELLATION_H
#define CANCELLATION_H

#include "links/descriptor.h"

#include <sys/eventfd.h>

#include <atomic>
#include <cerrno>
#include <system_error>

/// A request to stop waiting. It stays in force: it also ends every later wait. Every thread may
/// call ask() and isAsked().
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

    /// A descriptor to wait on. It becomes readable with ask() and stays readable.
    int descriptor() const
    {
        return m_event.number();
    }

private:
    std::atomic<bool> m_isAsked{false}; ///< set by any thread, never cleared
    Descriptor m_event;                 ///< constant after construction
};

#endif
