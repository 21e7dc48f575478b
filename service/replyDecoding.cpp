#include "replyDecoding.h"

#include "changeNotification.h"
#include "dataAreas.h"
#include "recipeUpload.h"
#include "serviceForProtocol.h"
#include "variableName.h"
#include "wrapAround.h"

#include <cstring>
#include <utility>

enum { GROUP_BITS = 16, BYTE_BITS = 8 };

quint8 replyByte(const QByteArray& reply, qint64 at)
{
    return at >= 0 && at < reply.size() ? quint8(reply.at(int(at))) : quint8(0);
}

/// A read that brings a changed value ends the pending state of a write, unless bits of the unit
/// are still to be written.
static void clearPending(_DATA_& unit)
{
    if (unit.pendingBitWrites != 0 && !driver.writeList.isEmpty()) return;
    unit.writePending = 0;
}

/// Reports before it stores: inside the callback the host still reads the old value.
static void storeFreshUnit(int index, int bytes, const quint8* fresh)
{
    _DATA_& unit = driver.dataAreas[index];
    if (std::memcmp(unit.readImage, fresh, size_t(bytes)) == 0) return;
    clearPending(unit);
    unitDataChange(bytes, unit.readImage, fresh, index);
    std::memcpy(driver.dataAreas[index].readImage, fresh, size_t(bytes));
}

static void decodeUnits(const QByteArray& reply, int count, int dataStart, const VARIABLE& var,
                        int bytes)
{
    const QString area = areaPart(var.regName);
    const int station = var.station;
    const int start = var.addr;
    int index = -1;
    for (int i = 0; i < count; ++i) {
        const qint64 p = qint64(dataStart) + qint64(i) * bytes;
        quint8 fresh[IMAGE_BYTES];
        for (int k = 0; k < bytes; ++k)
            fresh[k] = replyByte(reply, p + k);
        // Only words are turned round; wider units are taken in the order of the wire.
        if (bytes == 2) std::swap(fresh[0], fresh[1]);
        index = getIndexOfDataAreaAfter(index, station, area, wrapAdd(start, i), driver.dataAreas);
        storeFreshUnit(index, bytes, fresh);
    }
}

/// First bit of the group of 16 that holds `addr`. Marker groups are counted from 3000.
static int groupStart(const QString& regName, int addr)
{
    const int base = regName == QLatin1String("MX") ? MARKER_BASE : 0;
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

/// A group comes as one word, high byte first. Only the first 16 units have a byte of their own;
/// those behind run backwards over the reply's head, and from the 48th on read as 0.
static void decodeBits(const QByteArray& reply, int count, int dataStart, const VARIABLE& var)
{
    const QString regName = var.regName;
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

void decodeReplyInRow(AreaRow row, const QByteArray& reply, int count, int dataStart,
                      const VARIABLE& var)
{
    switch (row[UNIT_BITS].toInt()) {
    case 1:
        decodeBits(reply, count, dataStart, var);
        break;
    case 8:
        decodeUnits(reply, count, dataStart, var, 1);
        break;
    case 16:
        decodeUnits(reply, count, dataStart, var, 2);
        break;
    case 32:
        decodeUnits(reply, count, dataStart, var, 4);
        break;
    default:
        return;
    }
    if (driver.frameKind == FRAME_RECIPE_UPLOAD) distributeRecipeUpload(reply, dataStart);
}

void analyzeFrameOfVal(const QByteArray& reply, int count, int dataStart, const VARIABLE& var)
{
    decodeReplyInRow(areaRow(var.regName), reply, count, dataStart, var);
}
