#include "keyNormalising.h"

#include "variableName.h"
#include "wrapAround.h"

enum { WORD_BITS = 16 };

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
