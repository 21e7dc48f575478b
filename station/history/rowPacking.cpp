#include "history/rowPacking.h"

#include "history/rowPack.h"
#include "history/seriesReader.h"

#include <algorithm>

namespace {

struct Pack
{
    qint64 series = 0;
    qint64 number = 0; ///< in the series
    qint64 first = 0;  ///< the sequence of its first row
    RowSummary summary;
    QByteArray data;
};

/// Puts rows together that follow each other in a series.
class PackMaker
{
public:
    explicit PackMaker(PackedSpans& spans) : m_spans(spans) {}

    void add(qint64 series, const HistoryRow& row)
    {
        if (series != m_series || m_rows.size() == ROWS_IN_PACK) finish();
        if (series != m_series) m_number = m_spans.nextNumber(series);
        m_series = series;
        m_rows.push_back(row);
    }

    /// The packs in the order in which their rows came.
    std::vector<Pack> packs()
    {
        finish();
        std::sort(m_packs.begin(), m_packs.end(),
                  [](const Pack& a, const Pack& b) { return a.first < b.first; });
        return std::move(m_packs);
    }

private:
    void finish()
    {
        if (m_rows.empty()) return;
        Pack pack;
        pack.series = m_series;
        pack.number = m_number++;
        pack.first = m_rows.front().sequence;
        for (const HistoryRow& row : m_rows)
            pack.summary.add(row);
        pack.data = packedRows(m_rows);
        m_packs.push_back(pack);
        m_rows.clear();
    }

    PackedSpans& m_spans;
    qint64 m_series = -1;
    qint64 m_number = 0;
    std::vector<HistoryRow> m_rows;
    std::vector<Pack> m_packs;
};

} // namespace

/// What a transaction without a commit did is undone.
bool packFreshRows(SqliteFile& file, const std::atomic<bool>& isHurried)
{
    SqliteTransaction transaction(file, SqliteTransaction::WRITE);
    PackedSpans spans(file);
    PackMaker maker(spans);
    SqliteStatement fresh(file, "SELECT series, sequence, time, state, value FROM fresh"
                                " ORDER BY series, sequence");
    while (!isHurried && fresh.next())
        maker.add(fresh.integer(0), freshRow(fresh, 1));
    SqliteStatement insert(
        file, "INSERT INTO packs (id, series, number, rows, data) VALUES (?, ?, ?, ?, ?)");
    for (const Pack& pack : maker.packs()) {
        if (isHurried) return false;
        insert.bind(0, pack.first).bind(1, pack.series).bind(2, pack.number);
        insert.bind(3, pack.summary.rows).bindBlob(4, pack.data).run();
        spans.addPack(pack.series, pack.number, pack.first, pack.summary);
    }
    if (isHurried) return false;
    file.execute("INSERT INTO packings (first) SELECT sequence FROM fresh"
                 " ORDER BY sequence LIMIT 1;"
                 "DELETE FROM fresh");
    transaction.commit();
    return true;
}
