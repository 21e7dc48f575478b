#ifndef PACKED_SPANS_H
#define PACKED_SPANS_H

#include "history/rowSummary.h"
#include "history/sqliteFile.h"

// What the packed rows of a series have in common, at levels: a query takes a span as a whole when
// it lies in one bucket, and opens only the spans that lie across the edge of a bucket. So it costs
// by its buckets, not by its rows.
//
//     level 4                        one span: 65,536 packs
//     level 3            ... 16 of those below
//     level 2         |  256 packs              |
//     level 1         | 16 packs |  ...         |
//     level 0         | pack | pack | pack | ...          number 0, 1, 2 ... in the series
//     rows            256 at most in a pack
//
//     buckets         ---|--------|---------------|---
//                      ^ opened    ^ opened          down to the rows of a pack
//
// The number of a span is the number of its first pack without the level's low bits. A span of a
// level above 0 grows with each new pack. When its oldest packs were dropped it is no longer whole:
// what it says holds rows that are gone, so it is always opened.
enum { TOP_LEVEL = 4, SPAN_BITS = 4, SPANS_IN_SPAN = 1 << SPAN_BITS, ROWS_IN_PACK = 256 };

struct PackedSpan
{
    qint64 number = 0;
    bool isWhole = true;
    qint64 pack = 0; ///< of level 0: the pack's id
    RowSummary summary;
};

/// Reads and writes the spans of a file. It must end before the file does. All functions throw
/// SqliteError.
class PackedSpans
{
public:
    explicit PackedSpans(const SqliteFile& file);

    /// The spans of the top level.
    std::vector<PackedSpan> top(qint64 series);

    /// The spans that a span of a level above 0 is made of.
    std::vector<PackedSpan> parts(qint64 series, int level, const PackedSpan& span);

    /// The number for the next pack of a series.
    qint64 nextNumber(qint64 series);

    /// Adds a pack to the spans of all levels.
    void addPack(qint64 series, qint64 number, qint64 pack, const RowSummary& summary);

    /// Takes the oldest pack of a series out of the spans of all levels.
    void dropPack(qint64 series, qint64 number);

private:
    std::vector<PackedSpan> read(qint64 series, int level, qint64 first, qint64 end);
    void write(qint64 series, int level, const PackedSpan& span);
    void remove(qint64 series, int level, qint64 number);

    SqliteStatement m_read, m_write, m_remove, m_unwhole, m_last;
};

#endif
