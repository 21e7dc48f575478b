#ifndef HISTORY_TEXT_H
#define HISTORY_TEXT_H

#include "history/historyRow.h"
#include "plan/tag.h"

// The history of a tag as texts. Values have the digits that the list of values has for them; those
// of bits are 0 and 1. Any thread calls the functions.

/// {"link","tag","from","to","buckets":[[time,min,max,last] or [time,null,null,null]]}.
QByteArray historyDocument(const HistoryQuery& query, const Tag& tag,
                           const std::vector<HistoryBucket>& buckets);

/// The line with the columns' names, "time,link,tag,value,quality".
QByteArray historyCsvHead();

/// A line of CSV (RFC 4180); the value is empty when there is none.
QByteArray historyCsvLine(const HistoryQuery& query, const Tag& tag, const HistoryRow& row);

#endif
