#include "history/rowQuery.h"

#include "history/seriesReader.h"

namespace {

/// The rows that are asked for, of stretch after stretch.
class RowsOfQuery
{
public:
    RowsOfQuery(const HistoryQuery& query, qint64 after, size_t most)
        : m_query(query), m_after(after), m_most(most)
    {
    }

    void read(SeriesReader& reader, const SeriesStretch& stretch);

    std::vector<HistoryRow> rows;

    bool isFull() const
    {
        return rows.size() >= m_most;
    }

private:
    void take(SeriesReader& reader, const SeriesStretch& stretch, int level,
              const PackedSpan& span);
    void add(const SeriesStretch& stretch, const std::vector<HistoryRow>& more);

    const HistoryQuery& m_query;
    const qint64 m_after;
    const size_t m_most;
};

void RowsOfQuery::add(const SeriesStretch& stretch, const std::vector<HistoryRow>& more)
{
    for (const HistoryRow& row : more) {
        if (isFull()) return;
        if (row.time < stretch.from() || row.time >= stretch.until()) continue;
        if (row.time == m_query.from && row.sequence <= m_after) continue;
        rows.push_back(row);
    }
}

void RowsOfQuery::take(SeriesReader& reader, const SeriesStretch& stretch, int level,
                       const PackedSpan& span)
{
    const bool isOutside =
        span.summary.end < stretch.from() || span.summary.begin >= stretch.until();
    if (isOutside || isFull()) return;
    if (level == 0) return add(stretch, reader.packed(span.pack));
    for (const PackedSpan& part : reader.spans().parts(stretch.series, level, span))
        take(reader, stretch, level - 1, part);
}

void RowsOfQuery::read(SeriesReader& reader, const SeriesStretch& stretch)
{
    for (const PackedSpan& span : reader.spans().top(stretch.series))
        take(reader, stretch, TOP_LEVEL, span);
    if (!isFull()) add(stretch, reader.fresh(stretch.series));
}

} // namespace

std::vector<HistoryRow> readRows(SqliteFile& file, const HistoryQuery& query, qint64 after,
                                 size_t most)
{
    SqliteTransaction transaction(file, SqliteTransaction::READ);
    SeriesReader reader(file);
    RowsOfQuery found(query, after, most);
    for (const SeriesStretch& stretch : reader.stretches(query))
        found.read(reader, stretch);
    return std::move(found.rows);
}
