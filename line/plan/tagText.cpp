#include "plan/tagText.h"

#include "driver/addressText.h"
#include "plan/sharedMemory.h"

#include <algorithm>

namespace {

enum { LAST_STATION = 247 };

const char* const TYPE_NAMES[] = {"bool", "int16", "uint16", "int32", "uint32", "float32"};

QStringList areas(const DriverLibrary& driver)
{
    QStringList names;
    driver.getRegListByType(1, names);
    driver.getRegListByType(0, names);
    return names;
}

int checkAddress(const Tag& tag, AddressUse use, int& number, const DriverLibrary& driver)
{
    return driver.checkAddr(tag.area, tag.address, number,
                            tag.isBit() ? BIT_VARIABLE : WORD_VARIABLE, tag.units(), use);
}

QString rangeProblem(const Tag& tag, const DriverLibrary& driver)
{
    QStringList description; // format, lowest address, highest address
    driver.getRegDiscription(tag.area, description);
    const QString fault =
        QLatin1String(tag.isBit() ? "malformed or out of range" : "odd, malformed or out of range");
    const QString range = description.value(1) + QLatin1String(" to ") + description.value(2);
    const QString reach = QLatin1String(tag.units() == 2 ? " with its two words" : "");
    return QString(QLatin1String("address %1 of %2 is %3 %4%5"))
        .arg(tag.address.isEmpty() ? quoted(tag.address) : tag.address, tag.area, fault, range,
             reach);
}

} // namespace

QString areaProblem(const Tag& tag, const DriverLibrary& driver)
{
    const QStringList names = areas(driver);
    if (names.contains(tag.area)) return QString();
    return QString(QLatin1String("area %1 is unknown; there are %2"))
        .arg(quoted(tag.area), names.join(QLatin1String(", ")));
}

QString addressProblem(Tag& tag, const DriverLibrary& driver)
{
    const int result = checkAddress(tag, FOR_READING, tag.number, driver);
    switch (result) {
    case ADDRESS_VALID:
        return QString();
    case ADDRESS_OUT_OF_RANGE:
        return rangeProblem(tag, driver);
    case ADDRESS_KIND_MISMATCH:
        return QString(QLatin1String(tag.isBit() ? "%1 holds words, which are not of type %2"
                                                 : "%1 holds bits, which are not of type %2"))
            .arg(tag.area, QLatin1String(TYPE_NAMES[tag.type]));
    default:
        return QString(QLatin1String("the driver does not take address %1 of %2, result %3"))
            .arg(tag.address, tag.area, QString::number(result));
    }
}

QString writeProblem(const Tag& tag, const DriverLibrary& driver)
{
    int number = 0;
    if (checkAddress(tag, FOR_WRITING, number, driver) == ADDRESS_READ_ONLY)
        return QString(QLatin1String("area %1 is read-only")).arg(tag.area);
    return coilProblem(tag.area, tag.number, tag.units());
}

bool takeType(const QString& text, Tag& tag)
{
    const QString name = text.section(QLatin1Char(':'), 0, 0);
    const auto* const found =
        std::find_if(std::begin(TYPE_NAMES), std::end(TYPE_NAMES),
                     [&name](const char* known) { return name == QLatin1String(known); });
    if (found == std::end(TYPE_NAMES)) return false;
    tag.type = static_cast<Tag::Type>(found - std::begin(TYPE_NAMES));
    if (name == text) return true;
    const QString order = text.mid(name.size() + 1);
    tag.wordOrder = order == QLatin1String("high") ? Tag::HIGH_WORD_FIRST : Tag::LOW_WORD_FIRST;
    return tag.units() == 2 && (order == QLatin1String("high") || order == QLatin1String("low"));
}

bool takeStation(const QString& text, Tag& tag)
{
    bool ok = false;
    tag.station = text.toInt(&ok);
    return ok && tag.station >= 1 && tag.station <= LAST_STATION;
}

QString stationProblem(const QString& text)
{
    return QString(QLatin1String("station %1 is no number from 1 to %2"))
        .arg(quoted(text), QString::number(LAST_STATION));
}

QString typeProblem(const QString& text)
{
    return QString(QLatin1String("type %1 is unknown; there are bool, int16, uint16, int32, uint32 "
                                 "and float32, the last three also with :low or :high"))
        .arg(quoted(text));
}

QString tagTypeText(const Tag& tag)
{
    const QString name = QLatin1String(TYPE_NAMES[tag.type]);
    const bool highFirst = tag.units() == 2 && tag.wordOrder == Tag::HIGH_WORD_FIRST;
    return highFirst ? name + QLatin1String(":high") : name;
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}
