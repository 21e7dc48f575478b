#ifndef ROW_RANGES_H
#define ROW_RANGES_H

#include <QtGlobal>

#include <map>

/// A set of rows, as ranges of their sequences or numbers. The ranges lie apart from each other: at
/// least one row that is not in the set lies between two of them.
class RowRanges
{
public:
    using Ranges = std::map<qint64, qint64>; ///< the last row of each range, by its first one

    /// An empty range adds and removes nothing.
    void add(qint64 first, qint64 last);
    void add(const RowRanges& other);
    void remove(qint64 first, qint64 last);
    void removeUpTo(qint64 last);
    void removeFrom(qint64 first);
    void clear();

    bool isEmpty() const
    {
        return m_ranges.empty();
    }
    bool has(qint64 row) const;

    /// The first row of the set that is not before `row`, with the end of its range; `otherwise`
    /// when there is none.
    std::pair<qint64, qint64> from(qint64 row, qint64 otherwise) const;

    /// How many rows.
    qint64 count() const
    {
        return m_count;
    }
    const Ranges& ranges() const
    {
        return m_ranges;
    }

private:
    Ranges m_ranges;
    qint64 m_count = 0;
};

#endif
