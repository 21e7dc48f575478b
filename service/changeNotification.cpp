#include "changeNotification.h"

#include "dataAreas.h"
#include "driverState.h"
#include "wrapAround.h"

void notifyHost(int context, int station, const QString& name, int addr)
{
    if (driver.valueChangeCallBack == 0) return;
    QString text = name;
    driver.valueChangeCallBack(context, station, text, addr);
}

/// The fields of a unit that a report needs. They are copies, because the callback may make the
/// cache grow and move the unit. The name is looked up only for a report: a copy would cost more.
struct REPORTED_UNIT
{
    int index;
    int station;
    int address;
    quint32 monitorFlags;
    quint32 bitMonitorMask;
};

static REPORTED_UNIT reportedUnit(int index)
{
    const _DATA_& unit = driver.dataAreas.at(index);
    const REPORTED_UNIT reported = {index, unit.station, unit.address, unit.monitorFlags,
                                    unit.bitMonitorMask};
    return reported;
}

static void report(const REPORTED_UNIT& unit, const char* suffix, int address)
{
    const QString name = driver.dataAreas.at(unit.index).regName + QLatin1String(suffix);
    notifyHost(driver.callbackContext, unit.station, name, address);
}

static bool isMonitored(const REPORTED_UNIT& unit, int mark)
{
    return (unit.monitorFlags >> mark & 1u) != 0;
}

static void reportUnit(const REPORTED_UNIT& unit)
{
    if (isMonitored(unit, MONITOR_UNIT))
        notifyHost(driver.callbackContext, unit.station, driver.dataAreas.at(unit.index).regName,
                   unit.address);
}

static void reportBits(const REPORTED_UNIT& unit, int bits, bool compare, quint32 changed)
{
    for (int b = 0; b < bits && unit.bitMonitorMask >> b != 0; ++b) {
        if ((unit.bitMonitorMask >> b & 1u) == 0) continue;
        if (compare && (changed >> b & 1u) == 0) continue;
        report(unit, "_bit", wrapAdd(wrapMul(unit.address, bits), b));
    }
}

/// Reports the values of several units that contain this unit, each at the address of its first
/// unit.
static void reportValuesAround(const REPORTED_UNIT& unit, int firstMark, int units,
                               const char* suffix)
{
    for (int u = 0; u < units; ++u) {
        if (unit.address < u) return;
        if (isMonitored(unit, firstMark + u)) report(unit, suffix, unit.address - u);
    }
}

void _bitDataChange(int index)
{
    reportUnit(reportedUnit(index));
}

void _byteDataChange(const unsigned char* oldValue, const unsigned char* newValue, int index,
                     int skipBits)
{
    const REPORTED_UNIT unit = reportedUnit(index);
    const bool compare = oldValue != 0 && newValue != 0;
    const quint32 changed = compare ? quint32(*oldValue ^ *newValue) : 0u;
    if (skipBits == 0) reportBits(unit, 8, compare, changed);
    if (isMonitored(unit, MONITOR_UNIT)) report(unit, "_B", unit.address);
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
    reportUnit(unit);
    reportValuesAround(unit, MONITOR_PAIR_FIRST, 2, "_D");
}

void _dwordDataChange(const int* oldValue, const int* newValue, int index, int skipBits)
{
    const REPORTED_UNIT unit = reportedUnit(index);
    const bool compare = oldValue != 0 && newValue != 0;
    if (skipBits == 0) reportBits(unit, 32, compare, changedBits(oldValue, newValue));
    reportUnit(unit);
}
