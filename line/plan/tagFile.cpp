#include "plan/tagFile.h"

#include "plan/addressReason.h"
#include "plan/csvText.h"
#include "plan/tagText.h"
#include "plan/typedAddress.h"

#include <QFile>
#include <QHash>

#include <algorithm>

namespace {

enum Column { NAME, STATION, AREA, ADDRESS, TYPE, COMMENT, RATE, VALUE, COLUMN_COUNT };

const char* const COLUMN_NAMES[COLUMN_COUNT] = {"name", "station", "area", "address",
                                                "type", "comment", "rate", "value"};

bool isOptional(int column)
{
    return column == COMMENT || column == RATE;
}

const char COMMA = ',';
const QLatin1Char DECIMAL_COMMA(',');
const QLatin1Char DECIMAL_POINT('.');

QString columnName(int column)
{
    return QLatin1String(COLUMN_NAMES[column]);
}

QString atLine(int line, const QString& problem)
{
    return QString(QLatin1String("line %1: %2")).arg(QString::number(line), problem);
}

[[noreturn]] void fail(const QString& problem)
{
    throw TagFileError(problem.toStdString());
}

/// The problem with the tag's place in its known area; empty: none.
QString placeProblem(Tag& tag, const DriverLibrary& driver)
{
    const QString badKind = kindProblem(tag);
    if (!badKind.isEmpty()) return badKind;
    const QString typed = tag.area + tag.address;
    const QString problem = addressProblem(tag, driver);
    return problem.isEmpty() ? QString() : typed + QLatin1String(": ") + problem;
}

bool isSamePlace(const Tag& a, const Tag& b)
{
    return a.station == b.station && a.area == b.area && a.number == b.number;
}

/// A name that is an address must mean the tag itself: a read or write of the name would otherwise
/// go to another place than its text says. A name with a type must have the tag's type, too.
QString addressNameProblem(const Tag& tag, const DriverLibrary& driver)
{
    if (!looksLikeAddress(tag.name, driver)) return QString();
    std::vector<Tag> meant;
    try {
        meant = tagsFromAddress(tag.name, driver);
    } catch (const TagFileError&) {
        return QString(); // the name only begins as an address does
    }
    const Tag& named = meant.front();
    const bool hasNoType = looksLikeAddress(tag.name.section(QLatin1Char(':'), -1), driver);
    const bool hasSameType = hasNoType || tagTypeText(named) == tagTypeText(tag);
    if (meant.size() == 1 && isSamePlace(named, tag) && hasSameType) return QString();
    return QString(QLatin1String("the name %1 is the address of another place or type"))
        .arg(quoted(tag.name));
}

/// The meaning of each field in the file's records.
class Columns
{
public:
    /// @throws TagFileError
    Columns(const CsvRecord& header, bool withValues);

    int count() const
    {
        return m_count;
    }
    QString field(const CsvRecord& record, Column column) const
    {
        return record.fields.value(m_positions[column]);
    }

private:
    int m_positions[COLUMN_COUNT] = {};
    int m_count;
};

Columns::Columns(const CsvRecord& header, bool withValues) : m_count(int(header.fields.size()))
{
    const int columns = withValues ? int(COLUMN_COUNT) : int(VALUE);
    QStringList problems;
    if (!header.problem.isEmpty()) fail(atLine(header.line, header.problem));
    QStringList known;
    for (int i = 0; i < columns; ++i) {
        known << columnName(i);
        m_positions[i] = int(header.fields.indexOf(columnName(i)));
        if (m_positions[i] < 0 && !isOptional(i))
            problems << QLatin1String("there is no column ") + columnName(i);
        if (header.fields.count(columnName(i)) > 1)
            problems << QLatin1String("there are several columns ") + columnName(i);
    }
    for (const QString& field : header.fields)
        if (!known.contains(field)) problems << quoted(field) + QLatin1String(" is no column");
    if (problems.isEmpty()) return;
    fail(atLine(header.line,
                problems.join(QLatin1String("; ")) +
                    QLatin1String(withValues ? "; the columns are name, station, area, address, "
                                               "type, value and, if wanted, comment and rate"
                                             : "; the columns are name, station, area, address, "
                                               "type and, if wanted, comment and rate")));
}

/// Whether the values of a file have decimal points and no decimal commas.
bool hasDecimalPoints(const std::vector<CsvRecord>& records, int column)
{
    bool points = false;
    for (const CsvRecord& record : records) {
        const QString value = record.fields.value(column);
        if (value.contains(DECIMAL_COMMA)) return false;
        points = points || value.contains(DECIMAL_POINT);
    }
    return points;
}

class TagReader
{
public:
    TagReader(const Columns& columns, const DriverLibrary& driver, const ValueJudge& judge,
              char separator)
        : m_columns(columns), m_driver(driver), m_judge(judge), m_separator(separator)
    {
    }

    void read(const CsvRecord& record);
    std::vector<Tag> tags() const;

private:
    QStringList take(const CsvRecord& record, Tag& tag);
    QString nameProblem(const QString& name, int line);
    QString valueField(const CsvRecord& record, const Tag& tag) const;

