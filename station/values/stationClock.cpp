#include "values/stationClock.h"

#include <chrono>
#include <ctime>

qint64 SystemClock::steady() const
{
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now); // CLOCK_MONOTONIC stands still while the machine sleeps
    return qint64(now.tv_sec) * 1000000 + now.tv_nsec / 1000;
}

qint64 SystemClock::wall() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}
