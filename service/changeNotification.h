#ifndef CHANGE_NOTIFICATION_H
#define CHANGE_NOTIFICATION_H

#include "dataAreas.h"
#include "driverState.h"
#include "unitValues.h"

#include <QString>

// These functions tell the host which of its variables changed when a cached unit gets a new value.
// The caller has found the change; they compare only single bits, for "_bit" variables. A null old
// or new value reports every monitored bit. The order of the calls is fixed: bits ascending, the
// unit itself, then values made of several units.

/// Calls the host's callback, if there is one, with a text of its own to change.
void notifyHost(int context, int station, const QString& name, int addr);

/// One bit a unit; reports it when it is monitored.
void _bitDataChange(int index);

/// Reports an 8-bit unit with the suffix "_B"; the wider units have none.
void _byteDataChange(const unsigned char* oldValue, const unsigned char* newValue, int index,
                     int skipBits);
void _wordDataChange(const int* oldValue, const int* newValue, int index, int skipBits);
void _dwordDataChange(const int* oldValue, const int* newValue, int index, int skipBits);

/// True for a unit that is one whole variable and no part of another, like all of this device.
inline bool isPlainVariable(const _DATA_& unit)
{
    return unit.monitorFlags == 1u << MONITOR_UNIT && unit.bitMonitorMask == 0;
}

/// The change function for a unit of `bytes` bytes (1, 2 or 4), values low byte first.
inline void unitDataChange(int bytes, const unsigned char* oldValue, const unsigned char* newValue,
                           int index)
{
    if (bytes == 1) return _byteDataChange(oldValue, newValue, index, 0);
    // A plain variable has exactly this report: no need to look for others.
    const _DATA_& unit = driver.dataAreas.at(index);
    if (isPlainVariable(unit))
        return notifyHost(driver.callbackContext, unit.station, unit.regName, unit.address);
    if (bytes == 2) {
        const int before = uchar2int16(oldValue[0], oldValue[1]);
        const int after = uchar2int16(newValue[0], newValue[1]);
        return _wordDataChange(&before, &after, index, 0);
    }
    const int before = uchar2int32(oldValue[0], oldValue[1], oldValue[2], oldValue[3]);
    const int after = uchar2int32(newValue[0], newValue[1], newValue[2], newValue[3]);
    _dwordDataChange(&before, &after, index, 0);
}

#endif
