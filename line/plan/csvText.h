#ifndef CSV_TEXT_H
#define CSV_TEXT_H

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <vector>

/// Where a field stands in the text, with its quotes but without the blanks around it; of a field
/// of blanks alone, the place ahead of them.
struct CsvCell
{
    int start = 0; ///< offset in bytes
    int size = 0;  ///< in bytes
};

/// One record of CSV text.
struct CsvRecord
{
    int line = 0; ///< on which it begins, from 1
    QStringList fields;
    std::vector<CsvCell> cells; ///< of the fields
    QString problem;            ///< why it is no record, in words; empty: it is one
};

/// The records of CSV text (RFC 4180; UTF-8, CR LF or LF). Blanks around a field are dropped, those
/// within double quotes are kept. Empty lines and lines that begin with # are no records. After a
/// record with a problem the text is taken up again at the next line.
std::vector<CsvRecord> csvRecords(const QByteArray& text);

#endif
