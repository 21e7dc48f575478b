#include "report.h"

#include <gtest/gtest.h>

#include <map>
#include <sstream>

namespace {

std::map<std::string, long> reported(const ExchangeCounts& counts, const Durations& silences,
                                     const Durations& lateness = Durations())
{
    std::stringstream text;
    writeReport(text, counts, {9, 10}, silences, lateness);
    std::map<std::string, long> lines;
    std::string key;
    for (long value = 0; text >> key >> value;)
        lines[key] = value;
    return lines;
}

} // namespace

TEST(Report, HasALineForEachCount)
{
    ExchangeCounts counts;
    counts.requests = 1;
    counts.replies = 2;
    counts.broadcasts = 3;
    counts.foreign = 4;
    counts.silent = 5;
    counts.stalled = 6;
    counts.late = 7;
    counts.refused = 8;
    const char* const keys[FAULT_KINDS] = {
        "drop",  "drop_request", "corrupt",     "truncate",      "duplicate",
        "delay", "stray_before", "stray_after", "wrong_station", "exception"};
    for (std::size_t kind = 0; kind < FAULT_KINDS; ++kind)
        counts.faults[kind] = 100 + std::int64_t(kind);
    std::map<std::string, long> lines = reported(counts, Durations());
    EXPECT_EQ(1, lines["requests"]);
    EXPECT_EQ(2, lines["replies"]);
    EXPECT_EQ(3, lines["broadcasts"]);
    EXPECT_EQ(4, lines["foreign"]);
    EXPECT_EQ(5, lines["silent"]);
    EXPECT_EQ(6, lines["stalled"]);
    EXPECT_EQ(7, lines["late"]);
    EXPECT_EQ(8, lines["refused"]);
    EXPECT_EQ(9, lines["bad_frames"]);
    EXPECT_EQ(10, lines["echoed"]);
    for (std::size_t kind = 0; kind < FAULT_KINDS; ++kind)
        EXPECT_EQ(100 + long(kind), lines[keys[kind]]) << keys[kind];
}

TEST(Report, SilencesAreRoundedDownToMicroseconds)
{
    Durations silences;
    for (const std::int64_t ns : {1749999, 2000500, -1})
        silences.add(ns);
    std::map<std::string, long> lines = reported(ExchangeCounts(), silences);
    EXPECT_EQ(3, lines["silence_count"]);
    EXPECT_EQ(-1, lines["silence_min_us"]);
    EXPECT_EQ(1749, lines["silence_median_us"]);
    EXPECT_EQ(2000, lines["silence_p99_us"]);
}

TEST(Report, SilencesAndLatenessHaveTheirOwnLines)
{
    Durations silences;
    for (const std::int64_t ns : {3000, 5000, 4000})
        silences.add(ns);
    Durations lateness;
    for (const std::int64_t ns : {70000, 60000})
        lateness.add(ns);
    std::map<std::string, long> lines = reported(ExchangeCounts(), silences, lateness);
    EXPECT_EQ(3, lines["silence_count"]);
    EXPECT_EQ(3, lines["silence_min_us"]);
    EXPECT_EQ(4, lines["silence_median_us"]);
    EXPECT_EQ(5, lines["silence_p99_us"]);
    EXPECT_EQ(2, lines["lateness_count"]);
    EXPECT_EQ(60, lines["lateness_min_us"]);
    EXPECT_EQ(60, lines["lateness_median_us"]);
    EXPECT_EQ(70, lines["lateness_p99_us"]);
}
