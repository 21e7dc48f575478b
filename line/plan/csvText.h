#ifndef CSV_TEXT_H
#define CSV_TEXT_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

/// The place of a field in the text. It includes the field's quotes, but not the blanks around it.
/// A field of blanks only has its place ahead of the blanks.
struct CsvCell
{
    int start = 0; ///< offset in bytes
    int size = 0;  ///< in bytes
};

/// One record of CSV text.
struct CsvRecord
{
    int line = 0; ///< number of its first line, from 1
    QStringList fields;
    std::vector<CsvCell> cells; ///< places of the fields
    QString problem;            ///< why the record is malformed, in words; empty: well-formed
};

/// The character between the fields of CSV text: a semicolon when the first record has semicolons
/// and no commas, otherwise a comma. Spreadsheets write semicolons where the decimal sign is a
/// comma.
char csvSeparator(const QByteArray& text);

/// The records of CSV text (RFC 4180, but for the separator; UTF-8, CR LF or LF). Blanks around a
/// field are dropped; blanks within double quotes are kept. Lines without any text, also with
/// separators, and lines that begin with # are skipped. After a malformed record, reading continues
/// at the line behind the record's first line.
std::vector<CsvRecord> csvRecords(const QByteArray& text);

/// A field for a line with commas, with quotes around it where CSV needs them.
QString csvField(const QString& text);

#endif
