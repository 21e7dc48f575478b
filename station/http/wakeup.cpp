#include "http/wakeup.h"

#include "http/httpError.h"

#include <sys/eventfd.h>

Wakeup::Wakeup() : m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
    if (m_event.number() < 0) throw systemHttpError("cannot make an event descriptor");
}

void Wakeup::wake() const
{
    // Fails only when the counter is full, and then the thread is woken anyway.
    (void)eventfd_write(m_event.number(), 1);
}

void Wakeup::clear() const
{
    eventfd_t count = 0;
    (void)eventfd_read(m_event.number(), &count);
}
