#include "dataAreas.h"

#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitValues.h"
#include "variableName.h"
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

/// Marks the `units` units of every element with the bits from firstMark on.
static void markElements(int station, const QString& name, int startAddress, int elements,
                         int units, int firstMark)
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

static void markBitsOfUnits(int station, const QString& name, int startAddress, int count,
                            int bitsPerUnit)
{
    for (int i = 0; i < count; ++i) {
        const int bit = wrapAdd(startAddress, i);
        const int index = getIndexOfDataArea(station, name, bit / bitsPerUnit, driver.dataAreas);
        _DATA_& unit = driver.dataAreas[index];
        unit.bitMonitorMask = quint32(_setBitValue(int(unit.bitMonitorMask), bit % bitsPerUnit, 1));
    }
}

void setMonitorFlagsInRow(AreaRow row, int station, const QString& regName, int startAddress,
                          int count)
{
    const QString area = areaPart(regName);
    switch (layoutForReading(row, regName)) {
    case BIT_UNIT:
    case WORD_UNIT:
        return markElements(station, regName, startAddress, count, 1, MONITOR_UNIT);
    case BIT_OF_BYTE:
        return markBitsOfUnits(station, area, startAddress, count, 8);
    case BIT_OF_WORD:
        return markBitsOfUnits(station, area, startAddress, count, 16);
    case BYTE_PAIR:
        // Only the first pair is marked, however many there are.
        return markElements(station, area, startAddress, qMin(count, 1), 2, MONITOR_PAIR_FIRST);
    case BYTE_QUAD:
        return markElements(station, area, startAddress, count / 2, 4, MONITOR_QUAD_FIRST);
    case WORD_PAIR:
        return markElements(station, area, startAddress, count / 2, 2, MONITOR_PAIR_FIRST);
    case DOUBLE_UNIT:
        return markElements(station, area, startAddress, count / 2, 1, MONITOR_UNIT);
    default:
        return;
    }
}

void _setDataAreaMonitorFlag(int station, const QString& regName, int startAddress, int count)
{
    setMonitorFlagsInRow(areaRow(regName), station, regName, startAddress, count);
}
