#include "plan/durationText.h"

#include <QRegularExpression>

namespace {

struct Unit
{
    const char* name;
    qint64 ms;
};

const Unit UNITS[] = {{"m", 60000}, {"s", 1000}, {"ms", 1}}; // the longest unit first

} // namespace

/// At most 9 digits: the product with the longest unit, in microseconds, fits into 64 bits.
std::optional<qint64> durationMs(const QString& text)
{
    static const QRegularExpression format(
        QLatin1String("\\A([0-9]{1,9})(ms|s|m)\\z")); // [0-9]: \d takes the digits of any script
    if (text == QLatin1String("0")) return 0;
    const QRegularExpressionMatch match = format.match(text);
    if (!match.hasMatch()) return std::nullopt;
    const qint64 number = match.captured(1).toLongLong();
    for (const Unit& unit : UNITS) {
        if (match.captured(2) == QLatin1String(unit.name)) return number * unit.ms;
    }
    return std::nullopt;
}

QString durationProblem(const QString& text)
{
    return durationMs(text) ? QString()
                            : text + QLatin1String(" is no duration such as 500ms, 10s or 5m");
}

QString durationText(qint64 ms)
{
    for (const Unit& unit : UNITS) {
        if (ms > 0 && ms % unit.ms == 0)
            return QString::number(ms / unit.ms) + QLatin1String(unit.name);
    }
    return QLatin1String("0");
}
