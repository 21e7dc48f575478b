#ifndef WAKEUP_H
#define WAKEUP_H

#include "links/descriptor.h"

/// Ends a thread's wait in an epoll. Any thread may call wake(); several calls before the thread
/// looks count as one.
class Wakeup
{
public:
    /// @throws HttpError when the system has no descriptor left
    Wakeup();

    void wake() const;

    /// Makes the next wait wait again.
    void clear() const;

    int descriptor() const
    {
        return m_event.number();
    }

private:
    const Descriptor m_event;
};

#endif
