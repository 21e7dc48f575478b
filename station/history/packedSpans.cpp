#include "history/packedSpans.h"

#include <limits>

PackedSpans::PackedSpans(const SqliteFile& file)
    : m_read(file, "SELECT number, whole, pack, rows, begin, end, good, ends_good, minimum,"
                   " maximum, last FROM spans"
                   " WHERE series = ? AND level = ? AND number >= ? AND number < ?"
                   " ORDER BY number"),
      m_write(file, "INSERT OR REPLACE INTO spans (series, level, number, whole, pack, rows, begin,"
                    " end, good, ends_good, minimum, maximum, last)"
                    " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
      m_remove(file, "DELETE FROM spans WHERE series = ? AND level = ? AND number = ?"),
      m_unwhole(file, "UPDATE spans SET whole = 0 WHERE series = ? AND level = ? AND number = ?"),
      m_last(file, "SELECT number FROM spans WHERE series = ? AND level = 0"
                   " ORDER BY number DESC LIMIT 1")
{
}

std::vector<PackedSpan> PackedSpans::read(qint64 series, int level, qint64 first, qint64 end)
{
    m_read.bind(0, series).bind(1, level).bind(2, first).bind(3, end);
    std::vector<PackedSpan> spans;
    while (m_read.next()) {
        PackedSpan span;
        span.number = m_read.integer(0);
        span.isWhole = m_read.integer(1) != 0;
        span.pack = m_read.integer(2);
        span.summary.rows = m_read.integer(3);
        span.summary.begin = m_read.integer(4);
        span.summary.end = m_read.integer(5);
        span.summary.isGood = m_read.integer(6) != 0;
        span.summary.endsGood = m_read.integer(7) != 0;
        span.summary.minimum = m_read.number(8);
        span.summary.maximum = m_read.number(9);
        span.summary.last = m_read.number(10);
        spans.push_back(span);
    }
    return spans;
}

std::vector<PackedSpan> PackedSpans::top(qint64 series)
{
    return read(series, TOP_LEVEL, 0, std::numeric_limits<qint64>::max());
}

std::vector<PackedSpan> PackedSpans::parts(qint64 series, int level, const PackedSpan& span)
{
    return read(series, level - 1, span.number << SPAN_BITS, (span.number + 1) << SPAN_BITS);
}

qint64 PackedSpans::nextNumber(qint64 series)
{
    const bool isThere = m_last.bind(0, series).next();
    const qint64 number = isThere ? m_last.integer(0) + 1 : 0;
    m_last.reset();
    return number;
}

void PackedSpans::write(qint64 series, int level, const PackedSpan& span)
{
    const RowSummary& summary = span.summary;
    m_write.bind(0, series).bind(1, level).bind(2, span.number).bind(3, span.isWhole);
    m_write.bind(4, span.pack).bind(5, summary.rows).bind(6, summary.begin).bind(7, summary.end);
    m_write.bind(8, summary.isGood).bind(9, summary.endsGood);
    m_write.bindNumber(10, summary.minimum).bindNumber(11, summary.maximum);
    m_write.bindNumber(12, summary.last).run();
}

void PackedSpans::addPack(qint64 series, qint64 number, qint64 pack, const RowSummary& summary)
{
    PackedSpan span;
    span.number = number;
    span.pack = pack;
    span.summary = summary;
    write(series, 0, span);
    for (int level = 1; level <= TOP_LEVEL; ++level) {
        const qint64 above = number >> (level * SPAN_BITS);
        std::vector<PackedSpan> found = read(series, level, above, above + 1);
        PackedSpan wider = found.empty() ? PackedSpan() : found.front();
        wider.number = above;
        wider.summary.add(summary);
        write(series, level, wider);
    }
}

void PackedSpans::remove(qint64 series, int level, qint64 number)
{
    m_remove.bind(0, series).bind(1, level).bind(2, number).run();
}

/// A span that loses its last pack goes; one that loses an earlier pack stays, no longer whole.
void PackedSpans::dropPack(qint64 series, qint64 number)
{
    const bool isLast = nextNumber(series) == number + 1;
    remove(series, 0, number);
    for (int level = 1; level <= TOP_LEVEL; ++level) {
        const int bits = level * SPAN_BITS;
        const qint64 above = number >> bits;
        const bool isEmpty = isLast || (number + 1) >> bits != above;
        if (isEmpty)
            remove(series, level, above);
        else
            m_unwhole.bind(0, series).bind(1, level).bind(2, above).run();
    }
}
