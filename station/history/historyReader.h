#ifndef HISTORY_READER_H
#define HISTORY_READER_H

#include "history/historyRow.h"
#include "history/logReader.h"

#include <functional>
#include <mutex>

/// Reads the history's file beside its writer, over a connection of its own. Any thread calls it;
/// one query runs at a time. It tells what was committed. A file that cannot be read tells nothing.
class HistoryReader
{
public:
    explicit HistoryReader(QString name) : m_name(std::move(name)) {}

    std::vector<HistoryBucket> buckets(const HistoryQuery& query);
    std::vector<HistoryRow> rows(const HistoryQuery& query, qint64 after, int most);

    /// As of SampleLog.
    std::vector<LoggedRow> rowsBehind(qint64 sequence, qint64 last, int most);
    qint64 oldestSequence();

    /// Closes the file, and keeps it closed while the lock is held. The writer holds it while it
    /// makes or moves a file: a connection to a file that lost its name deletes, when it closes,
    /// the log of the file that has the name then.
    std::unique_lock<std::mutex> closed();

    /// Whether a query found the file broken since the last call.
    bool takeBroken();

private:
    void read(const std::function<void(SqliteFile&)>& query);
    void close();

    const QString m_name;
    std::mutex m_mutex;                 ///< guards all members below
    std::unique_ptr<SqliteFile> m_file; ///< null: not open
    std::unique_ptr<LogReader> m_log;   ///< of m_file; null: nobody asked for it
    bool m_isBroken = false;
};

#endif
