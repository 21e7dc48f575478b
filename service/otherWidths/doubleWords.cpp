#include "doubleWords.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "unitRuns.h"
#include "wrapAround.h"

#include <cstring>

void markDoubleUnits(const VARIABLE_ELEMENTS& elements)
{
    markElements(elements.station, elements.area, elements.addr, elements.count / 2, 1,
                 MONITOR_UNIT);
}

void readDoubleUnits(const VARIABLE_ELEMENTS& elements, unsigned char* out)
{
    copyUnits(elements.station, elements.area, elements.addr, elements.count / 2, 4, out);
}

void storeDoubleUnits(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    storeUnits(elements, elements.count, 4, values);
}

void completeDoubleUnits(const VARIABLE_ELEMENTS& elements, bool confirmed)
{
    completeUnits(elements.station, elements.area, elements.addr, elements.count, 4, confirmed);
}

void markWordPairs(const VARIABLE_ELEMENTS& elements)
{
    markElements(elements.station, elements.area, elements.addr, elements.count / 2, 2,
                 MONITOR_PAIR_FIRST);
}

void readWordPairs(const VARIABLE_ELEMENTS& elements, unsigned char* out)
{
    copyUnits(elements.station, elements.area, elements.addr, qint64(elements.count / 2) * 2, 2,
              out);
}

namespace {

/// Indices of the two units of one element.
struct UNIT_PAIR
{
    int low;
    int high;
};

UNIT_PAIR unitPair(const VARIABLE_ELEMENTS& elements, int element)
{
    const int address = wrapAdd(elements.addr, wrapMul(element, 2));
    const int low = getIndexOfDataArea(elements.station, elements.area, address, driver.dataAreas);
    const int high = getIndexOfDataAreaAfter(low, elements.station, elements.area,
                                             wrapAdd(address, 1), driver.dataAreas);
    const UNIT_PAIR pair = {low, high};
    return pair;
}

} // namespace

void storeWordPairs(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    for (int i = 0; i < elements.count; ++i) {
        const quint8* written = values + qint64(i) * 4;
        const UNIT_PAIR pair = unitPair(elements, i);
        quint8 shown[IMAGE_BYTES];
        std::memcpy(shown, shownImage(driver.dataAreas.at(pair.low)), 2);
        std::memcpy(shown + 2, shownImage(driver.dataAreas.at(pair.high)), 2);
        if (std::memcmp(shown, written, 4) != 0) unitDataChange(4, shown, written, pair.low);
        keepWritten(pair.low, 2, written);
        keepWritten(pair.high, 2, written + 2);
    }
}

void completeWordPairs(const VARIABLE_ELEMENTS& elements, bool confirmed)
{
    for (int i = 0; i < elements.count; ++i) {
        const UNIT_PAIR pair = unitPair(elements, i);
        settleUnit(pair.low, 2, confirmed);
        settleUnit(pair.high, 2, confirmed);
        if (confirmed) continue;
        quint8 written[IMAGE_BYTES];
        quint8 read[IMAGE_BYTES];
        std::memcpy(written, driver.dataAreas.at(pair.low).writeImage, 2);
        std::memcpy(written + 2, driver.dataAreas.at(pair.high).writeImage, 2);
        std::memcpy(read, driver.dataAreas.at(pair.low).readImage, 2);
        std::memcpy(read + 2, driver.dataAreas.at(pair.high).readImage, 2);
        unitDataChange(4, written, read, pair.low);
    }
}
