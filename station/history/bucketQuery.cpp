#include "history/bucketQuery.h"

#include "history/seriesReader.h"

#include <algorithm>

namespace {

enum { MOST_POINTS = 100000 };

void addGood(HistoryBucket& bucket, double minimum, double maximum, double last)
{
    bucket.minimum = bucket.isGood ? smallerNumber(bucket.minimum, minimum) : minimum;
    bucket.maximum = bucket.isGood ? largerNumber(bucket.maximum, maximum) : maximum;
    bucket.last = last;
    bucket.isGood = true;
}

/// Sorts the rows of one stretch into the buckets.
class StretchRows
{
public:
    StretchRows(const std::vector<HistoryBucket>& buckets, const SeriesStretch& stretch)
        : m_buckets(buckets), m_stretch(stretch), m_rows(buckets.size() + 2)
    {
    }

    void read(SeriesReader& reader);
    void addTo(std::vector<HistoryBucket>& buckets) const;

private:
    // The places of rows: before the stretch, in bucket 0, 1 ... n-1, behind the stretch.
    enum { BEFORE = 0, FIRST_BUCKET = 1 };

    size_t behind() const
    {
        return m_buckets.size() + FIRST_BUCKET;
    }

    size_t placeOf(qint64 time) const;
    void take(SeriesReader& reader, int level, const PackedSpan& span);

    const std::vector<HistoryBucket>& m_buckets;
    const SeriesStretch& m_stretch;
    std::vector<RowSummary> m_rows; ///< by place
};

size_t StretchRows::placeOf(qint64 time) const
{
    if (time < m_stretch.from()) return BEFORE;
    if (time >= m_stretch.until()) return behind();
    const auto behindTime =
        std::upper_bound(m_buckets.begin(), m_buckets.end(), time,
                         [](qint64 at, const HistoryBucket& bucket) { return at < bucket.time; });
    return size_t(behindTime - m_buckets.begin());
}

void StretchRows::take(SeriesReader& reader, int level, const PackedSpan& span)
{
    const size_t place = placeOf(span.summary.begin);
    if (place == behind()) return;
    if (span.isWhole && place == placeOf(span.summary.end)) {
        m_rows[place].add(span.summary);
    } else if (level > 0) {
        for (const PackedSpan& part : reader.spans().parts(m_stretch.series, level, span))
            take(reader, level - 1, part);
    } else {
        for (const HistoryRow& row : reader.packed(span.pack))
            m_rows[placeOf(row.time)].add(row);
    }
}

void StretchRows::read(SeriesReader& reader)
{
    for (const PackedSpan& span : reader.spans().top(m_stretch.series))
        take(reader, TOP_LEVEL, span);
    for (const HistoryRow& row : reader.fresh(m_stretch.series))
        m_rows[placeOf(row.time)].add(row);
}

/// A value holds from its row to the next row or the end of the run, whatever comes first:
///
///     run       |----------------------|     |-------------------|
///     row         5         7     bad              8
///     bucket    |     |     |     |     |     |     |     |     |
///     last      5     5     7     7     null  null  8     8
void StretchRows::addTo(std::vector<HistoryBucket>& buckets) const
{
    RowSummary before = m_rows[BEFORE];
    auto run = m_stretch.runs.begin();
    const size_t first = placeOf(m_stretch.from());
    const size_t last = placeOf(m_stretch.until() - 1);
    for (size_t place = first; place <= last; ++place) {
        HistoryBucket& bucket = buckets[place - FIRST_BUCKET];
        const RowSummary& rows = m_rows[place];
        const qint64 begin = std::max(bucket.time, m_stretch.from());
        while (run->until <= begin)
            ++run; // the stretch ends behind `begin`, so there is one
        const bool holds = before.rows > 0 && before.endsGood && run->from <= begin &&
                           run->run.begin <= before.end;
        if (holds && (rows.rows == 0 || rows.begin > begin))
            addGood(bucket, before.last, before.last, before.last);
        if (rows.isGood) addGood(bucket, rows.minimum, rows.maximum, rows.last);
        before.add(rows);
    }
}

} // namespace

std::vector<HistoryBucket> emptyBuckets(const HistoryQuery& query)
{
    if (query.until <= query.from || query.points < 1) return {};
    const qint64 span = query.until - query.from;
    const qint64 points = std::min<qint64>({query.points, span, MOST_POINTS});
    std::vector<HistoryBucket> buckets(static_cast<size_t>(points));
    for (qint64 i = 0; i < points; ++i) // in two parts: the product may not fit into 64 bits
        buckets[size_t(i)].time = query.from + span / points * i + span % points * i / points;
    return buckets;
}

std::vector<HistoryBucket> readBuckets(SqliteFile& file, const HistoryQuery& query)
{
    std::vector<HistoryBucket> buckets = emptyBuckets(query);
    if (buckets.empty()) return buckets;
    SqliteTransaction transaction(file, SqliteTransaction::READ);
    SeriesReader reader(file);
    for (const SeriesStretch& stretch : reader.stretches(query)) {
        StretchRows rows(buckets, stretch);
        rows.read(reader);
        rows.addTo(buckets);
    }
    return buckets;
}
