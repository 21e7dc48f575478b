#ifndef HISTORY_SCHEMA_H
#define HISTORY_SCHEMA_H

#include "history/sqliteFile.h"

/// The file cannot be used, and must not be changed. what() is one sentence.
struct HistoryTrouble : std::runtime_error
{
    using std::runtime_error::runtime_error;
};

/// Opens the history's file, and makes it when it is missing or empty. A file of version 1 gets
/// what it lacks: packings and identity.
///
///     runs     when the station ran, and the sequence of the last row of each run; the end of the
///              newest run moves with each commit
///     series   the rows of one tag in one era. A new era begins when the clock was set back: in
///              a series time never goes back
///     fresh    the newest rows of all series, in order of coming
///     packs    older rows, up to 256 of one series in one pack, see rowPack.h; its id is the
///              sequence of its first row
///     packings the sequence of the first row of each packing. It packed all fresh rows, so a
///              packing has all rows from its first one to before that of the next
///     identity a random number: this file and no other one
///     spans    what the rows of one pack, of 16 packs, of 256 packs ... of a series have in
///              common, see packedSpans.h
///
/// A row is in `fresh` or in a pack.
/// @throws SqliteError; HistoryTrouble: another program's file, or one of a newer station
std::unique_ptr<SqliteFile> openHistoryFile(const QString& name);

/// Opens the file beside the writer, to read it. @throws SqliteError
std::unique_ptr<SqliteFile> openHistoryForReading(const QString& name);

#endif
