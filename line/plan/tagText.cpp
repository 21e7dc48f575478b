#include "plan/tagText.h"

#include "driver/addressText.h"
#include "plan/addressReason.h"
#include "plan/sharedMemory.h"

#include <algorithm>
#include <cmath>

namespace {

enum { LAST_STATION = 247 };

const char* const TYPE_NAMES[] = {"bool", "int16", "uint16", "int32", "uint32", "float32"};
const char* const FORMAT_NAMES[] = {"decimal", "hex", "bin"}; // the first name is never written
const QLatin1Char SUFFIX_MARK(':');

int checkAddress(const Tag& tag, AddressUse use, int& number, const DriverLibrary& driver)
{
    return driver.checkAddr(tag.area, tag.address, number,
                            tag.isBit() ? BIT_VARIABLE : WORD_VARIABLE, tag.units(), use);
}

bool takeFormat(const QString& text, Tag& tag)
{
    if (tag.format != Tag::DECIMAL) return false;
    if (text == QLatin1String(FORMAT_NAMES[Tag::HEXADECIMAL])) tag.format = Tag::HEXADECIMAL;
    if (text == QLatin1String(FORMAT_NAMES[Tag::BINARY])) tag.format = Tag::BINARY;
    return tag.format != Tag::DECIMAL && (tag.type == Tag::UINT16 || tag.type == Tag::UINT32);
}

bool takeName(const QString& name, Tag& tag)
{
    tag.type = Tag::UINT16;
    tag.wordOrder = Tag::LOW_WORD_FIRST;
    tag.format = Tag::DECIMAL;
    if (takeFormat(name, tag)) return true;
    const auto* const found =
        std::find_if(std::begin(TYPE_NAMES), std::end(TYPE_NAMES),
                     [&name](const char* known) { return name == QLatin1String(known); });
    if (found == std::end(TYPE_NAMES)) return false;
    tag.type = static_cast<Tag::Type>(found - std::begin(TYPE_NAMES));
    return true;
}

bool takeWordOrder(const QString& text, Tag& tag)
{
    tag.wordOrder = text == QLatin1String("high") ? Tag::HIGH_WORD_FIRST : Tag::LOW_WORD_FIRST;
    return tag.units() == 2 && (text == QLatin1String("high") || text == QLatin1String("low"));
}

QString typeText(const Tag& tag, bool withLowOrder)
{
    if (tag.type == Tag::UINT16 && tag.format != Tag::DECIMAL)
        return QLatin1String(FORMAT_NAMES[tag.format]);
    QString text = QLatin1String(TYPE_NAMES[tag.type]);
    const bool highFirst = tag.wordOrder == Tag::HIGH_WORD_FIRST;
    if (tag.units() == 2 && (highFirst || withLowOrder))
        text += QLatin1String(highFirst ? ":high" : ":low");
    if (tag.format != Tag::DECIMAL) text += SUFFIX_MARK + QLatin1String(FORMAT_NAMES[tag.format]);
    return text;
}

} // namespace

bool takeArea(const QString& text, Tag& tag, const DriverLibrary& driver)
{
    const QString name = areaName(text, driver);
    tag.area = name.isEmpty() ? text : name;
    return !name.isEmpty();
}

QString kindProblem(const Tag& tag)
{
    if (tag.isBit() == isBitArea(tag.area)) return QString();
    return QString(QLatin1String(tag.isBit() ? "%1 holds words, which are not of type %2"
                                             : "%1 holds bits, which are not of type %2"))
        .arg(tag.area, tagTypeText(tag));
}

QString addressProblem(Tag& tag, const DriverLibrary& driver)
{
    const QString badBit = bitDigitReason(tag.area, tag.address, driver);
    if (!badBit.isEmpty()) return badBit;
    const int result = checkAddress(tag, FOR_READING, tag.number, driver);
    if (result != ADDRESS_VALID)
        return addressReason(result, tag.area, tag.address, tag.units(), driver);
    tag.address = addressText(driver, tag.area, tag.number);
    return QString();
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
    QStringList parts = text.split(SUFFIX_MARK);
    bool known = takeName(parts.takeFirst(), tag);
    const bool hasOrder = !parts.isEmpty() && takeWordOrder(parts.first(), tag);
    if (hasOrder) parts.removeFirst();
    if (!parts.isEmpty()) known = takeFormat(parts.takeFirst(), tag) && known;
    return known && parts.isEmpty();
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
    return QString(
               QLatin1String("type %1 is unknown; there are bool, int16, uint16, int32, uint32, "
                             "float32, hex and bin; int32, uint32 and float32 also with :low or "
                             ":high, and uint16 and uint32 with :hex or :bin at the end"))
        .arg(quoted(text));
}

QString tagTypeText(const Tag& tag)
{
    return typeText(tag, false);
}

QString typeTextWithOrder(const Tag& tag)
{
    return typeText(tag, true);
}

bool takeAccess(const QString& text, Tag& tag)
{
    const bool isWritable = text == QLatin1String("rw");
    tag.access = isWritable ? Tag::READ_WRITE : Tag::READ_ONLY;
    return isWritable || text.isEmpty() || text == QLatin1String("ro");
}

QString accessProblem(const QString& text)
{
    return QString(QLatin1String("access %1 is unknown; there are rw and ro")).arg(quoted(text));
}

bool takeDeadband(const QString& text, Tag& tag)
{
    bool isNumber = true;
    tag.deadband = text.isEmpty() ? 0 : text.toDouble(&isNumber);
    return isNumber && std::isfinite(tag.deadband) && tag.deadband >= 0;
}

QString deadbandProblem(const QString& text)
{
    return QString(QLatin1String("deadband %1 is no number of 0 or more")).arg(quoted(text));
}

QString quoted(const QString& text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}
