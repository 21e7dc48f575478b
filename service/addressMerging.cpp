#include "addressMerging.h"

#include "dataAreas.h"
#include "driverState.h"
#include "mergeRule.h"
#include "monitorFlags.h"
#include "otherWidths/keyNormalising.h"
#include "serviceForProtocol.h"
#include "sortOrder.h"
#include "wrapAround.h"

enum { MERGED_BLOCK_ID = 4 };

/// The keys of known areas in register order. The large records are copied this once; merging works
/// in place.
static QList<KEY_ADDRESS> orderedKeys(const QList<KEY_ADDRESS>& keys)
{
    const std::vector<std::pair<qint32, int>> order = orderByRegAddressWeight<qint32>(keys);
    QList<KEY_ADDRESS> ordered;
    for (size_t i = 0; i < order.size(); ++i) {
        const KEY_ADDRESS& key = keys.at(order[i].second);
        const int area = areaIndex(key.regName);
        if (area == AREA_COUNT) continue;
        ordered.append(key);
        normaliseKey(areaRow(area), ordered[int(ordered.size()) - 1]);
    }
    return ordered;
}

/// Lets each key join the block before it where the rule and the merge limit allow. blockStarts, if
/// there is one, receives the index of every key but the first that opens a block.
static void mergePass(QList<KEY_ADDRESS>& keys, int rule, QList<qint32>* blockStarts)
{
    int last = 0;
    for (int i = 1; i < int(keys.size()); ++i) {
        const KEY_ADDRESS& next = keys.at(i);
        KEY_ADDRESS& block = keys[last];
        const int span = wrapSub(wrapAdd(next.addr, next.count), block.addr);
        if (judgeAddrMerge(block, next, rule) == 0 && span <= driver.mergeLimit) {
            block.count = qMax(block.count, span);
            continue;
        }
        if (blockStarts != 0) blockStarts->append(i);
        ++last;
        if (last != i) keys[last] = next;
    }
    while (keys.size() > last + 1)
        keys.removeLast();
}

void addrMerge(QList<KEY_ADDRESS>& keys, int mode)
{
    if (mode == MERGE_FOR_RECIPE) {
        driver.blockStartIndex.clear();
        driver.blockStartIndex.append(0);
        mergePass(keys, MERGE_ADJACENT, &driver.blockStartIndex);
        return;
    }
    keys = orderedKeys(keys);
    mergePass(keys, MERGE_ADJACENT, 0);
    mergePass(keys, MERGE_WITH_GAP, 0);
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
        var.regName = sharedName(block.regName);
        var.addr = block.addr;
        var.count = block.count;
        driver.readList.append(var);
    }
    return int(driver.readList.size());
}
