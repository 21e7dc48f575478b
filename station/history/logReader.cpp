#include "history/logReader.h"

#include "history/rowPack.h"
#include "history/seriesReader.h"

#include <sqlite3.h>

#include <algorithm>
#include <limits>

namespace {

const qint64 END_OF_SEQUENCES = std::numeric_limits<qint64>::max();

qint64 numberOf(SqliteStatement& statement, qint64 parameter, qint64 otherwise)
{
    const bool isThere = statement.bind(0, parameter).next();
    const qint64 number = isThere ? statement.integer(0) : otherwise;
    statement.reset();
    return number;
}

} // namespace

LogReader::LogReader(SqliteFile& file)
    : m_file(file),
      m_packing(file, "SELECT first FROM packings WHERE first <= ? ORDER BY first DESC LIMIT 1"),
      m_nextPacking(file, "SELECT first FROM packings WHERE first > ? ORDER BY first LIMIT 1"),
      m_packs(file, "SELECT series, data FROM packs WHERE id >= ? AND id < ? ORDER BY id"),
      m_fresh(file, "SELECT series, sequence, time, state, value FROM fresh"
                    " WHERE sequence > ? AND sequence <= ? ORDER BY sequence LIMIT ?"),
      m_name(file, "SELECT link, tag FROM series WHERE id = ?")
{
}

std::vector<LoggedRow> LogReader::rowsBehind(qint64 sequence, qint64 last, size_t most)
{
    SqliteTransaction transaction(m_file, SqliteTransaction::READ);
    std::vector<LoggedRow> rows;
    while (rows.size() < most && sequence < last && openPacking(sequence + 1)) {
        addPacked(rows, sequence, last, most);
        sequence = m_end - 1;
    }
    if (rows.size() < most) addFresh(rows, sequence, last, most);
    return rows;
}

/// Makes the packing present that has this sequence, or else the next one. @return false: all rows
/// from it on are fresh
bool LogReader::openPacking(qint64 sequence)
{
    const qint64 oldest = m_file.number("SELECT min(id) FROM packs");
    if (sequence >= m_first && sequence < m_end && oldest == m_oldest) return true;
    m_oldest = oldest;
    const qint64 fresh = m_file.number("SELECT min(sequence) FROM fresh");
    const qint64 freshFirst =
        fresh > 0 ? fresh : m_file.number("SELECT max(sequence) FROM runs") + 1;
    if (sequence >= freshFirst) return false;
    qint64 first = numberOf(m_packing, sequence, 0);
    if (first == 0) first = numberOf(m_nextPacking, sequence, 0);
    if (first == 0) return false;
    readPacking(first, numberOf(m_nextPacking, first, freshFirst));
    return true;
}

void LogReader::readPacking(qint64 first, qint64 end)
{
    m_first = m_end = 0;
    m_rows.clear();
    m_packs.bind(0, first).bind(1, end);
    while (m_packs.next()) {
        const qint64 series = m_packs.integer(0);
        nameOf(series);
        const auto packed = unpackedRows(m_packs.blob(1));
        if (!packed) throw SqliteError(SQLITE_CORRUPT, "a pack of rows is damaged");
        for (const HistoryRow& row : *packed)
            m_rows.push_back({row, series});
    }
    std::sort(m_rows.begin(), m_rows.end(), [](const PackedRow& a, const PackedRow& b) {
        return a.row.sequence < b.row.sequence;
    });
    m_first = first;
    m_end = end;
}

void LogReader::addPacked(std::vector<LoggedRow>& rows, qint64 sequence, qint64 last,
                          size_t most) const
{
    auto row = std::upper_bound(
        m_rows.begin(), m_rows.end(), sequence,
        [](qint64 before, const PackedRow& next) { return before < next.row.sequence; });
    for (; row != m_rows.end() && row->row.sequence <= last && rows.size() < most; ++row)
        rows.push_back(loggedRow(row->row, m_names[row->series]));
}

void LogReader::addFresh(std::vector<LoggedRow>& rows, qint64 sequence, qint64 last, size_t most)
{
    m_first = m_end = 0;
    m_rows = std::vector<PackedRow>();
    m_fresh.bind(0, sequence).bind(1, last).bind(2, qint64(most - rows.size()));
    while (m_fresh.next())
        rows.push_back(loggedRow(freshRow(m_fresh, 1), nameOf(m_fresh.integer(0))));
}

const LogReader::SeriesName& LogReader::nameOf(qint64 series)
{
    const auto known = m_names.constFind(series);
    if (known != m_names.constEnd()) return *known;
    SeriesName name;
    if (m_name.bind(0, series).next()) {
        name.link = QString::fromUtf8(m_name.blob(0));
        name.tag = QString::fromUtf8(m_name.blob(1));
    }
    m_name.reset();
    return *m_names.insert(series, name);
}

LoggedRow LogReader::loggedRow(const HistoryRow& row, const SeriesName& name)
{
    LoggedRow logged;
    logged.sequence = row.sequence;
    logged.sample.link = name.link;
    logged.sample.tag = name.tag;
    logged.sample.time = row.time;
    logged.sample.value = row.value;
    logged.sample.hasValue = row.hasValue;
    logged.sample.quality = row.quality;
    return logged;
}
