#ifndef VALUE_READ_H
#define VALUE_READ_H

#include "areaRow.h"

#include <QString>

/// intf_getData in an area with the given row.
void readValuesOfArea(AreaRow row, int station, const QString& regName, int address, int count,
                      unsigned char* out);

/// Copies `bytes` bytes of each of `units` neighbouring units, one unit behind the other.
void copyUnits(int station, const QString& name, int address, qint64 units, int bytes,
               unsigned char* out);

#endif
