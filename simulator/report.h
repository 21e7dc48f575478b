#ifndef REPORT_H
#define REPORT_H

#include "serverLoop.h"

#include <ostream>

/// Counts of what came over the line besides requests.
struct LineCounts
{
    std::int64_t badFrames = 0;
    std::int64_t echoedBytes = 0;
};

/// Writes lines "key value". Durations are whole microseconds; 0 when nothing was measured.
/// @param lateness  by how much replies left after their time, in nanoseconds
void writeReport(std::ostream& out, const ExchangeCounts& counts, const LineCounts& line,
                 const Durations& silences, const Durations& lateness);

/// Writes the report of a run that is over.
void writeReport(std::ostream& out, const RequestHandler& handler, const ServerLoop& loop,
                 std::int64_t echoedBytes);

#endif
