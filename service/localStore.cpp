#include "localStore.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "driverState.h"
#include "serviceForProtocol.h"
#include "unitLayout.h"
#include "unitValues.h"
#include "variableName.h"
#include "wrapAround.h"

#include <QMutexLocker>

#include <cstring>

/// What one call of write_saveDataToArea was asked.
struct WRITE_CALL
{
    int station;
    QString regName;
    QString area;
    int addr;
    int count;
    const unsigned char* values;
};

static void keepWritten(int index, int bytes, const quint8* written)
{
    _DATA_& unit = driver.dataAreas[index];
    std::memcpy(unit.writeImage, written, size_t(bytes));
    unit.writePending = 1;
}

static void storeUnits(const WRITE_CALL& call, qint64 units, int bytes)
{
    int index = -1;
    for (qint64 i = 0; i < units; ++i) {
        const quint8* written = call.values + i * bytes;
        index = getIndexOfDataAreaAfter(index, call.station, call.area, wrapAdd(call.addr, int(i)),
                                        driver.dataAreas);
        quint8 shown[IMAGE_BYTES];
        std::memcpy(shown, shownImage(driver.dataAreas.at(index)), size_t(bytes));
        if (std::memcmp(shown, written, size_t(bytes)) != 0)
            unitDataChange(bytes, shown, written, index);
        keepWritten(index, bytes, written);
    }
}

/// Bits are reported whether they are monitored or not.
static void storeBits(const WRITE_CALL& call)
{
    int index = -1;
    for (int i = 0; i < call.count; ++i) {
        const int address = wrapAdd(call.addr, i);
        index = getIndexOfDataAreaAfter(index, call.station, call.area, address, driver.dataAreas);
        if (shownImage(driver.dataAreas.at(index))[0] != call.values[i])
            notifyHost(driver.callbackContext, call.station, call.regName, address);
        keepWritten(index, 1, call.values + i);
    }
}

static void storeWordPairs(const WRITE_CALL& call)
{
    for (int i = 0; i < call.count; ++i) {
        const quint8* written = call.values + qint64(i) * 4;
        const int address = wrapAdd(call.addr, wrapMul(i, 2));
        const int low = getIndexOfDataArea(call.station, call.area, address, driver.dataAreas);
        const int high = getIndexOfDataAreaAfter(low, call.station, call.area, wrapAdd(address, 1),
                                                 driver.dataAreas);
        quint8 shown[IMAGE_BYTES];
        std::memcpy(shown, shownImage(driver.dataAreas.at(low)), 2);
        std::memcpy(shown + 2, shownImage(driver.dataAreas.at(high)), 2);
        if (std::memcmp(shown, written, 4) != 0) unitDataChange(4, shown, written, low);
        keepWritten(low, 2, written);
        keepWritten(high, 2, written + 2);
    }
}

/// Entries of writeList that are this very call's.
static int queuedWritesOf(const WRITE_CALL& call)
{
    QMutexLocker locker(&driver.queueMutex);
    const QList<VARIABLE>& queued = driver.writeList;
    int found = 0;
    for (int i = 0; i < int(queued.size()); ++i) {
        const VARIABLE& var = queued.at(i);
        if (var.station == call.station && var.regName == call.regName && var.addr == call.addr &&
            var.count == call.count)
            ++found;
    }
    return found;
}

/// Bit 2b stands for a pending write of bit b, bit 2b + 1 for a second one behind it.
static void noteBitWrite(const WRITE_CALL& call, int index, int bit)
{
    const quint32 first = quint32(1) << (2 * bit);
    if ((driver.dataAreas.at(index).pendingBitWrites & first) == 0)
        driver.dataAreas[index].pendingBitWrites |= first;
    else if (queuedWritesOf(call) == 2)
        driver.dataAreas[index].pendingBitWrites |= first << 1;
}

/// Bytes of the unit around the written one are taken from the PLC's value, not from older writes.
static void storeBitOfUnit(const WRITE_CALL& call, int index, int bit, bool on, int bytes)
{
    quint8 shown[IMAGE_BYTES];
    std::memcpy(shown, shownImage(driver.dataAreas.at(index)), IMAGE_BYTES);
    quint8 written[IMAGE_BYTES];
    std::memcpy(written, shown, IMAGE_BYTES);
    const int byte = bit / 8;
    written[byte] = quint8(_setBitValue(shown[byte], bit % 8, on ? 1 : 0));
    if (written[byte] != shown[byte]) unitDataChange(bytes, shown, written, index);

    quint8 kept[IMAGE_BYTES];
    std::memcpy(kept, driver.dataAreas.at(index).readImage, IMAGE_BYTES);
    kept[byte] = written[byte];
    keepWritten(index, bytes, kept);
    noteBitWrite(call, index, bit);
}

/// A bit number below 0 comes from a negative address and names no bit.
static void storeBitsOfUnits(const WRITE_CALL& call, int bytes)
{
    const int bitsPerUnit = 8 * bytes;
    for (int i = 0; i < call.count; ++i) {
        const int bitAddress = wrapAdd(call.addr, i);
        const int bit = bitAddress % bitsPerUnit;
        if (bit < 0) continue;
        const int index =
            getIndexOfDataArea(call.station, call.area, bitAddress / bitsPerUnit, driver.dataAreas);
        storeBitOfUnit(call, index, bit, call.values[i] == 1, bytes);
    }
}

void storeWritesInRow(AreaRow row, int station, const QString& regName, int addr, int count,
                      const unsigned char* values)
{
    const WRITE_CALL call = {station, regName, areaPart(regName), addr, count, values};
    switch (layoutForWriting(row, regName)) {
    case BIT_UNIT:
        return storeBits(call);
    case BYTE_UNIT:
        return storeUnits(call, count, 1);
    case WORD_UNIT:
        return storeUnits(call, count, 2);
    case DOUBLE_UNIT:
        return storeUnits(call, count, 4);
    case BYTE_PAIR:
        return storeUnits(call, qint64(count) * 2, 1);
    case WORD_PAIR:
        return storeWordPairs(call);
    case BIT_OF_BYTE:
        return storeBitsOfUnits(call, 1);
    case BIT_OF_WORD:
        return storeBitsOfUnits(call, 2);
    default:
        return;
    }
}

void write_saveDataToArea(int station, const QString& regName, int addr, int count,
                          const unsigned char* values)
{
    storeWritesInRow(areaRow(regName), station, regName, addr, count, values);
}