    const Columns& m_columns;
    const DriverLibrary& m_driver;
    const ValueJudge& m_judge;
    const char m_separator;
    std::vector<Tag> m_tags;
    QHash<QString, int> m_lineOfName;
    QStringList m_badLines;
};

void TagReader::read(const CsvRecord& record)
{
    Tag tag;
    QStringList problems;
    if (!record.problem.isEmpty())
        problems << record.problem;
    else if (record.fields.size() != m_columns.count())
        problems << QString(QLatin1String("%1 fields, but the first line names %2 columns"))
                        .arg(record.fields.size())
                        .arg(m_columns.count());
    else
        problems = take(record, tag);
    if (problems.isEmpty())
        m_tags.push_back(tag);
    else
        m_badLines << atLine(record.line, problems.join(QLatin1String("; ")));
}

QStringList TagReader::take(const CsvRecord& record, Tag& tag)
{
    tag.name = m_columns.field(record, NAME);
    tag.address = m_columns.field(record, ADDRESS);
    tag.comment = m_columns.field(record, COMMENT);
    const QString station = m_columns.field(record, STATION);
    const QString type = m_columns.field(record, TYPE);
    const QString area = m_columns.field(record, AREA);
    const QString rate = m_columns.field(record, RATE);

    QStringList problems;
    problems << nameProblem(tag.name, record.line);
    if (!takeStation(station, tag)) problems << stationProblem(station);
    const bool typeKnown = takeType(type, tag);
    if (!typeKnown) problems << typeProblem(type);
    if (!takeRate(rate, tag.rate)) problems << rateProblem(rate);
    if (!takeArea(area, tag, m_driver))
        problems << unknownAreaReason(area, m_driver);
    else if (typeKnown)
        problems << placeProblem(tag, m_driver);
    problems.removeAll(QString());
    if (problems.isEmpty()) problems << addressNameProblem(tag, m_driver);
    problems.removeAll(QString());
    if (problems.isEmpty() && m_judge) problems << m_judge(tag, valueField(record, tag));
    problems.removeAll(QString());
    return problems;
}

QString TagReader::nameProblem(const QString& name, int line)
{
    if (name.isEmpty()) return QLatin1String("the name is missing");
    for (const QChar character : name)
        if (character.category() == QChar::Other_Control)
            return QLatin1String("the name has a control character");
    const int first = m_lineOfName.value(name, line);
    m_lineOfName.insert(name, first);
    if (first == line) return QString();
    return QString(QLatin1String("name %1 stands on line %2 already"))
        .arg(quoted(name), QString::number(first));
}

/// The text of the value with a decimal point.
QString TagReader::valueField(const CsvRecord& record, const Tag& tag) const
{
    QString value = m_columns.field(record, VALUE);
    const bool hasComma =
        m_separator != COMMA && tag.type == Tag::FLOAT32 && !value.contains(DECIMAL_POINT);
    return hasComma ? value.replace(DECIMAL_COMMA, DECIMAL_POINT) : value;
}

std::vector<Tag> TagReader::tags() const
{
    if (!m_badLines.isEmpty()) fail(m_badLines.join(QLatin1Char('\n')));
    return m_tags;
}

} // namespace

std::vector<Tag> readTags(const QByteArray& csv, const DriverLibrary& driver)
{
    return readTags(csv, driver, ValueJudge());
}

std::vector<Tag> readTags(const QByteArray& csv, const DriverLibrary& driver,
                          const ValueJudge& judge)
{
    const std::vector<CsvRecord> records = csvRecords(csv);
    if (records.empty()) fail(atLine(1, QLatin1String("there is no line with the column names")));
    const Columns columns(records.front(), bool(judge));
    TagReader reader(columns, driver, judge, csvSeparator(csv));
    std::for_each(records.begin() + 1, records.end(),
                  [&reader](const CsvRecord& record) { reader.read(record); });
    return reader.tags();
}

TagFileError errorInFile(const QString& fileName, const TagFileError& error)
{
    QStringList lines = QString::fromUtf8(error.what()).split(QLatin1Char('\n'));
    for (QString& line : lines)
        line.prepend(fileName + QLatin1String(": "));
    return TagFileError(lines.join(QLatin1Char('\n')).toStdString());
}

QByteArray withValues(const QByteArray& csv, QStringList values)
{
    const std::vector<CsvRecord> records = csvRecords(csv);
    const int column = int(records.front().fields.indexOf(columnName(VALUE)));
    const bool getsCommas = csvSeparator(csv) != COMMA && !hasDecimalPoints(records, column);
    for (QString& value : values)
        if (getsCommas) value.replace(DECIMAL_POINT, DECIMAL_COMMA);
    QByteArray text;
    int copied = 0;
    for (int tag = 0; tag < int(values.size()); ++tag) {
        const CsvCell& cell = records[size_t(tag) + 1].cells[size_t(column)];
        text += csv.mid(copied, cell.start - copied) + values.at(tag).toUtf8();
        copied = cell.start + cell.size;
    }
    return text + csv.mid(copied);
}

QByteArray fileBytes(const QString& fileName)
{
    QFile file(fileName);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly)) bytes = file.readAll();
    if (file.error() != QFileDevice::NoError)
        fail(QString(QLatin1String("cannot read %1: %2")).arg(fileName, file.errorString()));
    return bytes;
}

std::vector<Tag> readTagFile(const QString& fileName, const DriverLibrary& driver)
{
    const QByteArray bytes = fileBytes(fileName);
    try {
        return readTags(bytes, driver);
    } catch (const TagFileError& error) {
        throw errorInFile(fileName, error);
    }
}
