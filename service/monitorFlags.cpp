#include "monitorFlags.h"

#include "dataAreas.h"
#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitRuns.h"

void setMonitorFlagsOfArea(AreaRow row, int station, const QString& regName, int startAddress,
                           int count)
{
    const UnitLayout layout = layoutForReading(row, regName);
    if (layout == BIT_UNIT || layout == WORD_UNIT)
        return markElements(station, regName, startAddress, count, 1, MONITOR_UNIT);
    functionsOfLayout(layout).mark(variableElements(station, regName, startAddress, count));
}

void _setDataAreaMonitorFlag(int station, const QString& regName, int startAddress, int count)
{
    setMonitorFlagsOfArea(areaRow(regName), station, regName, startAddress, count);
}
