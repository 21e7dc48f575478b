#include "verbs/addressVerbs.h"

#include "plan/sharedMemory.h"
#include "program/printing.h"
#include "verbs/addressVerdict.h"

#include <QJsonArray>

namespace {

/// "holding registers 3050 to 3053", "bit 3 of input register 0 to bit 2 of input register 1".
QString placeWords(const WirePlace& place, int count)
{
    const QString table = text(place.input ? "input register" : "holding register");
    const bool several = place.firstRegister != place.lastRegister;
    QString words =
        several ? text("%1s %2 to %3").arg(table).arg(place.firstRegister).arg(place.lastRegister)
                : text("%1 %2").arg(table).arg(place.firstRegister);
    if (place.bit < 0) return words;
    if (count == 1) return text("bit %1 of %2").arg(place.bit).arg(words);
    return text("%1 bits from bit %2 on in %3").arg(count).arg(place.bit).arg(words);
}

QString placeText(const AreaDescription& area, const AddressVerdict& verdict,
                  const WirePlace& place, int count)
{
    QString words = placeWords(place, count) + text(place.input ? " (function 4" : " (function 3");
    if (area.accessCode == QLatin1String("0")) return words + QLatin1Char(')');
    if (!area.bits) return words + text(count == 1 ? ", written by 6)" : ", written by 6 or 16)");
    if (!coilProblem(area.name, verdict.number, count).isEmpty())
        return words + text(", not to be written)");
    return words + text("), written as coil %1 (function %2)")
                       .arg(verdict.number)
                       .arg(text(count == 1 ? "5" : "5 or 15"));
}

QJsonObject verdictObject(const QString& area, const QString& address,
                          const AddressVerdict& verdict)
{
    QJsonObject object{{text("area"), area},
                       {text("address"), verdict.isValid() ? verdict.address : address},
                       {text("valid"), verdict.isValid()},
                       {text("result"), verdict.result}};
    if (verdict.isValid())
        object.insert(text("number"), verdict.number);
    else
        object.insert(text("reason"), verdict.reason);
    return object;
}

void printRefusal(std::FILE* out, const QString& area, const QString& address,
                  const AddressVerdict& verdict)
{
    printLine(out, text("%1 %2: not valid: %3").arg(area, address, verdict.reason));
}

void printCheckObject(std::FILE* out, QJsonObject object, const AreaDescription& area,
                      const AddressVerdict& verdict, const WirePlace& place)
{
    object.insert(text("table"), text(place.input ? "input registers" : "holding registers"));
    object.insert(text("firstRegister"), place.firstRegister);
    object.insert(text("lastRegister"), place.lastRegister);
    if (area.bits) object.insert(text("bit"), place.bit);
    const int count = object[text("count")].toInt();
    if (area.bits && !place.input && coilProblem(area.name, verdict.number, count).isEmpty())
        object.insert(text("coil"), verdict.number);
    printObject(out, object);
}

int entriesPastTheEnd(const QVector<int>& numbers, int start, int interval)
{
    int past = 0;
    for (int i = 0; i < int(numbers.size()); ++i)
        past += numbers.at(i) != start + qint64(i) * interval;
    return past;
}

void printSeriesObject(std::FILE* out, QJsonObject object, const QVector<QString>& texts,
                       const QVector<int>& numbers, int clipped)
{
    QJsonArray entries;
    for (int i = 0; i < int(texts.size()); ++i)
        entries.append(
            QJsonObject{{text("address"), texts.at(i)}, {text("number"), numbers.at(i)}});
    object.insert(text("clipped"), clipped);
    object.insert(text("entries"), entries);
    printObject(out, object);
}

void printSeriesText(std::FILE* out, const QString& area, const QVector<QString>& texts,
                     const QVector<int>& numbers, int clipped)
{
    for (int i = 0; i < int(texts.size()); ++i)
        printLine(out, text("%1 %2 = %3").arg(area, texts.at(i), QString::number(numbers.at(i))));
    if (clipped == 0) return;
    printLine(out, text("clipped: the last %1 lay past the end of %2 and became %3")
                       .arg(QString::number(clipped), area, texts.last()));
}

} // namespace

bool printCheck(std::FILE* out, const DriverLibrary& driver, const QString& area,
                const QString& address, int count, bool write, bool json)
{
    const AddressVerdict verdict = judgeAddress(driver, area, address, count, write);
    QJsonObject object = verdictObject(area, address, verdict);
    object.insert(text("count"), count);
    if (!verdict.isValid()) {
        if (json)
            printObject(out, object);
        else
            printRefusal(out, area, address, verdict);
        return false;
    }
    const AreaDescription description = describeArea(driver, area).value();
    const WirePlace place = wirePlace(driver, description, verdict.number, count);
    if (json) {
        printCheckObject(out, object, description, verdict, place);
        return true;
    }
    printLine(out, text("%1 %2: valid, address number %3, %4")
                       .arg(area, verdict.address, QString::number(verdict.number),
                            placeText(description, verdict, place, count)));
    return true;
}

bool printSeries(std::FILE* out, const DriverLibrary& driver, const QString& area,
                 const QString& address, int count, int interval, bool json)
{
    const AddressVerdict verdict = judgeAddress(driver, area, address, 1, false);
    if (!verdict.isValid()) {
        if (json)
            printObject(out, verdictObject(area, address, verdict));
        else
            printRefusal(out, area, address, verdict);
        return false;
    }
    QVector<QString> texts;
    QVector<int> numbers;
    const int result = driver.multiCopy(area, verdict.number, count, interval, texts, numbers);
    const int clipped =
        result == SERIES_CLIPPED ? entriesPastTheEnd(numbers, verdict.number, interval) : 0;
    if (json)
        printSeriesObject(out, verdictObject(area, address, verdict), texts, numbers, clipped);
    else
        printSeriesText(out, area, texts, numbers, clipped);
    return true;
}
