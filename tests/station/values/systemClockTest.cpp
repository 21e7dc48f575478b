#include "values/stationClock.h"

#include "timeZone.h"

#include <gtest/gtest.h>

// The clock that every time of the station comes from.

namespace {

/// Of the system's own call, which knows no zones.
qint64 utcMs()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return qint64(now.tv_sec) * 1000 + now.tv_nsec / 1000000;
}

} // namespace

TEST(SystemClock, TellsUtcInEachTimeZone)
{
    enum { HOUR_S = 3600 };
    static const std::pair<const char*, int> zones[] = {{"UTC0", 0}, {"JST-9", 9}, {"EST5", -5}};
    const SystemClock clock;
    for (const auto& [zone, hours] : zones) {
        const TimeZone here(zone);
        const qint64 before = utcMs();
        const qint64 told = clock.wall();
        EXPECT_LE(before, told) << zone;
        EXPECT_LE(told, utcMs()) << zone;
        const std::time_t time = std::time_t(told / 1000);
        EXPECT_EQ(hours * HOUR_S, std::localtime(&time)->tm_gmtoff) << "the zone is not set";
    }
}
