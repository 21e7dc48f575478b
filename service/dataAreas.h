#ifndef DATA_AREAS_H
#define DATA_AREAS_H

#include "driverState.h"

#include <QList>
#include <QString>

// The cache: one flat list of units, found by linear search. An index is the handle of a unit: it
// stays valid until the next initialisation, because units are only appended.

/// Monitoring marks in _DATA_::monitorFlags.
enum MonitorBit {
    MONITOR_UNIT = 0,       ///< the unit is a variable
    MONITOR_PAIR_FIRST = 1, ///< first unit of a two-unit value; the next bit is its second
    MONITOR_QUAD_FIRST = 3  ///< byte 0 of a four-byte value; the next bits are bytes 1 to 3
};

/// Compares the integers first: they differ for most units. Strings that share a buffer are equal:
/// no need to compare their characters.
inline bool hasKey(const _DATA_& unit, int station, const QString& regName, int address)
{
    return unit.address == address && unit.station == station &&
           (unit.regName.isSharedWith(regName) || unit.regName == regName);
}

/// Index of the unit with this key, appended with all else zero when it is missing.
int getIndexOfDataArea(int station, const QString& regName, int address, QList<_DATA_>& list);

/// The same for a caller that walks neighbouring units: tries the unit behind index `previous` (-1:
/// none) before it searches. Keys are unique, so a match there is the answer.
inline int getIndexOfDataAreaAfter(int previous, int station, const QString& regName, int address,
                                   QList<_DATA_>& list)
{
    const int next = previous + 1;
    if (next < int(list.size()) && hasKey(list.at(next), station, regName, address)) return next;
    return getIndexOfDataArea(station, regName, address, list);
}

/// Clears the marks and the pending bit writes of all units.
void clearMonitorFlags();

/// The bytes that the host sees: its own unconfirmed write, else the value last read.
const quint8* shownImage(const _DATA_& unit);

#endif
