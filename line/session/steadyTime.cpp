#include "session/steadyTime.h"

#include "wire/timeUnits.h"

#include <ctime>

qint64 steadyTime()
{
    timespec now = {};
    clock_gettime(CLOCK_BOOTTIME, &now); // CLOCK_MONOTONIC stands still while the machine sleeps
    return qint64(now.tv_sec) * SECOND + now.tv_nsec / NANOSECONDS_PER_MICROSECOND;
}
