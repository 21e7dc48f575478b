#include "values/stationClock.h"

#include "session/steadyTime.h"

#include <chrono>

qint64 SystemClock::steady() const
{
    return steadyTime();
}

qint64 SystemClock::wall() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}
