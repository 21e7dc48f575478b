#include "program/interrupt.h"

#include <chrono>
#include <csignal>
#include <optional>

namespace {

using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t stop = 0;
std::optional<Clock::time_point> end;

void requestStop(int)
{
    stop = 1;
}

} // namespace

void stopOnSignals()
{
    struct sigaction action = {};
    action.sa_handler = requestStop; // not restarting: a call that waits is to be left
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    struct sigaction before = {};
    sigaction(SIGHUP, nullptr, &before);
    if (before.sa_handler != SIG_IGN) sigaction(SIGHUP, &action, nullptr); // not under nohup
}

bool stopRequested()
{
    return stop != 0;
}

void endIn(qint64 time)
{
    end = Clock::now() + std::chrono::microseconds(time);
}

bool isToEnd()
{
    return stopRequested() || (end && Clock::now() >= *end);
}
