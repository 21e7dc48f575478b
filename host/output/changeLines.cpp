#include "output/changeLines.h"

#include "output/columnText.h"
#include "wire/timeUnits.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

enum { SECOND_DIGITS = 6 };

QString secondsText(qint64 time)
{
    const QString fraction =
        QString::number(time % SECOND).rightJustified(SECOND_DIGITS, QLatin1Char('0'));
    return QString::number(time / SECOND) + QLatin1Char('.') + fraction;
}

QString stateText(const WatchRow& row)
{
    if (row.good) return QLatin1String(" = ") + row.value;
    if (row.trouble.isEmpty()) return QString::fromLatin1(" bad");
    return QLatin1String(" bad: ") + row.trouble;
}

QByteArray jsonLine(QJsonObject object, qint64 time)
{
    object.insert(QLatin1String("time"), double(time) / SECOND);
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

} // namespace

QJsonValue jsonValue(const QString& value)
{
    if (value.isEmpty()) return QJsonValue();
    bool ok = false;
    const double number = value.toDouble(&ok);
    return ok && std::isfinite(number) ? QJsonValue(number) : QJsonValue(value);
}

QString changeLine(const WatchRow& row, qint64 time)
{
    const QString gap = QString::fromLatin1("  ");
    return secondsText(time) + gap + printableText(row.name + gap + row.address + stateText(row));
}

QByteArray changeJson(const WatchRow& row, qint64 time)
{
    QJsonObject object;
    object.insert(QLatin1String("name"), row.name);
    object.insert(QLatin1String("address"), row.address);
    object.insert(QLatin1String("value"), jsonValue(row.value));
    object.insert(QLatin1String("good"), row.good);
    object.insert(QLatin1String("trouble"), row.trouble);
    return jsonLine(object, time);
}

QString eventLine(const QString& event, qint64 time)
{
    return secondsText(time) + QLatin1String("  ") + printableText(event);
}

QByteArray eventJson(const QString& event, qint64 time)
{
    QJsonObject object;
    object.insert(QLatin1String("event"), event);
    return jsonLine(object, time);
}
