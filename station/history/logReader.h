#ifndef LOG_READER_H
#define LOG_READER_H

#include "history/historyRow.h"
#include "history/sqliteFile.h"
#include "plant/logPosition.h"

#include <QHash>

/// Reads the rows of all series in the order in which they came.
///
///     packings   |--- first: 1 ------|--- first: 5001 -----|   fresh rows
///     packs       a: 1 4 9 ...        a: 5003 5009 ...         10001 a
///                 b: 2 3 5 ...        b: 5001 5002 ...         10002 b
///                                     ^ opened as a whole, put in order once
///
/// The rows of the packing that was read last are kept, up to 40 bytes a row: the next rows are
/// found without opening a pack. The cap drops the packs with the smallest ids; the packing is read
/// anew then. It must end before the file does.
class LogReader
{
public:
    /// @throws SqliteError
    explicit LogReader(SqliteFile& file);

    /// As of SampleLog. @throws SqliteError
    std::vector<LoggedRow> rowsBehind(qint64 sequence, qint64 last, size_t most);

private:
    struct PackedRow
    {
        HistoryRow row;
        qint64 series = 0;
    };

    struct SeriesName
    {
        QString link, tag;
    };

    bool openPacking(qint64 sequence);
    void readPacking(qint64 first, qint64 end);
    void addPacked(std::vector<LoggedRow>& rows, qint64 sequence, qint64 last, size_t most) const;
    void addFresh(std::vector<LoggedRow>& rows, qint64 sequence, qint64 last, size_t most);
    const SeriesName& nameOf(qint64 series);
    static LoggedRow loggedRow(const HistoryRow& row, const SeriesName& name);

    SqliteFile& m_file;
    SqliteStatement m_packing, m_nextPacking, m_packs, m_fresh, m_name;
    QHash<qint64, SeriesName> m_names; ///< by series
    qint64 m_first = 0, m_end = 0;     ///< the sequences of the packing; 0, 0: none
    qint64 m_oldest = 0;               ///< the smallest id of a pack when the packing was read
    std::vector<PackedRow> m_rows;     ///< of the packing, in the order of coming
};

#endif
