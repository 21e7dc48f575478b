#include "output/timeText.h"

#include "wire/timeUnits.h"

#include <QDateTime>

#include <cstdlib>

namespace {

enum { SECOND_DIGITS = 6, SECONDS_WIDTH = 12, SECONDS_PER_MINUTE = 60, MINUTES_PER_HOUR = 60 };

QString twoDigits(int number)
{
    return QString::number(number).rightJustified(2, QLatin1Char('0'));
}

/// "+01:00". Qt writes "Z" for an offset of 0; a local time keeps its form all year.
QString offsetText(int seconds)
{
    const int minutes = std::abs(seconds) / SECONDS_PER_MINUTE;
    return QLatin1Char(seconds < 0 ? '-' : '+') + twoDigits(minutes / MINUTES_PER_HOUR) +
           QLatin1Char(':') + twoDigits(minutes % MINUTES_PER_HOUR);
}

QString dateText(const QDateTime& date)
{
    return date.toString(QLatin1String("yyyy-MM-ddTHH:mm:ss.zzz"));
}

} // namespace

QString TimeText::text(qint64 time) const
{
    if (m_style == RELATIVE) {
        const QString fraction =
            QString::number(time % SECOND).rightJustified(SECOND_DIGITS, QLatin1Char('0'));
        return QString::number(time / SECOND) + QLatin1Char('.') + fraction;
    }
    const QDateTime local = QDateTime::fromMSecsSinceEpoch((m_startClock + time) / MILLISECOND);
    return m_style == ISO ? dateText(local.toUTC()) + QLatin1Char('Z')
                          : dateText(local) + offsetText(local.offsetFromUtc());
}

QString TimeText::columnText(qint64 time) const
{
    return m_style == RELATIVE ? text(time).rightJustified(SECONDS_WIDTH) : text(time);
}

void TimeText::insertInto(QJsonObject& object, qint64 time) const
{
    if (m_style == RELATIVE)
        object.insert(QLatin1String("timeS"),
                      time < 0 ? QJsonValue() : QJsonValue(double(time) / SECOND));
    else
        object.insert(QLatin1String("time"), time < 0 ? QJsonValue() : QJsonValue(text(time)));
}
