#include "report.h"

#include <algorithm>
#include <string>

namespace {

const std::int64_t MICROSECOND_NS = 1000;
const double MEDIAN = 0.5;
const double P99 = 0.99;

/// Rounds toward minus infinity, so that a silence never looks longer than it was.
std::int64_t microseconds(std::int64_t ns)
{
    const std::int64_t whole = ns / MICROSECOND_NS;
    return ns % MICROSECOND_NS < 0 ? whole - 1 : whole;
}

void writeDurations(std::ostream& out, const char* key, const Durations& durations)
{
    out << key << "_count " << durations.count() << '\n'
        << key << "_min_us " << microseconds(durations.quantile(0)) << '\n'
        << key << "_median_us " << microseconds(durations.quantile(MEDIAN)) << '\n'
        << key << "_p99_us " << microseconds(durations.quantile(P99)) << '\n';
}

std::string keyOf(Fault fault)
{
    std::string key = faultName(fault);
    std::replace(key.begin(), key.end(), '-', '_');
    return key;
}

} // namespace

void writeReport(std::ostream& out, const ExchangeCounts& counts, const LineCounts& line,
                 const Durations& silences, const Durations& lateness)
{
    out << "requests " << counts.requests << '\n'
        << "replies " << counts.replies << '\n'
        << "broadcasts " << counts.broadcasts << '\n'
        << "bad_frames " << line.badFrames << '\n'
        << "foreign " << counts.foreign << '\n'
        << "silent " << counts.silent << '\n'
        << "stalled " << counts.stalled << '\n'
        << "late " << counts.late << '\n'
        << "refused " << counts.refused << '\n'
        << "echoed " << line.echoedBytes << '\n';
    for (int kind = 0; kind < FAULT_KINDS; ++kind)
        out << keyOf(static_cast<Fault>(kind)) << ' ' << counts.faults[std::size_t(kind)] << '\n';
    writeDurations(out, "silence", silences);
    writeDurations(out, "lateness", lateness);
}

void writeReport(std::ostream& out, const RequestHandler& handler, const ServerLoop& loop,
                 std::int64_t echoedBytes)
{
    writeReport(out, handler.counts(), {loop.badFrames(), echoedBytes}, handler.silences(),
                loop.lateness());
}
