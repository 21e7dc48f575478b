#include "addressMerging.h"

#include "dataAreas.h"
#include "driverState.h"
#include "mergeRule.h"
#include "registerOrder.h"
#include "serviceForProtocol.h"
#include "variableName.h"
#include "wrapAround.h"

enum { WORD_BITS = 16, MERGED_BLOCK_ID = 4 };

static void normaliseBitOfUnit(AreaRow row, KEY_ADDRESS& key)
{
    const int unitBits = row[UNIT_BITS].toInt();
    if (unitBits < 1) return;
    const int bits = wrapAdd(key.count, key.addr % unitBits);
    key.count = bits / unitBits + ((bits & 15) != 0 ? 1 : 0);
    key.addr /= unitBits;
}

void normaliseKey(AreaRow row, KEY_ADDRESS& key)
{
    const QString suffix = suffixPart(key.regName);
    const int dataWidth = row[DATA_WIDTH].toInt();
    if (suffix.isEmpty()) {
        if (dataWidth > 1) key.count = int(qint64(key.count) * WORD_BITS / dataWidth);
    } else if (suffix == QLatin1String("BIT")) {
        normaliseBitOfUnit(row, key);
    } else if (suffix == QLatin1String("B") || suffix == QLatin1String("W") ||
               suffix == QLatin1String("D")) {
        key.regName = areaPart(key.regName);
    }
}

static QList<KEY_ADDRESS> keysOfKnownAreas(const QList<KEY_ADDRESS>& keys)
{
    QList<KEY_ADDRESS> kept;
    for (int i = 0; i < int(keys.size()); ++i) {
        const int area = areaIndex(keys.at(i).regName);
        if (area == AREA_COUNT) continue;
        kept.append(keys.at(i));
        normaliseKey(areaRow(area), kept[int(kept.size()) - 1]);
    }
    return kept;
}

/// Lets each key join the block before it where the rule and the merge limit allow. blockStarts, if
/// there is one, receives the index of every key but the first that opens a block.
static QList<KEY_ADDRESS> mergePass(const QList<KEY_ADDRESS>& keys, int rule,
                                    QList<qint32>* blockStarts)
{
    QList<KEY_ADDRESS> blocks;
    for (int i = 0; i < int(keys.size()); ++i) {
        const KEY_ADDRESS& next = keys.at(i);
        if (i > 0) {
            KEY_ADDRESS& block = blocks[int(blocks.size()) - 1];
            const int span = wrapSub(wrapAdd(next.addr, next.count), block.addr);
            if (judgeAddrMerge(block, next, rule) == 0 && span <= driver.mergeLimit) {
                block.count = qMax(block.count, span);
                continue;
            }
            if (blockStarts != 0) blockStarts->append(i);
        }
        blocks.append(next);
    }
    return blocks;
}

void addrMerge(QList<KEY_ADDRESS>& keys, int mode)
{
    if (mode == MERGE_FOR_RECIPE) {
        driver.blockStartIndex.clear();
        driver.blockStartIndex.append(0);
        keys = mergePass(keys, MERGE_ADJACENT, &driver.blockStartIndex);
        return;
    }
    keys = keysOfKnownAreas(keys);
    sortByRegAddressWeight<qint32>(keys);
    keys = mergePass(keys, MERGE_ADJACENT, 0);
    keys = mergePass(keys, MERGE_WITH_GAP, 0);
}

int intf_addrMerge(QList<KEY_ADDRESS>& keys)
{
    clearMonitorFlags();
    const QList<KEY_ADDRESS>& wanted = keys;
    for (int i = 0; i < int(wanted.size()); ++i) {
        const KEY_ADDRESS& key = wanted.at(i);
        _setDataAreaMonitorFlag(key.station, key.regName, key.addr, key.count);
    }

    driver.readList.clear();
    QList<KEY_ADDRESS> blocks = keys;
    addrMerge(blocks, MERGE_FOR_CYCLE);
    for (int i = 0; i < int(blocks.size()); ++i) {
        const KEY_ADDRESS& block = blocks.at(i);
        VARIABLE var;
        var.varId = MERGED_BLOCK_ID;
        var.station = block.station;
        var.regName = block.regName;
        var.addr = block.addr;
        var.count = block.count;
        driver.readList.append(var);
    }
    return int(driver.readList.size());
}
