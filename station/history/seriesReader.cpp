#include "history/seriesReader.h"

#include "history/rowPack.h"

#include <sqlite3.h>

namespace {

enum { QUALITY_MASK = 3, HAS_VALUE = 4 };

} // namespace

int rowState(const HistoryRow& row)
{
    return row.quality | (row.hasValue ? HAS_VALUE : 0);
}

HistoryRow freshRow(const SqliteStatement& statement, int column)
{
    HistoryRow row;
    row.sequence = statement.integer(column);
    row.time = statement.integer(column + 1);
    const qint64 state = statement.integer(column + 2);
    row.quality = Quality(state & QUALITY_MASK);
    row.hasValue = (state & HAS_VALUE) != 0;
    row.value = row.hasValue ? statement.number(column + 3) : 0;
    return row;
}

SeriesReader::SeriesReader(SqliteFile& file)
    : m_file(file),
      m_spans(file),
      m_packed(file, "SELECT data FROM packs WHERE id = ?"),
      m_fresh(file, "SELECT sequence, time, state, value FROM fresh WHERE series = ?"
                    " ORDER BY sequence"),
      m_series(file, "SELECT id FROM series WHERE link = ? AND tag = ? AND era = ?")
{
}

std::optional<qint64> SeriesReader::seriesOf(const HistoryQuery& query, qint64 era)
{
    m_series.bindText(0, query.link).bindText(1, query.tag).bind(2, era);
    if (!m_series.next()) return std::nullopt;
    const qint64 series = m_series.integer(0);
    m_series.reset();
    return series;
}

std::vector<SeriesStretch> SeriesReader::stretches(const HistoryQuery& query)
{
    std::vector<SeriesStretch> all;
    std::optional<qint64> era;
    for (const VisibleRun& run : visibleRuns(m_file, query.from, query.until)) {
        if (era != run.run.era) all.emplace_back();
        era = run.run.era;
        all.back().runs.push_back(run);
    }
    std::vector<SeriesStretch> found;
    for (SeriesStretch& stretch : all) {
        const std::optional<qint64> series = seriesOf(query, stretch.runs.front().run.era);
        if (!series) continue;
        stretch.series = *series;
        found.push_back(std::move(stretch));
    }
    return found;
}

std::vector<HistoryRow> SeriesReader::packed(qint64 pack)
{
    if (!m_packed.bind(0, pack).next())
        throw SqliteError(SQLITE_CORRUPT, "a pack of rows is missing");
    const std::optional<std::vector<HistoryRow>> rows = unpackedRows(m_packed.blob(0));
    m_packed.reset();
    if (!rows) throw SqliteError(SQLITE_CORRUPT, "a pack of rows is damaged");
    return *rows;
}

std::vector<HistoryRow> SeriesReader::fresh(qint64 series)
{
    m_fresh.bind(0, series);
    std::vector<HistoryRow> rows;
    while (m_fresh.next())
        rows.push_back(freshRow(m_fresh, 0));
    return rows;
}
