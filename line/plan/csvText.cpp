#include "plan/csvText.h"

namespace {

const char COMMA = ',';
const char SEMICOLON = ';';
const char BYTE_ORDER_MARK[] = "\xEF\xBB\xBF";

bool isBlank(char character)
{
    return character == ' ' || character == '\t' || character == '\r';
}

class CsvReader
{
public:
    CsvReader(const QByteArray& text, char separator) : m_text(text), m_separator(separator)
    {
        if (m_text.startsWith(BYTE_ORDER_MARK)) m_at = int(qstrlen(BYTE_ORDER_MARK));
    }

    std::vector<CsvRecord> read();
    QByteArray firstLineWithRecord();

private:
    char at(int position) const
    {
        return position < m_text.size() ? m_text.at(position) : '\n';
    }
    bool atEnd() const
    {
        return m_at >= m_text.size();
    }
    bool atFieldEnd() const
    {
        return at(m_at) == m_separator || at(m_at) == '\n';
    }

    void skipBlanks();
    bool skipLineWithoutRecord();
    void skipLine();
    CsvRecord readRecord();
    QByteArray readField(CsvRecord& record);
    CsvCell cellSince(int blanks, int start) const;
    QByteArray readQuoted(QString& problem);
    QByteArray readPlain(QString& problem);

    const QByteArray& m_text;
    const char m_separator;
    int m_at = 0;
    int m_line = 1;
};

std::vector<CsvRecord> CsvReader::read()
{
    std::vector<CsvRecord> records;
    while (!atEnd()) {
        if (skipLineWithoutRecord()) continue;
        const int start = m_at;
        const int line = m_line;
        records.push_back(readRecord());
        if (records.back().problem.isEmpty()) continue;
        // An unclosed quote takes in the following lines. Read them again to find their errors too.
        m_at = start;
        m_line = line;
        skipLine();
    }
    return records;
}

QByteArray CsvReader::firstLineWithRecord()
{
    while (!atEnd() && skipLineWithoutRecord()) {
    }
    const int start = m_at;
    skipLine();
    return m_text.mid(start, m_at - start);
}

void CsvReader::skipLine()
{
    while (at(m_at) != '\n')
        ++m_at;
    ++m_at;
    ++m_line;
}

void CsvReader::skipBlanks()
{
    while (isBlank(at(m_at)))
        ++m_at;
}

bool CsvReader::skipLineWithoutRecord()
{
    const int start = m_at;
    while (isBlank(at(m_at)) || at(m_at) == m_separator)
        ++m_at;
    const bool none = at(m_at) == '\n' || at(start) == '#';
    if (none)
        skipLine();
    else
        m_at = start;
    return none;
}

CsvRecord CsvReader::readRecord()
{
    CsvRecord record;
    record.line = m_line;
    for (bool last = false; !last; ++m_at) {
        const QByteArray bytes = readField(record);
        if (!record.problem.isEmpty()) return record;
        record.fields << QString::fromUtf8(bytes);
        if (record.fields.last().toUtf8() != bytes) {
            record.problem = QLatin1String("the text is not UTF-8");
            return record;
        }
        last = at(m_at) == '\n';
    }
    ++m_line;
    return record;
}

QByteArray CsvReader::readField(CsvRecord& record)
{
    const int blanks = m_at;
    skipBlanks();
    const int start = m_at;
    const QByteArray field =
        at(start) == '"' ? readQuoted(record.problem) : readPlain(record.problem);
    record.cells.push_back(cellSince(blanks, start));
    return field;
}

CsvCell CsvReader::cellSince(int blanks, int start) const
{
    int end = m_at;
    while (end > start && isBlank(at(end - 1)))
        --end;
    CsvCell cell;
    cell.start = end > start ? start : blanks; // the blanks may include the CR of a CR LF
    cell.size = end - start;
    return cell;
}

QByteArray CsvReader::readPlain(QString& problem)
{
    const int start = m_at;
    for (; !atFieldEnd(); ++m_at)
        if (at(m_at) == '"')
            problem = QLatin1String("a field with a double quote is not in quotes");
    return m_text.mid(start, m_at - start).trimmed();
}

QByteArray CsvReader::readQuoted(QString& problem)
{
    QByteArray field;
    for (++m_at; !atEnd(); ++m_at) {
        if (at(m_at) == '\n') ++m_line;
        if (at(m_at) == '"' && at(++m_at) != '"') {
            skipBlanks();
            if (!atFieldEnd()) problem = QLatin1String("there is text behind a closing quote");
            return field;
        }
        field += at(m_at);
    }
    problem = QLatin1String("a quoted field has no closing quote");
    return field;
}

} // namespace

char csvSeparator(const QByteArray& text)
{
    const QByteArray header = CsvReader(text, COMMA).firstLineWithRecord();
    return header.contains(SEMICOLON) && !header.contains(COMMA) ? SEMICOLON : COMMA;
}

std::vector<CsvRecord> csvRecords(const QByteArray& text)
{
    return CsvReader(text, csvSeparator(text)).read();
}

QString csvField(const QString& text)
{
    const bool isPlain = !text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')) &&
                         !text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r')) &&
                         text == text.trimmed();
    if (isPlain) return text;
    return QLatin1Char('"') + QString(text).replace(QLatin1Char('"'), QLatin1String("\"\"")) +
           QLatin1Char('"');
}
