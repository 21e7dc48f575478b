#include "writeCompletion.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "wrapAround.h"

#include <cstring>

enum { WRITE_CONFIRMED = 1 };

void settleUnit(int index, int bytes, bool confirmed)
{
    _DATA_& unit = driver.dataAreas[index];
    unit.writePending = 0;
    if (confirmed) std::memcpy(unit.readImage, unit.writeImage, size_t(bytes));
}

void completeUnits(int station, const QString& name, int addr, qint64 units, int bytes,
                   bool confirmed)
{
    int index = -1;
    for (qint64 i = 0; i < units; ++i) {
        index =
            getIndexOfDataAreaAfter(index, station, name, wrapAdd(addr, int(i)), driver.dataAreas);
        settleUnit(index, bytes, confirmed);
        const _DATA_& unit = driver.dataAreas.at(index);
        if (!confirmed) unitDataChange(bytes, unit.writeImage, unit.readImage, index);
    }
}

/// Bits are reported even if they are not monitored.
static void completeBits(int station, const QString& regName, int addr, int count, bool confirmed)
{
    int index = -1;
    for (int i = 0; i < count; ++i) {
        const int address = wrapAdd(addr, i);
        index = getIndexOfDataAreaAfter(index, station, regName, address, driver.dataAreas);
        settleUnit(index, 1, confirmed);
        if (!confirmed) notifyHost(driver.callbackContext, station, regName, address);
    }
}

void completeWritesOfArea(AreaRow row, int station, const QString& regName, int addr, int count,
                          int ok)
{
    const bool confirmed = ok == WRITE_CONFIRMED;
    const UnitLayout layout = layoutForWriting(row, regName);
    if (layout == BIT_UNIT) return completeBits(station, regName, addr, count, confirmed);
    if (layout == WORD_UNIT) return completeUnits(station, regName, addr, count, 2, confirmed);
    functionsOfLayout(layout).complete(variableElements(station, regName, addr, count), confirmed);
}

void _write_FailOrSuc(int station, const QString& regName, int addr, int count, int ok)
{
    completeWritesOfArea(areaRow(regName), station, regName, addr, count, ok);
}
