#ifndef REPORT_H
#define REPORT_H

#include "requestHandler.h"

#include <ostream>

/// Lines "key value". Durations in whole microseconds; 0 where there was nothing to measure.
/// @param lateness  by how much replies left after their time, in nanoseconds
void writeReport(std::ostream& out, const ExchangeCounts& counts, std::int64_t badFrames,
                 const Durations& silences, const Durations& lateness);

#endif
