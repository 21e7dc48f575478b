#include "cappedList.h"
#include "driverState.h"
#include "keySplitting.h"
#include "serviceForProtocol.h"
#include "wrapAround.h"

enum { WORD_BITS = 16, BIT_UNIT_MODE = -1, BLOCKS_AT_ONCE = 64 };

static void queueBlocks(const KEY_ADDRESS& key, int maxLen, int unitBits, int varId)
{
    QList<KEY_ADDRESS> blocks;
    groupingKey(key, maxLen, blocks, 0);
    for (int i = 0; i < int(blocks.size()); ++i) {
        const KEY_ADDRESS& block = blocks.at(i);
        VARIABLE var;
        var.varId = varId;
        var.station = block.station;
        var.regName = block.regName;
        var.addr = block.addr;
        // A bit area's count is in groups of 16, unlike a recipe's.
        var.count = wrapMul(block.count, WORD_BITS / unitBits);
        coalesceIntoCappedList(driver.condReadList, var);
        driver.condVar = var;
    }
}

int intf_addConditionRead(KEY_ADDRESS& key, int varId)
{
    // An unknown area has units of 0 bits; a name with "_bit" is unknown too.
    const int unitBits = areaRow(key.regName)[UNIT_BITS].toInt();
    if (unitBits < 1) return 1;

    const int maxLen =
        key.unitMode == BIT_UNIT_MODE ? driver.maxBitBlockLen : driver.maxWordBlockLen;
    // Parts keep memory small: of the blocks of a huge count the capped queue holds only 513.
    const qint64 partLen = maxLen < 1 ? qint64(key.count) : qint64(maxLen) * BLOCKS_AT_ONCE;
    KEY_ADDRESS part = key;
    qint64 first = 0;
    do {
        part.addr = wrapAdd(key.addr, int(first));
        part.count = int(qMin(partLen, key.count - first));
        queueBlocks(part, maxLen, unitBits, varId);
        first += partLen;
    } while (first < key.count);
    return 1;
}
