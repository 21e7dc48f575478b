#include "localStore.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitRuns.h"
#include "wrapAround.h"

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
