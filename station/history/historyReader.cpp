#include "history/historyReader.h"

#include "history/bucketQuery.h"
#include "history/historySchema.h"
#include "history/rowQuery.h"

#include <algorithm>
#include <utility>

namespace {

const qint64 END_OF_TIME = qint64(253402300800000); // the year 10000

/// Times in a range in which their differences do not overflow.
HistoryQuery bounded(HistoryQuery query)
{
    query.from = std::max<qint64>(query.from, 0);
    query.until = std::min(query.until, END_OF_TIME);
    return query;
}

} // namespace

/// After an error the next query opens the file again.
void HistoryReader::read(const std::function<void(SqliteFile&)>& query)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    try {
        if (!m_file) m_file = openHistoryForReading(m_name);
        return query(*m_file);
    } catch (const SqliteError& error) {
        if (error.isBroken()) m_isBroken = true;
    } catch (const HistoryTrouble&) {
        // The writer tells it.
    }
    close();
}

/// The statements go before their file does.
void HistoryReader::close()
{
    m_log.reset();
    m_file.reset();
}

std::vector<HistoryBucket> HistoryReader::buckets(const HistoryQuery& query)
{
    const HistoryQuery asked = bounded(query);
    std::vector<HistoryBucket> found = emptyBuckets(asked);
    read([&](SqliteFile& file) { found = readBuckets(file, asked); });
    return found;
}

std::vector<HistoryRow> HistoryReader::rows(const HistoryQuery& query, qint64 after, int most)
{
    std::vector<HistoryRow> found;
    if (most <= 0) return found;
    read([&](SqliteFile& file) { found = readRows(file, bounded(query), after, size_t(most)); });
    return found;
}

std::vector<LoggedRow> HistoryReader::rowsBehind(qint64 sequence, qint64 last, int most)
{
    std::vector<LoggedRow> found;
    if (most <= 0 || sequence >= last) return found;
    read([&](SqliteFile& file) {
        if (!m_log) m_log = std::make_unique<LogReader>(file);
        found = m_log->rowsBehind(sequence, last, size_t(most));
    });
    return found;
}

qint64 HistoryReader::oldestSequence()
{
    qint64 oldest = 0;
    read([&](SqliteFile& file) {
        oldest = file.number("SELECT coalesce((SELECT min(id) FROM packs),"
                             " (SELECT min(sequence) FROM fresh))");
    });
    return oldest;
}

std::unique_lock<std::mutex> HistoryReader::closed()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    close();
    return lock;
}

bool HistoryReader::takeBroken()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_isBroken, false);
}
