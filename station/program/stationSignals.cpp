#include "program/stationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t isStop = 0;   ///< set by the handler
volatile std::sig_atomic_t isReload = 0; ///< set by the handler, cleared by the main thread
int signalled = -1;                      ///< eventfd; constant once the handlers are set

void note(int number)
{
    const int before = errno;
    (number == SIGHUP ? isReload : isStop) = 1;
    const eventfd_t one = 1;
    (void)!::write(signalled, &one, sizeof one);
    errno = before;
}

} // namespace

void takeStationSignals()
{
    signalled = eventfd(0, EFD_CLOEXEC);
    std::signal(SIGPIPE, SIG_IGN);
    struct sigaction action = {};
    action.sa_handler = note;
    action.sa_flags = SA_RESTART;
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaction(number, &action, nullptr);
}

StationOrder nextStationOrder()
{
    while (isStop == 0 && isReload == 0) {
        eventfd_t count = 0;
        (void)!::read(signalled, &count, sizeof count);
    }
    if (isStop != 0) return STOP_STATION;
    isReload = 0;
    return RELOAD_STATION;
}
