#include "verbs/stationList.h"

#include <QStringList>

#include <set>

namespace {

enum { LAST_STATION = 247 };

bool isDigits(const QString& text)
{
    for (const QChar digit : text) {
        if (digit < QLatin1Char('0') || digit > QLatin1Char('9')) return false;
    }
    return !text.isEmpty();
}

/// @return 0 when the text is no station number
int stationNumber(const QString& text)
{
    const int number =
        isDigits(text) ? text.toInt() : 0; // toInt() is 0 when the number is too long
    return number <= LAST_STATION ? number : 0;
}

} // namespace

std::optional<std::vector<int>> stationList(const QString& text)
{
    std::set<int> stations;
    for (const QString& part : text.split(QLatin1Char(','))) {
        const int first = stationNumber(part.section(QLatin1Char('-'), 0, 0));
        const int last = stationNumber(part.section(QLatin1Char('-'), 1));
        const bool isRange = part.contains(QLatin1Char('-'));
        if (first == 0 || (isRange && last < first)) return std::nullopt;
        for (int station = first; station <= (isRange ? last : first); ++station)
            stations.insert(station);
    }
    return std::vector<int>(stations.begin(), stations.end());
}
