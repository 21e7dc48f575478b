#include "program/stationSignals.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace {

enum { LONGEST_WAIT_MS = 60000 };

// A signal handler has no argument that could name anything else than what lies here.
volatile std::sig_atomic_t isStop = 0;   ///< set by a handler
volatile std::sig_atomic_t isReload = 0; ///< set by a handler, cleared by the main thread
int orders = -1;                         ///< an eventfd; constant once a handler is set

void wakeMainThread()
{
    const int before = errno;
    const eventfd_t one = 1;
    (void)!::write(orders, &one, sizeof one);
    errno = before;
}

void orderStop(int)
{
    isStop = 1;
    wakeMainThread();
}

void orderReload(int)
{
    isReload = 1;
    wakeMainThread();
}

void take(int number, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

bool isIgnored(int number)
{
    struct sigaction before = {};
    sigaction(number, nullptr, &before);
    return before.sa_handler == SIG_IGN;
}

} // namespace

void takeStationSignals(bool canReload)
{
    orders = eventfd(0, EFD_CLOEXEC);
    take(SIGPIPE, SIG_IGN);
    take(SIGINT, orderStop);
    take(SIGTERM, orderStop);
    if (canReload)
        take(SIGHUP, orderReload);
    else if (!isIgnored(SIGHUP))
        take(SIGHUP, orderStop);
}

StationOrder nextStationOrder()
{
    while (isStop == 0 && isReload == 0) {
        // A signal ends poll(), also for the thread sanitizer, which holds signals back in read().
        pollfd waiting = {orders, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, LONGEST_WAIT_MS);
        if (ready == 0) return NO_ORDER;
        if (ready < 0) continue;
        eventfd_t count = 0;
        (void)!::read(orders, &count, sizeof count);
    }
    if (isStop != 0) return STOP_STATION;
    isReload = 0;
    return RELOAD_STATION;
}
