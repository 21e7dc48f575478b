#include "verbs/addressVerdict.h"

#include "driver/addressText.h"
#include "plan/addressReason.h"
#include "plan/sharedMemory.h"

namespace {

enum { BITS_KIND = 0, WORDS_KIND = 1, DESCRIPTION_TEXTS = 5, REGISTER_BITS = 16 };

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
    if (!known) { // for two or more units the driver says "out of range" instead
        verdict.result = ADDRESS_UNKNOWN_AREA;
        verdict.reason = unknownAreaReason(area, driver);
        return verdict;
    }
    verdict.result =
        driver.checkAddr(area, address, verdict.number, known->bits ? BIT_VARIABLE : WORD_VARIABLE,
                         count, write ? FOR_WRITING : FOR_READING);
    verdict.reason = addressReason(verdict.result, area, address, count, driver);
    const QString badBit = bitDigitReason(area, address, driver);
    if (!badBit.isEmpty()) verdict.reason = badBit;
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
    // Bits and the registers that hold them are both numbered from the area's base on.
    const int base = addressNumber(driver, area.name, area.lowest);
    place.firstRegister = base + (number - base) / REGISTER_BITS;
    place.lastRegister = base + (number - base + count - 1) / REGISTER_BITS;
    place.bit = (number - base) % REGISTER_BITS;
    return place;
}
