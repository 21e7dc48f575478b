#include "api/historySpan.h"

#include "api/apiError.h"

#include <algorithm>

namespace {

const qint64 HOUR = 3600000;
const qint64 LAST_TIME = 253402300799999; // the end of the year 9999

struct Range
{
    qint64 least;
    qint64 most;
};

bool isWholeNumber(const QByteArray& text)
{
    const int sign = text.startsWith('-') ? 1 : 0;
    return text.size() > sign && std::all_of(text.begin() + sign, text.end(), [](char digit) {
               return digit >= '0' && digit <= '9';
           });
}

/// @param otherwise  without the key, or with an empty text
qint64 numberIn(const HttpRequest& request, const char* key, Range range, qint64 otherwise)
{
    const QByteArray text = request.queried(key).value_or(QByteArray());
    if (text.isEmpty()) return otherwise;
    if (!isWholeNumber(text))
        throw ApiError(ApiError::BAD_REQUEST,
                       QString(QLatin1String("%1 is no whole number")).arg(QLatin1String(key)));
    bool isInside = false;
    const qint64 number = text.toLongLong(&isInside);
    if (isInside && number >= range.least && number <= range.most) return number;
    throw ApiError(ApiError::UNPROCESSABLE, QString(QLatin1String("%1 is not from %2 to %3"))
                                                .arg(QLatin1String(key))
                                                .arg(range.least)
                                                .arg(range.most));
}

} // namespace

HistorySpan historySpanOf(const HttpRequest& request, qint64 now)
{
    HistorySpan span;
    span.until = numberIn(request, "to", {0, LAST_TIME}, now);
    span.from = numberIn(request, "from", {0, LAST_TIME}, std::max<qint64>(span.until - HOUR, 0));
    span.points =
        int(numberIn(request, "points", {1, HistorySpan::MOST_POINTS}, HistorySpan::USUAL_POINTS));
    if (span.from < span.until) return span;
    throw ApiError(ApiError::UNPROCESSABLE, QLatin1String("\"from\" does not lie before \"to\""));
}
