#include "unitRuns.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "unitValues.h"
#include "wrapAround.h"

#include <cstring>

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

void copyUnits(int station, const QString& name, int address, qint64 units, int bytes,
               unsigned char* out)
{
    int index = -1;
    for (int i = 0; i < units; ++i) {
        index =
            getIndexOfDataAreaAfter(index, station, name, wrapAdd(address, i), driver.dataAreas);
        std::memcpy(out, shownImage(driver.dataAreas.at(index)), size_t(bytes));
        out += bytes;
    }
}

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
