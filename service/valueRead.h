#ifndef VALUE_READ_H
#define VALUE_READ_H

#include "areaRow.h"

#include <QString>

/// intf_getData in an area with the given row.
void readValuesOfArea(AreaRow row, int station, const QString& regName, int address, int count,
                      unsigned char* out);

#endif
