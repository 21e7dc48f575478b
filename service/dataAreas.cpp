#include "dataAreas.h"

#include "otherWidths/layoutTable.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitValues.h"
#include "wrapAround.h"

int getIndexOfDataArea(int station, const QString& regName, int address, QList<_DATA_>& list)
{
    const QList<_DATA_>& units = list;
    const int size = int(units.size());
    for (int i = 0; i < size; ++i) {
        if (hasKey(units.at(i), station, regName, address)) return i;
    }
    _DATA_ unit;
    unit.station = station;
    unit.regName = sharedName(regName);
    unit.address = address;
    list.append(unit);
    return size;
}

const quint8* shownImage(const _DATA_& unit)
{
    return unit.writePending != 0 ? unit.writeImage : unit.readImage;
}

void clearMonitorFlags()
{
    for (int i = 0; i < int(driver.dataAreas.size()); ++i) {
        _DATA_& unit = driver.dataAreas[i];
        unit.pendingBitWrites = 0;
        unit.monitorFlags = 0;
        unit.bitMonitorMask = 0;
    }
}

void markElements(int station, const QString& name, int startAddress, int elements, int units,
                  int firstMark)
{
    int index = -1;
    for (int i = 0; i < elements; ++i) {
        for (int u = 0; u < units; ++u) {
            const int address = wrapAdd(startAddress, wrapAdd(wrapMul(i, units), u));
            index = getIndexOfDataAreaAfter(index, station, name, address, driver.dataAreas);
            _DATA_& unit = driver.dataAreas[index];
            unit.monitorFlags = quint32(_setBitValue(int(unit.monitorFlags), firstMark + u, 1));
        }
    }
}

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
