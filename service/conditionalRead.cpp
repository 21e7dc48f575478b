#include "cappedList.h"
#include "driverState.h"
#include "keySplitting.h"
#include "serviceForProtocol.h"
#include "wrapAround.h"

enum { WORD_BITS = 16, BIT_UNIT_MODE = -1 };

int intf_addConditionRead(KEY_ADDRESS& key, int varId)
{
    // A "_bit" name is no area's either.
    const int unitBits = areaRow(key.regName)[UNIT_BITS].toInt();
    if (unitBits < 1) return 1;

    QList<KEY_ADDRESS> blocks;
    groupingKey(key, key.unitMode == BIT_UNIT_MODE ? driver.maxBitBlockLen : driver.maxWordBlockLen,
                blocks, 0);
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
    return 1;
}
