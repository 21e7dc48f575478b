#ifndef REPORT_H
#define REPORT_H

#include "serverLoop.h"

#include <ostream>

/// What came over the line besides requests.
struct LineCounts
{
    std::int64_t badFrames = 0;
    std::int64_t echoedBytes = 0;
};

/// Lines "key value". Durations in whole microseconds; 0 where there was nothing to measure.
/// @param lateness  by how much replies left after their time, in nanoseconds
void writeReport(std::ostream& out, const ExchangeCounts& counts, const LineCounts& line,
                 const Durations& silences, const Durations& lateness);

/// The same of a run that is over.
void writeReport(std::ostream& out, const RequestHandler& handler, const ServerLoop& loop,
                 std::int64_t echoedBytes);

#endif
