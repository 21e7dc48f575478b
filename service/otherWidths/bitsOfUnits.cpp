#include "bitsOfUnits.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "unitRuns.h"
#include "unitValues.h"
#include "wrapAround.h"

#include <QMutexLocker>

#include <cstring>

enum { BYTE_BITS = 8, BYTE_UNIT_BYTES = 1, WORD_UNIT_BYTES = 2 };

/// The place of one bit in the cache.
struct BIT_PLACE
{
    int index; ///< of the unit
    int bit;   ///< within the unit; below 0: none
};

static BIT_PLACE placeOfBit(const VARIABLE_ELEMENTS& elements, int element, int bytes)
{
    const int bitsPerUnit = BYTE_BITS * bytes;
    const int bitAddress = wrapAdd(elements.addr, element);
    const BIT_PLACE place = {getIndexOfDataArea(elements.station, elements.area,
                                                bitAddress / bitsPerUnit, driver.dataAreas),
                             bitAddress % bitsPerUnit};
    return place;
}

static void markBits(const VARIABLE_ELEMENTS& elements, int bytes)
{
    for (int i = 0; i < elements.count; ++i) {
        const BIT_PLACE place = placeOfBit(elements, i, bytes);
        _DATA_& unit = driver.dataAreas[place.index];
        unit.bitMonitorMask = quint32(_setBitValue(int(unit.bitMonitorMask), place.bit, 1));
    }
}

static void readBits(const VARIABLE_ELEMENTS& elements, int bytes, unsigned char* out)
{
    for (int i = 0; i < elements.count; ++i) {
        const BIT_PLACE place = placeOfBit(elements, i, bytes);
        const quint8* image = shownImage(driver.dataAreas.at(place.index));
        out[i] = place.bit < 0
                     ? quint8(0)
                     : quint8(image[place.bit / BYTE_BITS] >> (place.bit % BYTE_BITS) & 1);
    }
}

/// Entries of writeList that are equal to the whole call.
static int queuedWritesOf(const VARIABLE_ELEMENTS& elements)
{
    QMutexLocker locker(&driver.queueMutex);
    const QList<VARIABLE>& queued = driver.writeList;
    int found = 0;
    for (int i = 0; i < int(queued.size()); ++i) {
        const VARIABLE& var = queued.at(i);
        if (var.station == elements.station && var.regName == elements.regName &&
            var.addr == elements.addr && var.count == elements.count)
            ++found;
    }
    return found;
}

static void noteBitWrite(const VARIABLE_ELEMENTS& elements, const BIT_PLACE& place)
{
    const quint32 first = quint32(1) << (2 * place.bit);
    if ((driver.dataAreas.at(place.index).pendingBitWrites & first) == 0)
        driver.dataAreas[place.index].pendingBitWrites |= first;
    else if (queuedWritesOf(elements) == 2)
        driver.dataAreas[place.index].pendingBitWrites |= first << 1;
}

/// The other bytes of the written image come from the read image, not from older writes.
static void storeBitOfUnit(const BIT_PLACE& place, bool on, int bytes)
{
    quint8 shown[IMAGE_BYTES];
    std::memcpy(shown, shownImage(driver.dataAreas.at(place.index)), IMAGE_BYTES);
    quint8 written[IMAGE_BYTES];
    std::memcpy(written, shown, IMAGE_BYTES);
    const int byte = place.bit / BYTE_BITS;
    written[byte] = quint8(_setBitValue(shown[byte], place.bit % BYTE_BITS, on ? 1 : 0));
    if (written[byte] != shown[byte]) unitDataChange(bytes, shown, written, place.index);

    quint8 kept[IMAGE_BYTES];
    std::memcpy(kept, driver.dataAreas.at(place.index).readImage, IMAGE_BYTES);
    kept[byte] = written[byte];
    keepWritten(place.index, bytes, kept);
}

static bool namesNoBit(const VARIABLE_ELEMENTS& elements, int element, int bytes)
{
    return wrapAdd(elements.addr, element) % (BYTE_BITS * bytes) < 0;
}

static void storeBits(const VARIABLE_ELEMENTS& elements, int bytes, const unsigned char* values)
{
    for (int i = 0; i < elements.count; ++i) {
        if (namesNoBit(elements, i, bytes)) continue;
        const BIT_PLACE place = placeOfBit(elements, i, bytes);
        storeBitOfUnit(place, values[i] == 1, bytes);
        noteBitWrite(elements, place);
    }
}

static quint32 releaseBitWrite(quint32 pendingBitWrites, int bit)
{
    const quint32 first = quint32(1) << (2 * bit);
    return (pendingBitWrites & first) != 0 ? pendingBitWrites & ~first
                                           : pendingBitWrites & ~(first << 1);
}

/// The unit stays pending until the last write of its bits has ended. Then every monitored bit of
/// the unit is reported, changed or not.
static void completeBitOfUnit(const BIT_PLACE& place, int bytes, bool confirmed)
{
    _DATA_& unit = driver.dataAreas[place.index];
    unit.pendingBitWrites = releaseBitWrite(unit.pendingBitWrites, place.bit);
    if (unit.pendingBitWrites == 0) unit.writePending = 0;
    const int byte = place.bit / BYTE_BITS;
    const int bitOfByte = place.bit % BYTE_BITS;
    if (confirmed) {
        quint8& read = unit.readImage[byte];
        read = quint8(_setBitValue(read, bitOfByte, unit.writeImage[byte] >> bitOfByte & 1));
    }
    if (unit.writePending != 0) return;
    if (bytes == BYTE_UNIT_BYTES)
        _byteDataChange(0, 0, place.index, 0);
    else
        _wordDataChange(0, 0, place.index, 0);
}

static void completeBits(const VARIABLE_ELEMENTS& elements, int bytes, bool confirmed)
{
    for (int i = 0; i < elements.count; ++i) {
        if (namesNoBit(elements, i, bytes)) continue;
        completeBitOfUnit(placeOfBit(elements, i, bytes), bytes, confirmed);
    }
}

void markBitsOfBytes(const VARIABLE_ELEMENTS& elements)
{
    markBits(elements, BYTE_UNIT_BYTES);
}

void readBitsOfBytes(const VARIABLE_ELEMENTS& elements, unsigned char* out)
{
    readBits(elements, BYTE_UNIT_BYTES, out);
}

void storeBitsOfBytes(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    storeBits(elements, BYTE_UNIT_BYTES, values);
}

void completeBitsOfBytes(const VARIABLE_ELEMENTS& elements, bool confirmed)
{
    completeBits(elements, BYTE_UNIT_BYTES, confirmed);
}

void markBitsOfWords(const VARIABLE_ELEMENTS& elements)
{
    markBits(elements, WORD_UNIT_BYTES);
}

void readBitsOfWords(const VARIABLE_ELEMENTS& elements, unsigned char* out)
{
    readBits(elements, WORD_UNIT_BYTES, out);
}

void storeBitsOfWords(const VARIABLE_ELEMENTS& elements, const unsigned char* values)
{
    storeBits(elements, WORD_UNIT_BYTES, values);
}

void completeBitsOfWords(const VARIABLE_ELEMENTS& elements, bool confirmed)
{
    completeBits(elements, WORD_UNIT_BYTES, confirmed);
}
