#include "history/rowQuery.h"

#include "history/seriesReader.h"

namespace {

/// What is known of a tag behind the end of a run.
HistoryRow endOf(const StationRun& run)
{
    HistoryRow row;
    row.sequence = run.sequence;
    row.time = run.end;
    return row;
}

/// The rows that are asked for, of stretch after stretch.
///
///     run      |-------------|     |----------|  goes on
///     kept        5      7           6
///     rows        5      7   bad     6
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
    void endRuns(const SeriesStretch& stretch, qint64 until);

    const HistoryQuery& m_query;
    const qint64 m_after;
    const size_t m_most;
    size_t m_nextEnd = 0; ///< of the stretch's runs: the first whose end is not told
};

/// Tells the ends of the runs up to a time. Where a later era tells of the time behind a piece, the
/// piece has no end. `from` is never such an end: a run that ends there is not visible.
void RowsOfQuery::endRuns(const SeriesStretch& stretch, qint64 until)
{
    for (; m_nextEnd < stretch.runs.size() && !isFull(); ++m_nextEnd) {
        const VisibleRun& piece = stretch.runs[m_nextEnd];
        if (piece.until > until) return;
        const bool isEnd = piece.run.isOver && piece.until == piece.run.end;
        if (isEnd && piece.until < m_query.until) rows.push_back(endOf(piece.run));
    }
}

void RowsOfQuery::add(const SeriesStretch& stretch, const std::vector<HistoryRow>& more)
{
    for (const HistoryRow& row : more) {
        if (isFull()) return;
        if (row.time < stretch.from() || row.time >= stretch.until()) continue;
        endRuns(stretch, row.time);
        if (isFull()) return;
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
    m_nextEnd = 0;
    for (const PackedSpan& span : reader.spans().top(stretch.series))
        take(reader, stretch, TOP_LEVEL, span);
    if (!isFull()) add(stretch, reader.fresh(stretch.series));
    endRuns(stretch, stretch.until());
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
