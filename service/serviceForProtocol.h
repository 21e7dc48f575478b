#ifndef SERVICE_FOR_PROTOCOL_H
#define SERVICE_FOR_PROTOCOL_H

#include "areaRow.h"

#include <QString>

// Lookups in the service unit's one copy of the register tables.

/// Index of an area by its exact name; AREA_COUNT when there is none.
int areaIndex(const QString& regName);

/// The area's row, or the empty seventh row, whose numbers all convert to 0.
AreaRow areaRow(const QString& regName);
AreaRow areaRow(int index);

/// The table's own string of an area's name; any other name as it is. Strings that share a buffer
/// are equal: no need to compare their characters.
QString sharedName(const QString& name);

/// The name of area `index`, 0 to AREA_COUNT - 1.
const QString& areaName(int index);

#endif
