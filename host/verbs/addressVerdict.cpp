#include "verbs/addressVerdict.h"

#include "driver/addressText.h"
#include "plan/sharedMemory.h"

#include <QRegularExpression>

namespace {

enum { BITS_KIND = 0, WORDS_KIND = 1, DESCRIPTION_TEXTS = 5, REGISTER_BITS = 16 };

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

int numberOf(const DriverLibrary& driver, const AreaDescription& area, const QString& address)
{
    int number = 0;
    driver.checkAddr(area.name, address, number, area.bits ? BIT_VARIABLE : WORD_VARIABLE, 1,
                     FOR_READING);
    return number;
}

bool matches(const QString& address, const char* pattern)
{
    return QRegularExpression(text(pattern)).match(address.trimmed()).hasMatch();
}

QString pastTheEnd(const DriverLibrary& driver, const AreaDescription& area, int count)
{
    const QString units = text(area.bits ? "bits" : "words");
    const int lowest = numberOf(driver, area, area.lowest);
    const int highest = numberOf(driver, area, area.highest);
    const int last = highest - count + 1;
    if (last < lowest)
        return text("%1 has only %2 %3")
            .arg(area.name, QString::number(highest - lowest + 1), units);
    if (count == 1)
        return text("past the end of %1, whose last address is %2").arg(area.name, area.highest);
    return text("past the end of %1: the last address that leaves room for %2 %3 is %4")
        .arg(area.name, QString::number(count), units, addressText(driver, area.name, last));
}

QString outOfRange(const DriverLibrary& driver, const AreaDescription& area, const QString& address,
                   int count)
{
    if (matches(address, "^-\\d")) return text("below %1, the lowest address").arg(area.lowest);
    if (!matches(address, area.bits ? "^\\+?\\d+\\.\\d+$" : "^\\+?\\d+$"))
        return text("malformed: %1 takes %2, from %3 to %4")
            .arg(area.name, text(area.bits ? "a byte, a dot and a bit" : "an even number"),
                 area.lowest, area.highest);
    if (!area.bits && matches(address, "[13579]$"))
        return text("odd: a word starts at an even number");
    return pastTheEnd(driver, area, count);
}

QString unknownArea(const DriverLibrary& driver, const QString& area)
{
    QStringList names;
    for (const AreaDescription& known : describeAreas(driver))
        names.append(known.name);
    return text("there is no area \"%1\"; the areas are %2")
        .arg(area, names.join(QLatin1String(", ")));
}

QString reasonFor(int result, const DriverLibrary& driver, const AreaDescription& area,
                  const QString& address, int count)
{
    switch (result) {
    case ADDRESS_VALID:
        return QString();
    case ADDRESS_KIND_MISMATCH:
        return text("a bit variable on a word area, or the reverse");
    case ADDRESS_OUT_OF_RANGE:
        return outOfRange(driver, area, address, count);
    case ADDRESS_TYPE_NOT_ALLOWED:
        return text("the type does not fit the 32-bit units of %1").arg(area.name);
    case ADDRESS_READ_ONLY:
        return text("%1 is read-only").arg(area.name);
    default:
        return text("the driver's answer is %1").arg(result);
    }
}

void appendAreas(const DriverLibrary& driver, int kind, std::vector<AreaDescription>& areas)
{
    QStringList names;
    driver.getRegListByType(kind, names);
    for (const QString& name : names) {
        QStringList texts;
        driver.getRegDiscription(name, texts);
        if (texts.size() < DESCRIPTION_TEXTS) continue;
        areas.push_back({name, kind == BITS_KIND, texts.at(0), texts.at(1), texts.at(2),
                         texts.at(3), texts.at(4)});
    }
}

} // namespace

std::vector<AreaDescription> describeAreas(const DriverLibrary& driver)
{
    std::vector<AreaDescription> areas;
    appendAreas(driver, WORDS_KIND, areas);
    appendAreas(driver, BITS_KIND, areas);
    return areas;
}

std::optional<AreaDescription> describeArea(const DriverLibrary& driver, const QString& area)
{
    for (const AreaDescription& known : describeAreas(driver)) {
        if (known.name == area) return known;
    }
    return std::nullopt;
}

AddressVerdict judgeAddress(const DriverLibrary& driver, const QString& area,
                            const QString& address, int count, bool write)
{
    AddressVerdict verdict;
    const std::optional<AreaDescription> known = describeArea(driver, area);
    if (!known) { // the driver itself calls an unknown area out of range from two units on
        verdict.result = ADDRESS_UNKNOWN_AREA;
        verdict.reason = unknownArea(driver, area);
        return verdict;
    }
    verdict.result =
        driver.checkAddr(area, address, verdict.number, known->bits ? BIT_VARIABLE : WORD_VARIABLE,
                         count, write ? FOR_WRITING : FOR_READING);
    verdict.reason = reasonFor(verdict.result, driver, *known, address, count);
    if (write && verdict.isValid()) verdict.reason = coilProblem(area, verdict.number, count);
    if (verdict.isValid()) verdict.address = addressText(driver, area, verdict.number);
    return verdict;
}

WirePlace wirePlace(const DriverLibrary& driver, const AreaDescription& area, int number, int count)
{
    WirePlace place;
    place.input = area.name.startsWith(QLatin1Char('I'));
    place.firstRegister = number;
    place.lastRegister = number + count - 1;
    if (!area.bits) return place;
    // Bits count from the area's base on, and so do the registers that hold them.
    const int base = numberOf(driver, area, area.lowest);
    place.firstRegister = base + (number - base) / REGISTER_BITS;
    place.lastRegister = base + (number - base + count - 1) / REGISTER_BITS;
    place.bit = (number - base) % REGISTER_BITS;
    return place;
}
