#include "history/historyCap.h"

#include "history/historySchema.h"
#include "history/packedSpans.h"

#include <QFileInfo>

#include <algorithm>

namespace {

const qint64 MEBIBYTE = 1024 * 1024;
enum { LARGEST_LOG = 16, PARTS_OF_CAP = 8 }; // the first in MiB
enum { BYTES_OF_WAITING_ROW = 512, BYTES_OF_FRESH_ROW = 4096 };
enum { MOST_WAITING_ROWS = 100000, MOST_FRESH_ROWS = 65536 };
enum { STEPS = 512, PACKS_IN_STEP = 32 };

qint64 usedBytes(SqliteFile& file)
{
    return (file.number("PRAGMA page_count") - file.number("PRAGMA freelist_count")) *
           file.number("PRAGMA page_size");
}

/// The runs of which no row is left go, too, but for the newest one, which goes on.
void dropEmptyRuns(SqliteFile& file)
{
    file.execute("DELETE FROM runs WHERE id < (SELECT max(id) FROM runs) AND"
                 " sequence < coalesce((SELECT min(id) FROM packs),"
                 " (SELECT min(sequence) FROM fresh), 0)");
}

/// The oldest packing stays while a pack of it is left.
void dropEmptyPackings(SqliteFile& file)
{
    file.execute("DELETE FROM packings WHERE first < (SELECT max(first) FROM packings"
                 " WHERE first <= (SELECT min(id) FROM packs))");
}

qint64 dropOldestPacks(SqliteFile& file)
{
    SqliteTransaction transaction(file, SqliteTransaction::WRITE);
    PackedSpans spans(file);
    qint64 dropped = 0, last = 0;
    {
        SqliteStatement oldest(file, "SELECT id, series, number, rows FROM packs ORDER BY id"
                                     " LIMIT ?");
        oldest.bind(0, PACKS_IN_STEP);
        while (oldest.next()) {
            last = oldest.integer(0);
            spans.dropPack(oldest.integer(1), oldest.integer(2));
            dropped += oldest.integer(3);
        }
    }
    SqliteStatement(file, "DELETE FROM packs WHERE id <= ?").bind(0, last).run();
    dropEmptyRuns(file);
    dropEmptyPackings(file);
    transaction.commit();
    return dropped;
}

/// A step at a time, since moved pages go through the log.
void giveBack(SqliteFile& file, const HistoryCap& cap)
{
    const qint64 pageSize = file.number("PRAGMA page_size");
    const qint64 tooMany = file.number("PRAGMA page_count") - cap.fileBytes / pageSize;
    const qint64 pages = std::min(tooMany, cap.logBytes / PARTS_OF_CAP / pageSize);
    file.execute(("PRAGMA incremental_vacuum(" + QByteArray::number(pages) + ")").constData());
}

bool isTooLong(SqliteFile& file, const HistoryCap& cap)
{
    return file.number("PRAGMA page_count") * file.number("PRAGMA page_size") > cap.fileBytes &&
           file.number("PRAGMA freelist_count") > 0;
}

} // namespace

HistoryCap::HistoryCap(qint64 capBytes)
{
    const qint64 bytes = std::max(capBytes, LEAST_BYTES);
    logBytes = std::min(bytes / PARTS_OF_CAP, LARGEST_LOG * MEBIBYTE);
    fileBytes = bytes - logBytes;
    rowBytes = fileBytes - logBytes;
    waitingRows = size_t(std::min<qint64>(bytes / BYTES_OF_WAITING_ROW, MOST_WAITING_ROWS));
    freshRows = std::min<qint64>(bytes / BYTES_OF_FRESH_ROW, MOST_FRESH_ROWS);
}

void keepWithinCap(SqliteFile& file, const QString& name, const HistoryCap& cap, qint64& dropped)
{
    for (int step = 0; step < STEPS && usedBytes(file) > cap.rowBytes; ++step) {
        dropped += dropOldestPacks(file);
        keepLogSmall(file, name, cap);
    }
    if (!isTooLong(file, cap)) return;
    for (int step = 0; step < STEPS && isTooLong(file, cap); ++step) {
        giveBack(file, cap);
        keepLogSmall(file, name, cap);
    }
    file.emptyLog(); // only then the file on the disk is shorter
}

void keepLogSmall(SqliteFile& file, const QString& name, const HistoryCap& cap)
{
    const qint64 bytes = QFileInfo(name + QLatin1String("-wal")).size();
    if (bytes * 2 <= cap.logBytes || file.emptyLog() || bytes <= cap.logBytes) return;
    throw HistoryTrouble("another program keeps the history's log from being emptied");
}
