#ifndef ROW_QUERY_H
#define ROW_QUERY_H

#include "history/historyRow.h"
#include "history/sqliteFile.h"

/// At most `most` rows of a query, oldest first. A row that is bad and has no value tells the end
/// of a run; the run that goes on has none. To go on behind a row, put its time into `from` and its
/// sequence into `after`; 0: from the first row on. Costs by the rows that it returns.
/// @throws SqliteError
std::vector<HistoryRow> readRows(SqliteFile& file, const HistoryQuery& query, qint64 after,
                                 size_t most);

#endif
