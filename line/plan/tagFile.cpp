#include "plan/tagFile.h"

#include "plan/addressReason.h"
#include "plan/tagColumns.h"
#include "plan/tagText.h"
#include "plan/typedAddress.h"

#include <QFile>
#include <QHash>

#include <algorithm>

namespace {

const char COMMA = ',';
const QLatin1Char DECIMAL_COMMA(',');
const QLatin1Char DECIMAL_POINT('.');

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

/// Why the tag's access does not fit its place; empty: it fits.
QString accessConflict(const Tag& tag, const DriverLibrary& driver)
{
    if (tag.access == Tag::READ_ONLY) return QString();
    const QString problem = writeProblem(tag, driver);
    if (problem.isEmpty()) return QString();
    return QLatin1String("access \"rw\": ") + problem;
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
    TagReader(const TagColumns& columns, const DriverLibrary& driver, const ValueJudge& judge,
              char separator)
        : m_columns(columns), m_driver(driver), m_judge(judge), m_separator(separator)
    {
    }

    void read(const CsvRecord& record);
    std::vector<Tag> tags() const;

private:
    QStringList take(const CsvRecord& record, Tag& tag);
    QString nameProblem(const QString& name, int line);
    void takeTreatment(const CsvRecord& record, Tag& tag, QStringList& problems) const;
    QString withPoint(QString number) const;
    QString valueField(const CsvRecord& record, const Tag& tag) const;

    const TagColumns& m_columns;
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
    tag.name = m_columns.field(record, COLUMN_NAME);
    tag.address = m_columns.field(record, COLUMN_ADDRESS);
    tag.comment = m_columns.field(record, COLUMN_COMMENT);
    const QString station = m_columns.field(record, COLUMN_STATION);
    const QString type = m_columns.field(record, COLUMN_TYPE);
    const QString area = m_columns.field(record, COLUMN_AREA);
    const QString rate = m_columns.field(record, COLUMN_RATE);

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
    takeTreatment(record, tag, problems);
    problems.removeAll(QString());
    if (problems.isEmpty())
        problems << addressNameProblem(tag, m_driver) << accessConflict(tag, m_driver);
    problems.removeAll(QString());
    if (problems.isEmpty() && m_judge) problems << m_judge(tag, valueField(record, tag));
    problems.removeAll(QString());
    return problems;
}

/// What the resident station does with the tag.
void TagReader::takeTreatment(const CsvRecord& record, Tag& tag, QStringList& problems) const
{
    const QString access = m_columns.field(record, COLUMN_ACCESS);
    const QString deadband = m_columns.field(record, COLUMN_DEADBAND);
    if (!takeAccess(access, tag)) problems << accessProblem(access);
    if (!takeDeadband(withPoint(deadband), tag)) problems << deadbandProblem(deadband);
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

/// Between semicolons a number may have a decimal comma.
QString TagReader::withPoint(QString number) const
{
    const bool hasComma = m_separator != COMMA && !number.contains(DECIMAL_POINT);
    return hasComma ? number.replace(DECIMAL_COMMA, DECIMAL_POINT) : number;
}

QString TagReader::valueField(const CsvRecord& record, const Tag& tag) const
{
    const QString value = m_columns.field(record, COLUMN_VALUE);
    return tag.type == Tag::FLOAT32 ? withPoint(value) : value;
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
    const TagColumns columns(records.front(), bool(judge));
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
    const int column = int(records.front().fields.indexOf(tagColumnName(COLUMN_VALUE)));
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
