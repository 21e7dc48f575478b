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

/// The table's own text of an area's name; any other name as it is. Of two such texts that share
/// their characters it is plain that they are equal.
QString sharedName(const QString& name);

/// The name of area `index`, 0 to AREA_COUNT - 1.
const QString& areaName(int index);

#endif
