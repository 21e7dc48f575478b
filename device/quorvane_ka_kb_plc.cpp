#include "areaClass.h"
#include "registerTables.h"

// Holds the device unit's one copy of the register tables and identity texts.

static bool isAreaOfBits(const QString& regName, bool bits)
{
    const int index = indexInRegList(regName);
    return index < AREA_COUNT &&
           (ADDRESS_RANGE_PRO[index][DATA_WIDTH] == QLatin1String("1")) == bits;
}

bool isBitArea(const QString& regName)
{
    return isAreaOfBits(regName, true);
}

bool isWordArea(const QString& regName)
{
    return isAreaOfBits(regName, false);
}
