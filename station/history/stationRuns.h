#ifndef STATION_RUNS_H
#define STATION_RUNS_H

#include "history/sqliteFile.h"

#include <vector>

/// A time without a break in which the station ran.
struct StationRun
{
    qint64 era = 0;
    qint64 begin = 0, end = 0; ///< ms since 1970
    qint64 sequence = 0;       ///< of the last row until its end
    bool isOver = false;       ///< another run follows it
};

/// A piece of a run of which the history tells.
struct VisibleRun
{
    qint64 from = 0, until = 0; ///< of the piece, ms since 1970
    StationRun run;
};

/// The time that the history tells of, from `from` to before `until`, in the order of time, without
/// overlaps.
///
/// When the clock was set back, a time came twice. The history then tells of the later era:
///
///     era 1   |-------run-------------|  clock set back
///     era 2          |--run--|   |--run---------
///     told    |--1---|---2---|-1-|------2-------
///
/// A clock that was far in the past for a moment, as on a machine without a battery, hides nothing
/// but that moment of that past.
/// @throws SqliteError
std::vector<VisibleRun> visibleRuns(SqliteFile& file, qint64 from, qint64 until);

/// The same for runs in the order of coming.
std::vector<VisibleRun> visibleRuns(const std::vector<StationRun>& runs, qint64 from, qint64 until);

#endif
