#include "output/changeLines.h"

#include "plan/printableText.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace {

QString stateText(const WatchRow& row)
{
    if (row.good) return QLatin1String(" = ") + row.value;
    if (row.trouble.isEmpty()) return QString::fromLatin1(" bad");
    return QLatin1String(" bad: ") + row.trouble;
}

QByteArray jsonLine(QJsonObject object, qint64 time, const TimeText& times)
{
    times.insertInto(object, time);
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

QString changeLine(const WatchRow& row, qint64 time, const TimeText& times)
{
    const QString gap = QString::fromLatin1("  ");
    return times.text(time) + gap + printableText(row.name + gap + row.address + stateText(row));
}

QByteArray changeJson(const WatchRow& row, qint64 time, const TimeText& times)
{
    QJsonObject object;
    object.insert(QLatin1String("name"), row.name);
    object.insert(QLatin1String("address"), row.address);
    object.insert(QLatin1String("value"), jsonValue(row.value));
    object.insert(QLatin1String("good"), row.good);
    object.insert(QLatin1String("trouble"), row.trouble);
    return jsonLine(object, time, times);
}

QString eventLine(const QString& event, qint64 time, const TimeText& times)
{
    return times.text(time) + QLatin1String("  ") + printableText(event);
}

QByteArray eventJson(const QString& event, qint64 time, const TimeText& times)
{
    QJsonObject object;
    object.insert(QLatin1String("event"), event);
    return jsonLine(object, time, times);
}
