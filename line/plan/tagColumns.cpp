#include "plan/tagColumns.h"

#include "plan/tagError.h"
#include "plan/tagText.h"

#include <QStringList>

namespace {

const char* const NAMES[TAG_COLUMNS] = {"name",    "station", "area",   "address",  "type",
                                        "comment", "rate",    "access", "deadband", "value"};

bool isOptional(int column)
{
    return column == COLUMN_COMMENT || column == COLUMN_RATE || column == COLUMN_ACCESS ||
           column == COLUMN_DEADBAND;
}

/// What is wrong with a column of the header; empty: nothing.
QString columnProblem(const CsvRecord& header, int column)
{
    const qint64 found = header.fields.count(tagColumnName(column));
    if (found > 1) return QLatin1String("there are several columns ") + tagColumnName(column);
    if (found == 1 || isOptional(column)) return QString();
    return QLatin1String("there is no column ") + tagColumnName(column);
}

QString knownColumns(bool withValue)
{
    return QString(QLatin1String("the columns are name, station, area, address, %1 and, if wanted, "
                                 "comment, rate, access and deadband"))
        .arg(QLatin1String(withValue ? "type, value" : "type"));
}

} // namespace

QString tagColumnName(int column)
{
    return QLatin1String(NAMES[column]);
}

QString atLine(int line, const QString& problem)
{
    return QString(QLatin1String("line %1: %2")).arg(QString::number(line), problem);
}

TagColumns::TagColumns(const CsvRecord& header, bool withValue) : m_count(int(header.fields.size()))
{
    if (!header.problem.isEmpty())
        throw TagFileError(atLine(header.line, header.problem).toStdString());
    QStringList problems;
    QStringList known;
    for (int column = 0; column < (withValue ? int(TAG_COLUMNS) : int(COLUMN_VALUE)); ++column) {
        known << tagColumnName(column);
        m_positions[column] = int(header.fields.indexOf(tagColumnName(column)));
        problems << columnProblem(header, column);
    }
    problems.removeAll(QString());
    for (const QString& field : header.fields)
        if (!known.contains(field)) problems << quoted(field) + QLatin1String(" is no column");
    if (problems.isEmpty()) return;
    problems << knownColumns(withValue);
    throw TagFileError(atLine(header.line, problems.join(QLatin1String("; "))).toStdString());
}
