#include "verbs/interrupt.h"

#include <csignal>

namespace {

volatile std::sig_atomic_t stop = 0;

void requestStop(int)
{
    stop = 1;
}

} // namespace

void stopOnSignals()
{
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
}

bool stopRequested()
{
    return stop != 0;
}
