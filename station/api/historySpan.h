#ifndef HISTORY_SPAN_H
#define HISTORY_SPAN_H

#include "http/httpMessages.h"

/// The span of time that a query of the history asks for.
struct HistorySpan
{
    enum { MOST_POINTS = 10000, USUAL_POINTS = 600 };

    qint64 from = 0;  ///< ms since 1970
    qint64 until = 0; ///< ms since 1970, behind `from`
    int points = USUAL_POINTS;
};

/// Reads `from`, `to` and `points` of a query. Without `to` the span ends now, without `from` it is
/// an hour long, without `points` it has 600 buckets.
/// @param now  ms since 1970
/// @throws ApiError BAD_REQUEST for a text that is no whole number, UNPROCESSABLE for a number out
/// of its range and for a span that is empty
HistorySpan historySpanOf(const HttpRequest& request, qint64 now);

#endif
