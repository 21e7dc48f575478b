#include "recipes.h"

#include "addressMerging.h"
#include "driverState.h"
#include "serviceForProtocol.h"
#include "sortOrder.h"
#include "wrapAround.h"

#include <cstring>

enum { WORD_BITS = 16, WORD_BYTES = 2 };

/// param2 carries the place in the recipe buffer through the merge.
static QList<KEY_ADDRESS> keysOfRecipe(const QVector<_RCP_VAR_PRO>& variables)
{
    QList<KEY_ADDRESS> keys;
    for (int i = 0; i < int(variables.size()); ++i) {
        const _RCP_VAR_PRO& variable = variables.at(i);
        KEY_ADDRESS key;
        key.station = variable.station;
        key.regName = variable.regName;
        key.addr = variable.addr;
        key.count = variable.count;
        key.param2 = variable.bufOffset;
        keys.append(key);
    }
    return keys;
}

static QVector<_RCP_VAR_PRO> blocksOfRecipe(const QList<KEY_ADDRESS>& keys)
{
    QVector<_RCP_VAR_PRO> blocks;
    for (int i = 0; i < int(keys.size()); ++i) {
        const KEY_ADDRESS& key = keys.at(i);
        _RCP_VAR_PRO block;
        block.station = key.station;
        block.regName = key.regName;
        block.addr = key.addr;
        block.count = key.count;
        block.bufOffset = key.param2;
        blocks.append(block);
    }
    return blocks;
}

int intf_setRcpAddress(QVector<_RCP_VAR_PRO>& records)
{
    const QVector<_RCP_VAR_PRO>& wanted = records;
    QVector<_RCP_VAR_PRO> staged;
    for (int i = 0; i < int(wanted.size()); ++i) {
        if (wanted.at(i).linkNo == driver.callbackContext) staged.append(wanted.at(i));
    }
    sortByRegAddressWeight<quint32>(staged);
    driver.rcpVarsStaged = staged;
    if (staged.isEmpty()) return 0;

    QList<KEY_ADDRESS> keys = keysOfRecipe(staged);
    addrMerge(keys, MERGE_FOR_RECIPE);
    driver.rcpVars = blocksOfRecipe(keys);
    return int(staged.size());
}

static bool hasPlaceInBuffer(const _RCP_VAR_PRO& rec)
{
    return driver.rcpBuffer != 0 && rec.bufOffset >= 0 && rec.count >= 0;
}

bool isTransferable(const _RCP_VAR_PRO& rec)
{
    return hasPlaceInBuffer(rec) && areaIndex(rec.regName) < AREA_COUNT;
}

void rcpAddrToVar(const _RCP_VAR_PRO& rec, VARIABLE& var, int withData)
{
    var.station = rec.station;
    var.regName = rec.regName;
    var.addr = rec.addr;
    var.count = rec.count;
    std::memset(var.value, 0, sizeof var.value);
    if (withData != 0 && hasPlaceInBuffer(rec)) {
        const qint64 bytes = qMin(qint64(rec.count) * WORD_BYTES, qint64(VALUE_BYTES));
        std::memcpy(var.value, driver.rcpBuffer + qint64(rec.bufOffset) * WORD_BYTES,
                    size_t(bytes));
    }
    const AreaRow row = areaRow(rec.regName);
    const int unitBits = row[UNIT_BITS].toInt();
    if (row[DATA_WIDTH].toInt() != 1 && unitBits > 0)
        var.count = wrapMul(var.count, WORD_BITS / unitBits);
}
