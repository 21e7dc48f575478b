#include "valueRead.h"

#include "dataAreas.h"
#include "driverState.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "variableName.h"
#include "wrapAround.h"

#include <cstring>

/// Copies `units` neighbouring units of `bytes` bytes each, one behind the other.
static void copyUnits(int station, const QString& name, int address, qint64 units, int bytes,
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

/// Copies single bits of units, one byte each. A bit number below 0 comes from a negative address
/// and has no byte to read.
static void copyBitsOfUnits(int station, const QString& name, int address, int count,
                            int bitsPerUnit, unsigned char* out)
{
    for (int i = 0; i < count; ++i) {
        const int bitAddress = wrapAdd(address, i);
        const int bit = bitAddress % bitsPerUnit;
        const int index =
            getIndexOfDataArea(station, name, bitAddress / bitsPerUnit, driver.dataAreas);
        const quint8* image = shownImage(driver.dataAreas.at(index));
        out[i] = bit < 0 ? quint8(0) : quint8(image[bit / 8] >> (bit % 8) & 1);
    }
}

void readValuesInRow(AreaRow row, int station, const QString& regName, int address, int count,
                     unsigned char* out)
{
    const QString area = areaPart(regName);
    switch (layoutForReading(row, regName)) {
    case BIT_UNIT:
        return copyUnits(station, regName, address, count, 1, out);
    case WORD_UNIT:
        return copyUnits(station, regName, address, count, 2, out);
    case BIT_OF_BYTE:
        return copyBitsOfUnits(station, area, address, count, 8, out);
    case BIT_OF_WORD:
        return copyBitsOfUnits(station, area, address, count, 16, out);
    case BYTE_PAIR:
        return copyUnits(station, area, address, qint64(count) * 2, 1, out);
    case BYTE_QUAD:
        return copyUnits(station, area, address, qint64(count / 2) * 4, 1, out);
    case WORD_PAIR:
        return copyUnits(station, area, address, qint64(count / 2) * 2, 2, out);
    case DOUBLE_UNIT:
        return copyUnits(station, area, address, count / 2, 4, out);
    default:
        return;
    }
}

int intf_getData(int station, QString regName, int address, int count, unsigned char* out)
{
    if (out != 0) readValuesInRow(areaRow(regName), station, regName, address, count, out);
    return 1;
}
