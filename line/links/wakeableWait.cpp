#include "links/wakeableWait.h"

#include "wire/timeUnits.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>

namespace {

// Waking up takes the system tens of microseconds, so the last ones are spent awake.
const qint64 AWAKE = 80;

using Clock = std::chrono::steady_clock;

timespec timeOf(qint64 microseconds)
{
    timespec time = {};
    time.tv_sec = time_t(microseconds / SECOND);
    time.tv_nsec = long(microseconds % SECOND) * NANOSECONDS_PER_MICROSECOND;
    return time;
}

} // namespace

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

WakeableWait::Outcome WakeableWait::poll(int descriptor, const timespec* longest)
{
    pollfd awaited[] = {{m_wakeUp, POLLIN, 0}, {descriptor, POLLIN, 0}};
    if (ppoll(awaited, 2, longest, nullptr) <= 0) return NOTHING;
    eventfd_t count = 0;
    if (awaited[0].revents != 0) eventfd_read(m_wakeUp, &count);
    return awaited[1].revents != 0 ? READABLE : WOKEN;
}

bool WakeableWait::wait(int descriptor, qint64 microseconds)
{
    if (microseconds < 0) return poll(descriptor, nullptr) == READABLE;
    const auto end = Clock::now() + std::chrono::microseconds(microseconds);
    Outcome outcome = NOTHING;
    do {
        // Not only once: a signal ends a sleep early.
        const qint64 left =
            std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now()).count();
        const timespec asleep = timeOf(std::max<qint64>(left - AWAKE, 0));
        outcome = poll(descriptor, &asleep);
    } while (outcome == NOTHING && Clock::now() < end);
    return outcome == READABLE;
}

void WakeableWait::makePunctual()
{
    prctl(PR_SET_TIMERSLACK, 1UL, 0UL, 0UL, 0UL);
}
