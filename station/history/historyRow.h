#ifndef HISTORY_ROW_H
#define HISTORY_ROW_H

#include "values/tagReading.h"

#include <QString>

#include <vector>

/// The value and quality of a tag from a time on. A row that tells the end of a run of the station
/// has no value, and the sequence of the row before it.
struct HistoryRow
{
    qint64 sequence = 0;   ///< counts up from 1 over all rows of the history, in order of coming
    qint64 time = 0;       ///< ms since 1970
    double value = 0;      ///< only with hasValue; may be nan, inf and -inf
    bool hasValue = false; ///< false: the tag was never read, or a run ended
    Quality quality = BAD;

    bool isGood() const
    {
        return quality == GOOD && hasValue;
    }
};

/// A span of time in the history of a tag.
struct HistoryQuery
{
    QString link, tag;
    qint64 from = 0, until = 0; ///< ms since 1970; `until` is no part of it
    int points = 600;           ///< buckets; fewer when the span has fewer milliseconds
};

/// The values of a part of a span. A bucket tells what was good in it: the rows that came in it,
/// and the value that held when it began. What was not good, and the time in which the station did
/// not run, adds nothing. A nan counts as minimum and maximum only when there is no number.
struct HistoryBucket
{
    qint64 time = 0;                           ///< its begin, ms since 1970
    bool isGood = false;                       ///< false: nothing in it was good
    double minimum = 0, maximum = 0, last = 0; ///< only when isGood
};

#endif
