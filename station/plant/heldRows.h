#ifndef HELD_ROWS_H
#define HELD_ROWS_H

#include "samples/sample.h"

#include <QPair>
#include <QSet>

#include <functional>
#include <map>
#include <vector>

/// Rows that are owed and held back, because the device of their tag is not born.
///
/// A range of a tag holds all rows of this tag in it, and none of another one: rows of other tags
/// that lie between were sent.
///
///     rows of     a b a b b a a b        b is not born
///     sent        a   a     a a
///     held of b     |---------|          one range, 4 rows
class HeldRows
{
public:
    using Tag = QPair<QString, QString>; ///< link and name

    struct Range
    {
        qint64 first = 0, last = 0; ///< sequences
        qint64 rows = 0;            ///< of the tag in it
    };

    /// Holds a row that was passed over. It joins the tag's range when the walk through the rows
    /// went on from there without a jump, and without sending a row of the tag.
    void hold(const Tag& tag, qint64 sequence);

    /// The walk passes a row of the tag that is sent, or jumps.
    void sent(const Tag& tag);
    void jumped();

    /// As it was stored.
    void put(const Tag& tag, const Range& range);

    /// The walk has looked through the ranges of the tag up to this row, and sent so many rows.
    /// @return rows that are gone
    qint64 walked(const Tag& tag, qint64 upTo, qint64 rows);

    /// @return rows that are gone for certain: their ranges lie before the oldest row that is left
    qint64 dropBefore(qint64 oldest);

    /// Rows behind this one are no longer in the log.
    void cutBehind(qint64 last);
    void clear();

    /// Whether the row of the tag is held, or rows before it are.
    bool has(const Tag& tag, qint64 sequence) const;
    bool isBefore(const Tag& tag, qint64 sequence) const;

    /// Null: nothing is held of the tag.
    const std::vector<Range>* rangesOf(const Tag& tag) const;
    const std::map<Tag, std::vector<Range>>& all() const
    {
        return m_ranges;
    }

    /// How many rows.
    qint64 count() const
    {
        return m_count;
    }

private:
    qint64 filter(const std::function<bool(Range&)>& isKept);

    std::map<Tag, std::vector<Range>> m_ranges; ///< in the order of sequences; none is empty
    std::map<Tag, qint64> m_open;               ///< the begin of the range that can be joined
    qint64 m_count = 0;
};

#endif
