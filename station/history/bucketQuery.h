#ifndef BUCKET_QUERY_H
#define BUCKET_QUERY_H

#include "history/historyRow.h"
#include "history/sqliteFile.h"

/// The buckets of a query, in the order of time, without gaps between them, and nothing good in
/// them. None when the span is empty.
std::vector<HistoryBucket> emptyBuckets(const HistoryQuery& query);

/// The same buckets with what the file tells. Costs by the buckets and the stops of the station,
/// not by the rows.
/// @throws SqliteError
std::vector<HistoryBucket> readBuckets(SqliteFile& file, const HistoryQuery& query);

#endif
