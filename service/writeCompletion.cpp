#include "writeCompletion.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitValues.h"
#include "variableName.h"
#include "wrapAround.h"

#include <cstring>

enum { WRITE_CONFIRMED = 1 };

/// Takes the written bytes over as read ones and ends the pending state.
static void settleUnit(int index, int bytes, bool confirmed)
{
    _DATA_& unit = driver.dataAreas[index];
    unit.writePending = 0;
    if (confirmed) std::memcpy(unit.readImage, unit.writeImage, size_t(bytes));
}

static void completeUnits(int station, const QString& name, int addr, qint64 units, int bytes,
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

/// Bits are reported whether they are monitored or not.
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

static void completeWordPairs(int station, const QString& name, int addr, int count, bool confirmed)
{
    for (int i = 0; i < count; ++i) {
        const int address = wrapAdd(addr, wrapMul(i, 2));
        const int low = getIndexOfDataArea(station, name, address, driver.dataAreas);
        const int high =
            getIndexOfDataAreaAfter(low, station, name, wrapAdd(address, 1), driver.dataAreas);
        settleUnit(low, 2, confirmed);
        settleUnit(high, 2, confirmed);
        if (confirmed) continue;
        quint8 written[IMAGE_BYTES];
        quint8 read[IMAGE_BYTES];
        std::memcpy(written, driver.dataAreas.at(low).writeImage, 2);
        std::memcpy(written + 2, driver.dataAreas.at(high).writeImage, 2);
        std::memcpy(read, driver.dataAreas.at(low).readImage, 2);
        std::memcpy(read + 2, driver.dataAreas.at(high).readImage, 2);
        unitDataChange(4, written, read, low);
    }
}

static quint32 releaseBitWrite(quint32 pendingBitWrites, int bit)
{
    const quint32 first = quint32(1) << (2 * bit);
    return (pendingBitWrites & first) != 0 ? pendingBitWrites & ~first
                                           : pendingBitWrites & ~(first << 1);
}

/// The unit stays pending until the last of its bits is settled; then it is reported afresh, every
/// monitored bit of it.
static void completeBitOfUnit(int index, int bit, int bytes, bool confirmed)
{
    _DATA_& unit = driver.dataAreas[index];
    unit.pendingBitWrites = releaseBitWrite(unit.pendingBitWrites, bit);
    if (unit.pendingBitWrites == 0) unit.writePending = 0;
    if (confirmed) {
        quint8& read = unit.readImage[bit / 8];
        read = quint8(_setBitValue(read, bit % 8, unit.writeImage[bit / 8] >> (bit % 8) & 1));
    }
    if (unit.writePending != 0) return;
    if (bytes == 1)
        _byteDataChange(0, 0, index, 0);
    else
        _wordDataChange(0, 0, index, 0);
}

static void completeBitsOfUnits(int station, const QString& name, int addr, int count, int bytes,
                                bool confirmed)
{
    const int bitsPerUnit = 8 * bytes;
    for (int i = 0; i < count; ++i) {
        const int bitAddress = wrapAdd(addr, i);
        const int bit = bitAddress % bitsPerUnit;
        if (bit < 0) continue;
        const int index =
            getIndexOfDataArea(station, name, bitAddress / bitsPerUnit, driver.dataAreas);
        completeBitOfUnit(index, bit, bytes, confirmed);
    }
}

void completeWritesInRow(AreaRow row, int station, const QString& regName, int addr, int count,
                         int ok)
{
    const bool confirmed = ok == WRITE_CONFIRMED;
    const QString area = areaPart(regName);
    switch (layoutForWriting(row, regName)) {
    case BIT_UNIT:
        return completeBits(station, regName, addr, count, confirmed);
    case BYTE_UNIT:
        return completeUnits(station, area, addr, count, 1, confirmed);
    case WORD_UNIT:
        return completeUnits(station, regName, addr, count, 2, confirmed);
    case DOUBLE_UNIT:
        return completeUnits(station, area, addr, count, 4, confirmed);
    case BYTE_PAIR:
        return completeUnits(station, area, addr, qint64(count) * 2, 1, confirmed);
    case WORD_PAIR:
        return completeWordPairs(station, area, addr, count, confirmed);
    case BIT_OF_BYTE:
        return completeBitsOfUnits(station, area, addr, count, 1, confirmed);
    case BIT_OF_WORD:
        return completeBitsOfUnits(station, area, addr, count, 2, confirmed);
    default:
        return;
    }
}

void _write_FailOrSuc(int station, const QString& regName, int addr, int count, int ok)
{
    completeWritesInRow(areaRow(regName), station, regName, addr, count, ok);
}
