#ifndef HISTORY_CAP_H
#define HISTORY_CAP_H

#include "history/sqliteFile.h"

/// What the parts of the history may take, so that the file and its log stay below the cap
/// together.
///
///     |------------------------- cap ----------------------------|
///     |  rows, up to `rowBytes`             |  growth  |   log    |
///                                            until rows   until its pages
///                                            are dropped  move into the file
struct HistoryCap
{
    static constexpr qint64 LEAST_BYTES = qint64(4) * 1024 * 1024;

    /// @param capBytes  less than LEAST_BYTES counts as that
    explicit HistoryCap(qint64 capBytes);

    qint64 rowBytes;    ///< the oldest rows are dropped beyond that
    qint64 fileBytes;   ///< the file gives pages back beyond that
    qint64 logBytes;    ///< the log never takes more
    size_t waitingRows; ///< most rows that wait for a commit
    qint64 freshRows;   ///< rows are packed beyond that
};

/// Drops the oldest rows until the file is within the cap, or until it did so for a while: the next
/// call goes on. A file above the cap gets smaller.
/// @param dropped  the rows that it dropped are added, also when it throws
/// @throws SqliteError, HistoryTrouble
void keepWithinCap(SqliteFile& file, const QString& name, const HistoryCap& cap, qint64& dropped);

/// Empties the log when it takes half of what it may.
/// @throws SqliteError; HistoryTrouble: another program reads from it and it takes too much
void keepLogSmall(SqliteFile& file, const QString& name, const HistoryCap& cap);

#endif
