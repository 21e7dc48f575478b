#include "localStore.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "wrapAround.h"

#include <cstring>

void keepWritten(int index, int bytes, const quint8* written)
{
    _DATA_& unit = driver.dataAreas[index];
    std::memcpy(unit.writeImage, written, size_t(bytes));
    unit.writePending = 1;
}

void storeUnits(const VARIABLE_ELEMENTS& elements, qint64 units, int bytes,
                const unsigned char* values)
{
    int index = -1;
    for (qint64 i = 0; i < units; ++i) {
        const quint8* written = values + i * bytes;
        index = getIndexOfDataAreaAfter(index, elements.station, elements.area,
                                        wrapAdd(elements.addr, int(i)), driver.dataAreas);
        quint8 shown[IMAGE_BYTES];
        std::memcpy(shown, shownImage(driver.dataAreas.at(index)), size_t(bytes));
        if (std::memcmp(shown, written, size_t(bytes)) != 0)
            unitDataChange(bytes, shown, written, index);
        keepWritten(index, bytes, written);
    }
}

/// Bits are reported even if they are not monitored.
static void storeBits(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    int index = -1;
    for (int i = 0; i < elements.count; ++i) {
        const int address = wrapAdd(elements.addr, i);
        index = getIndexOfDataAreaAfter(index, elements.station, elements.area, address,
                                        driver.dataAreas);
        if (shownImage(driver.dataAreas.at(index))[0] != values[i])
            notifyHost(driver.callbackContext, elements.station, elements.regName, address);
        keepWritten(index, 1, values + i);
    }
}

void storeWritesOfArea(AreaRow row, int station, const QString& regName, int addr, int count,
                       const unsigned char* values)
{
    const VARIABLE_ELEMENTS elements = variableElements(station, regName, addr, count);
    const UnitLayout layout = layoutForWriting(row, regName);
    if (layout == BIT_UNIT) return storeBits(elements, values);
    if (layout == WORD_UNIT) return storeUnits(elements, count, 2, values);
    functionsOfLayout(layout).store(elements, values);
}

void write_saveDataToArea(int station, const QString& regName, int addr, int count,
                          const unsigned char* values)
{
    storeWritesOfArea(areaRow(regName), station, regName, addr, count, values);
}
