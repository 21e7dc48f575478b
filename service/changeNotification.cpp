#include "changeNotification.h"

#include "dataAreas.h"
#include "driverState.h"
#include "unitValues.h"
#include "wrapAround.h"

void notifyHost(int context, int station, const QString& name, int addr)
{
    if (driver.valueChangeCallBack == 0) return;
    QString text = name;
    driver.valueChangeCallBack(context, station, text, addr);
}

/// What a report needs of a unit, copied because the callback may make the cache grow.
struct REPORTED_UNIT
{
    int station;
    int address;
    QString regName;
    quint32 monitorFlags;
    quint32 bitMonitorMask;
};

static REPORTED_UNIT reportedUnit(int index)
{
    const _DATA_& unit = driver.dataAreas.at(index);
    const REPORTED_UNIT reported = {unit.station, unit.address, unit.regName, unit.monitorFlags,
                                    unit.bitMonitorMask};
    return reported;
}

static void report(const REPORTED_UNIT& unit, const QString& name, int address)
{
    notifyHost(driver.callbackContext, unit.station, name, address);
}

static bool isMonitored(const REPORTED_UNIT& unit, int mark)
{
    return (unit.monitorFlags >> mark & 1u) != 0;
}

static void reportUnit(const REPORTED_UNIT& unit, const QString& name)
{
    if (isMonitored(unit, MONITOR_UNIT)) report(unit, name, unit.address);
}

static void reportBits(const REPORTED_UNIT& unit, int bits, bool compare, quint32 changed)
{
    for (int b = 0; b < bits; ++b) {
        if ((unit.bitMonitorMask >> b & 1u) == 0) continue;
        if (compare && (changed >> b & 1u) == 0) continue;
        report(unit, unit.regName + QLatin1String("_bit"), wrapAdd(wrapMul(unit.address, bits), b));
    }
}

/// Reports the values that this unit is a later or the first unit of, at their first unit's
/// address.
static void reportValuesAround(const REPORTED_UNIT& unit, int firstMark, int units,
                               const char* suffix)
{
    for (int u = 0; u < units; ++u) {
        if (unit.address < u) return;
        if (isMonitored(unit, firstMark + u))
            report(unit, unit.regName + QLatin1String(suffix), unit.address - u);
    }
}

void _bitDataChange(int index)
{
    const REPORTED_UNIT unit = reportedUnit(index);
    reportUnit(unit, unit.regName);
}

void _byteDataChange(const unsigned char* oldValue, const unsigned char* newValue, int index,
                     int skipBits)
{
    const REPORTED_UNIT unit = reportedUnit(index);
    const bool compare = oldValue != 0 && newValue != 0;
    const quint32 changed = compare ? quint32(*oldValue ^ *newValue) : 0u;
    if (skipBits == 0) reportBits(unit, 8, compare, changed);
    reportUnit(unit, unit.regName + QLatin1String("_B"));
    reportValuesAround(unit, MONITOR_PAIR_FIRST, 2, "_W");
    reportValuesAround(unit, MONITOR_QUAD_FIRST, 4, "_D");
}

static quint32 changedBits(const int* oldValue, const int* newValue)
{
    return oldValue != 0 && newValue != 0 ? quint32(*oldValue) ^ quint32(*newValue) : 0u;
}

void _wordDataChange(const int* oldValue, const int* newValue, int index, int skipBits)
{
    const REPORTED_UNIT unit = reportedUnit(index);
    const bool compare = oldValue != 0 && newValue != 0;
    if (skipBits == 0) reportBits(unit, 16, compare, changedBits(oldValue, newValue));
    reportUnit(unit, unit.regName);
    reportValuesAround(unit, MONITOR_PAIR_FIRST, 2, "_D");
}

void _dwordDataChange(const int* oldValue, const int* newValue, int index, int skipBits)
{
    const REPORTED_UNIT unit = reportedUnit(index);
    const bool compare = oldValue != 0 && newValue != 0;
    if (skipBits == 0) reportBits(unit, 32, compare, changedBits(oldValue, newValue));
    reportUnit(unit, unit.regName);
}

void unitDataChange(int bytes, const unsigned char* oldValue, const unsigned char* newValue,
                    int index)
{
    if (bytes == 1) return _byteDataChange(oldValue, newValue, index, 0);
    if (bytes == 2) {
        const int before = uchar2int16(oldValue[0], oldValue[1]);
        const int after = uchar2int16(newValue[0], newValue[1]);
        return _wordDataChange(&before, &after, index, 0);
    }
    const int before = uchar2int32(oldValue[0], oldValue[1], oldValue[2], oldValue[3]);
    const int after = uchar2int32(newValue[0], newValue[1], newValue[2], newValue[3]);
    _dwordDataChange(&before, &after, index, 0);
}
