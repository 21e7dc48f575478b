#ifndef SERIES_READER_H
#define SERIES_READER_H

#include "history/packedSpans.h"
#include "history/stationRuns.h"

#include <optional>

/// The runs of one era that follow each other in a query, and so the rows of one series.
struct SeriesStretch
{
    qint64 series = 0;
    std::vector<VisibleRun> runs; ///< at least one

    qint64 from() const
    {
        return runs.front().from;
    }
    qint64 until() const
    {
        return runs.back().until;
    }
};

/// Reads the rows of series. It must end before the file does. All functions throw SqliteError.
class SeriesReader
{
public:
    explicit SeriesReader(SqliteFile& file);

    /// What a query asks for, in the order of time. Eras in which the tag has no rows are left out.
    std::vector<SeriesStretch> stretches(const HistoryQuery& query);

    PackedSpans& spans()
    {
        return m_spans;
    }

    /// The rows of a pack, oldest first.
    std::vector<HistoryRow> packed(qint64 pack);

    /// The rows that are in no pack yet, oldest first. They follow the packed ones.
    std::vector<HistoryRow> fresh(qint64 series);

private:
    std::optional<qint64> seriesOf(const HistoryQuery& query, qint64 era);

    SqliteFile& m_file;
    PackedSpans m_spans;
    SqliteStatement m_packed, m_fresh, m_series;
};

/// The quality of a row in the table of fresh rows, and whether it has a value.
int rowState(const HistoryRow& row);

/// The row of sequence, time, state and value in the columns from `column` on.
HistoryRow freshRow(const SqliteStatement& statement, int column);

#endif
