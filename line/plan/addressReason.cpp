#include "plan/addressReason.h"

#include "driver/addressText.h"
#include "plan/tag.h"

#include <QRegularExpression>

namespace {

enum { WORDS_KIND = 1, BITS_KIND = 0, LOWEST = 1, HIGHEST = 2, LAST_BIT_OF_BYTE = 7 };

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QStringList areas(const DriverLibrary& driver)
{
    QStringList names;
    driver.getRegListByType(WORDS_KIND, names);
    driver.getRegListByType(BITS_KIND, names);
    return names;
}

/// Lowest or highest address of an area.
QString limitOf(const QString& area, int column, const DriverLibrary& driver)
{
    QStringList description;
    driver.getRegDiscription(area, description);
    return description.value(column);
}

bool matches(const QString& address, const char* pattern)
{
    return QRegularExpression(text(pattern)).match(address.trimmed()).hasMatch();
}

QString pastTheEnd(const QString& area, int count, const DriverLibrary& driver)
{
    const QString units = text(isBitArea(area) ? "bits" : "words");
    const QString highestText = limitOf(area, HIGHEST, driver);
    const int lowest = addressNumber(driver, area, limitOf(area, LOWEST, driver));
    const int highest = addressNumber(driver, area, highestText);
    const int last = highest - count + 1;
    if (last < lowest)
        return text("%1 has only %2 %3").arg(area, QString::number(highest - lowest + 1), units);
    if (count == 1)
        return text("past the end of %1, whose last address is %2").arg(area, highestText);
    return text("past the end of %1: the last address that leaves room for %2 %3 is %4")
        .arg(area, QString::number(count), units, addressText(driver, area, last));
}

QString outOfRange(const QString& area, const QString& address, int count,
                   const DriverLibrary& driver)
{
    const bool bits = isBitArea(area);
    const QString lowest = limitOf(area, LOWEST, driver);
    if (matches(address, "^-\\d")) return text("below %1, the lowest address").arg(lowest);
    if (!matches(address, bits ? "^\\+?\\d+\\.\\d+$" : "^\\+?\\d+$"))
        return text("malformed: %1 takes %2, from %3 to %4")
            .arg(area, text(bits ? "a byte, a dot and a bit" : "an even number"), lowest,
                 limitOf(area, HIGHEST, driver));
    if (!bits && matches(address, "[13579]$")) return text("odd: a word starts at an even number");
    return pastTheEnd(area, count, driver);
}

} // namespace

QString areaName(const QString& text, const DriverLibrary& driver)
{
    const QString name = (text.startsWith(QLatin1Char('%')) ? text.mid(1) : text).toUpper();
    return areas(driver).contains(name) ? name : QString();
}

QString unknownAreaReason(const QString& area, const DriverLibrary& driver)
{
    return text("there is no area \"%1\"; the areas are %2")
        .arg(area, areas(driver).join(QLatin1String(", ")));
}

QString bitDigitReason(const QString& area, const QString& address, const DriverLibrary& driver)
{
    if (!isBitArea(area)) return QString();
    static const QRegularExpression form(text("^\\+?\\d+\\.(\\d+)$")); // compiling it takes time
    const QRegularExpressionMatch match = form.match(address.trimmed());
    if (!match.hasMatch()) return QString();
    bool fits = false;
    if (match.captured(1).toInt(&fits) <= LAST_BIT_OF_BYTE && fits) return QString();
    const QString reason = text("the bit is 0 to 7");
    int number = 0;
    if (driver.checkAddr(area, address, number, BIT_VARIABLE, 1, FOR_READING) != ADDRESS_VALID)
        return reason;
    return reason + text("; did you mean %1%2?").arg(area, addressText(driver, area, number));
}

QString addressReason(int result, const QString& area, const QString& address, int count,
                      const DriverLibrary& driver)
{
    switch (result) {
    case ADDRESS_VALID:
        return QString();
    case ADDRESS_KIND_MISMATCH:
        return text("a bit variable on a word area, or the reverse");
    case ADDRESS_OUT_OF_RANGE:
        return outOfRange(area, address, count, driver);
    case ADDRESS_TYPE_NOT_ALLOWED:
        return text("the type does not fit the 32-bit units of %1").arg(area);
    case ADDRESS_READ_ONLY:
        return text("%1 is read-only").arg(area);
    default:
        return text("the driver's answer is %1").arg(result);
    }
}
