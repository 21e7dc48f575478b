#include "dataAreas.h"

#include "serviceForProtocol.h"

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
