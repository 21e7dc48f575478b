#include "writeCompletion.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitRuns.h"
#include "wrapAround.h"

enum { WRITE_CONFIRMED = 1 };

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
