#include "history/stationRuns.h"

#include <algorithm>
#include <iterator>

namespace {

using Pieces = std::vector<VisibleRun>;

/// Appends what of the run none of the pieces covers. Begins at the first piece that may cover a
/// part of it, and returns that for the next run of the same era.
size_t appendUncovered(const StationRun& run, qint64 from, qint64 until, const Pieces& covered,
                       size_t next, Pieces& to)
{
    qint64 at = std::max(run.begin, from);
    const qint64 end = std::min(run.end, until);
    while (next < covered.size() && covered[next].until <= at)
        ++next;
    for (size_t i = next; at < end; ++i) {
        const qint64 gapEnd = i < covered.size() ? std::min(covered[i].from, end) : end;
        if (at < gapEnd) to.push_back({at, gapEnd, run});
        if (i >= covered.size()) break;
        at = std::max(at, covered[i].until);
    }
    return next;
}

bool beginsBefore(const VisibleRun& a, const VisibleRun& b)
{
    return a.from < b.from;
}

} // namespace

/// From the newest era to the oldest, each gets what the later ones left.
std::vector<VisibleRun> visibleRuns(const std::vector<StationRun>& runs, qint64 from, qint64 until)
{
    Pieces covered;
    size_t end = runs.size();
    while (end > 0) {
        size_t begin = end;
        while (begin > 0 && runs[begin - 1].era == runs[end - 1].era)
            --begin;
        Pieces pieces;
        size_t next = 0;
        for (size_t i = begin; i < end; ++i)
            next = appendUncovered(runs[i], from, until, covered, next, pieces);
        Pieces all;
        std::merge(covered.begin(), covered.end(), pieces.begin(), pieces.end(),
                   std::back_inserter(all), beginsBefore);
        covered = std::move(all);
        end = begin;
    }
    return covered;
}

std::vector<VisibleRun> visibleRuns(SqliteFile& file, qint64 from, qint64 until)
{
    SqliteStatement query(
        file, "SELECT era, begin, end, sequence, id < (SELECT max(id) FROM runs) FROM runs"
              " WHERE end > ? AND begin < ? ORDER BY id");
    query.bind(0, from).bind(1, until);
    std::vector<StationRun> runs;
    while (query.next())
        runs.push_back({query.integer(0), query.integer(1), query.integer(2), query.integer(3),
                        query.integer(4) != 0});
    return visibleRuns(runs, from, until);
}
