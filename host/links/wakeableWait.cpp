#include "links/wakeableWait.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

WakeableWait::WakeableWait() : m_wakeUp(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))
{
    if (m_wakeUp < 0)
        throw std::system_error(errno, std::generic_category(), "no event descriptor");
}

WakeableWait::~WakeableWait()
{
    close(m_wakeUp);
}

void WakeableWait::wake()
{
    eventfd_write(m_wakeUp, 1);
}

bool WakeableWait::wait(int descriptor, qint64 microseconds)
{
    pollfd awaited[] = {{m_wakeUp, POLLIN, 0}, {descriptor, POLLIN, 0}};
    timespec longest = {};
    longest.tv_sec = time_t(microseconds / 1000000);
    longest.tv_nsec = long(microseconds % 1000000) * 1000;
    if (ppoll(awaited, 2, microseconds < 0 ? nullptr : &longest, nullptr) <= 0) return false;
    eventfd_t count = 0;
    if (awaited[0].revents != 0) eventfd_read(m_wakeUp, &count);
    return awaited[1].revents != 0;
}

void WakeableWait::makePunctual()
{
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
}
