#ifndef TAG_COLUMNS_H
#define TAG_COLUMNS_H

#include "plan/csvText.h"

#include <QString>

/// The columns of a tag file. VALUE is that of a recipe.
enum TagColumn {
    COLUMN_NAME,
    COLUMN_STATION,
    COLUMN_AREA,
    COLUMN_ADDRESS,
    COLUMN_TYPE,
    COLUMN_COMMENT,
    COLUMN_RATE,
    COLUMN_ACCESS,
    COLUMN_DEADBAND,
    COLUMN_VALUE,
    TAG_COLUMNS
};

/// The name of a column in the first line of a tag file.
QString tagColumnName(int column);

/// "line 7: PROBLEM".
QString atLine(int line, const QString& problem);

/// The place of each column in the records of a tag file.
class TagColumns
{
public:
    /// @param header     the first record, which names the columns in any order
    /// @param withValue  whether the file is a recipe
    /// @throws TagFileError
    TagColumns(const CsvRecord& header, bool withValue);

    /// The number of fields of a good record.
    int count() const
    {
        return m_count;
    }

    /// The text of a field; empty: the file does not have the column.
    QString field(const CsvRecord& record, TagColumn column) const
    {
        return record.fields.value(m_positions[column]);
    }

private:
    int m_positions[TAG_COLUMNS] = {};
    int m_count;
};

#endif
