#ifndef TABLE_COLUMNS_H
#define TABLE_COLUMNS_H

#include "output/watchRow.h"

#include <vector>

/// The columns of a watch's table on a terminal of one width: name, address, value, age, changes
/// and state. A narrow terminal drops columns from the right, but never the value and the name; the
/// name gets shorter. Without the column of the state "!" ahead of the value says that it is bad.
///
/// The widths depend only on names, addresses and types, so the columns do not move when values
/// change.
class TableColumns
{
public:
    /// @param rows   all rows of the table, shown or not
    /// @param width  columns that a line may take
    TableColumns(const std::vector<WatchRow>& rows, int width);

    QString headings() const;
    QString line(const WatchRow& row) const;

    /// Whether the state, with the reason of a bad tag, is among the columns.
    bool hasState() const
    {
        return m_state > 0;
    }

private:
    struct Cells
    {
        QString name, address, value, age, changes, state;
    };

    QString lineOf(const Cells& cells, bool isMarked = false) const;

    // Widths; 0: the column is dropped.
    int m_name;
    int m_address = 0;
    int m_value;
    int m_age = 0;
    int m_changes = 0;
    int m_state = 0;
};

/// "good", or "bad: " and the reason.
QString stateText(const WatchRow& row);

#endif
