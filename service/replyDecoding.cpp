#include "replyDecoding.h"

#include "addressBase.h"
#include "changeNotification.h"
#include "dataAreas.h"
#include "recipeUpload.h"
#include "replyBytes.h"
#include "serviceForProtocol.h"
#include "variableName.h"
#include "wrapAround.h"

#include <cstring>
#include <utility>

enum { GROUP_BITS = 16, BYTE_BITS = 8 };

/// A read that brings a changed value ends the pending state of a write, unless bits of the unit
/// are still to be written.
static void clearPending(_DATA_& unit)
{
    if (unit.pendingBitWrites != 0 && !driver.writeList.isEmpty()) return;
    unit.writePending = 0;
}

/// Compares byte by byte: to compare them as a whole, the compiler would store the bytes first.
template <int BYTES> static bool isSameImage(const quint8* image, const quint8* fresh)
{
    for (int k = 0; k < BYTES; ++k) {
        if (image[k] != fresh[k]) return false;
    }
    return true;
}

/// Reports before it stores: inside the callback the host still reads the old value.
template <int BYTES> static void storeFreshUnit(int index, const quint8* fresh)
{
    if (isSameImage<BYTES>(driver.dataAreas.at(index).readImage, fresh)) return;
    _DATA_& unit = driver.dataAreas[index];
    clearPending(unit);
    unitDataChange(BYTES, unit.readImage, fresh, index);
    std::memcpy(driver.dataAreas[index].readImage, fresh, BYTES);
}

/// A template, because every unit of every reply passes here and a constant width is fast.
template <int BYTES>
static void decodeUnits(const QByteArray& reply, int count, int dataStart, const VARIABLE& var)
{
    const QString area = sharedName(areaPart(var.regName));
    const int station = var.station;
    const int start = var.addr;
    int index = -1;
    for (int i = 0; i < count; ++i) {
        const qint64 p = qint64(dataStart) + qint64(i) * BYTES;
        quint8 fresh[BYTES];
        for (int k = 0; k < BYTES; ++k)
            fresh[k] = replyByte(reply, p + k);
        // Words turn from high byte first to low byte first; wider units keep the wire's order.
        if (BYTES == 2) std::swap(fresh[0], fresh[BYTES - 1]);
        index = getIndexOfDataAreaAfter(index, station, area, wrapAdd(start, i), driver.dataAreas);
        storeFreshUnit<BYTES>(index, fresh);
    }
}

/// First bit of the group of 16 that holds `addr`. Marker groups are counted from 3000.
static int groupStart(const QString& regName, int addr)
{
    const int base = addressBase(regName, BITS);
    return wrapAdd(wrapSub(addr, base) / GROUP_BITS * GROUP_BITS, base);
}

static void storeFreshBit(int index, quint8 fresh)
{
    _DATA_& unit = driver.dataAreas[index];
    if (unit.readImage[0] == fresh) return;
    unit.writePending = 0;
    _bitDataChange(index);
    driver.dataAreas[index].readImage[0] = fresh;
}

/// A group of 16 comes as one word, high byte first. Only the first 16 bits are decoded right:
/// later bits take bytes further and further in front of the word, and from the 48th on they read
/// as 0.
static void decodeBits(const QByteArray& reply, int count, int dataStart, const VARIABLE& var)
{
    const QString regName = sharedName(var.regName);
    const int station = var.station;
    const int start = groupStart(regName, var.addr);
    int index = -1;
    for (int i = 0; i < count; ++i) {
        const qint64 at = qint64(dataStart) + (GROUP_BITS - 1 - i) / BYTE_BITS;
        const quint8 fresh = quint8(replyByte(reply, at) >> (i % BYTE_BITS) & 1);
        index =
            getIndexOfDataAreaAfter(index, station, regName, wrapAdd(start, i), driver.dataAreas);
        storeFreshBit(index, fresh);
    }
}

void decodeReplyOfArea(AreaRow row, const QByteArray& reply, int count, int dataStart,
                       const VARIABLE& var)
{
    switch (row[UNIT_BITS].toInt()) {
    case 1:
        decodeBits(reply, count, dataStart, var);
        break;
    case 8:
        decodeUnits<1>(reply, count, dataStart, var);
        break;
    case 16:
        decodeUnits<2>(reply, count, dataStart, var);
        break;
    case 32:
        decodeUnits<4>(reply, count, dataStart, var);
        break;
    default:
        return;
    }
    if (driver.frameKind == FRAME_RECIPE_UPLOAD) distributeRecipeUpload(reply, dataStart);
}

void analyzeFrameOfVal(const QByteArray& reply, int count, int dataStart, const VARIABLE& var)
{
    decodeReplyOfArea(areaRow(var.regName), reply, count, dataStart, var);
}
